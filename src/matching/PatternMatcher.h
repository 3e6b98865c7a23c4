// Matches one address against one pattern.

#ifndef MATCHING_PATTERNMATCHER_H
#define MATCHING_PATTERNMATCHER_H

#include <cstddef>
#include <string_view>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "matching/MatchedTexts.h"
#include "matching/PositionSearch.h"

namespace CallRecordingUtils {

/// One search. The meaning of a pattern is that of a backtracking recursion which at every "*" and
/// every range expression tries the shortest run first, and takes the first one with which the rest
/// of the pattern matches.
///
/// The search is a simulation of a nondeterministic automaton that keeps the backtracker's priority
/// order. It reads the pattern once from left to right, and knows at which positions of the address
/// the reading can stand. What the rest of the pattern makes of a position depends on nothing but
/// the position; so of two ways that lead to one position only the one that the recursion would
/// come to first counts, and there are never more ways than the address has positions. Mostly there
/// is but one, and the search follows it here; where there can be more, it goes on as
/// PositionSearch. Answer and counts are the recursion's, without its cost.
class PatternMatcher {
  public:
    /// The texts must outlive the matcher.
    PatternMatcher(std::string_view address, std::string_view pattern,
                   Ending ending = Ending::AtEnd)
        : texts_{address, pattern, ending} {}

    /// Returns whether the whole pattern matches the address.
    bool Matches() { return Search(PositionSearch::Asked::Answer); }

    /// The same; when it matches, what the match consumed is added to counts.
    bool MatchesWithCounts(wild_card_counts& counts);

  private:
    bool TakeSteps(std::size_t& at, Way& way) const;
    bool TakeFixed(std::size_t begin, std::size_t end, Way& way) const;

    bool Search(PositionSearch::Asked asked);
    bool TakeOpen(Element const& open, FixedRun const& rest);
    bool SearchOpen(Element const& open, FixedRun const& rest, std::size_t longest);
    bool SearchPositions(PositionSearch::Asked asked);

    MatchedTexts const texts_;
    std::size_t at_ = 0; // How far the pattern is read.
    Way way_;            // The one way up to there.
};

} // namespace CallRecordingUtils

#endif
