// Matches one address against one pattern.

#ifndef MATCHING_PATTERNMATCHER_H
#define MATCHING_PATTERNMATCHER_H

#include <cstddef>
#include <string_view>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "matching/MatchedTexts.h"
#include "matching/PositionSearch.h"

namespace CallRecordingUtils {

/// One search. A pattern means what a backtracking recursion makes of it: at every "*" and every
/// range expression it tries the shortest run first, and takes the first run after which the rest
/// of the pattern matches.
///
/// The search simulates a nondeterministic automaton that keeps the order in which the recursion
/// tries things. It reads the pattern once, from left to right, and knows which positions of the
/// address can be reached. Whether the rest of the pattern matches from a position depends on
/// nothing but that position. So of several ways to one position only the one that the recursion
/// would try first counts, and there are never more ways than positions. Usually there is only one,
/// which the search follows here; where there can be more, PositionSearch takes over. Answer and
/// counts are those of the recursion, without its cost.
class PatternMatcher {
  public:
    /// The texts must outlive the matcher.
    PatternMatcher(std::string_view address, std::string_view pattern,
                   Ending ending = Ending::AtEnd)
        : texts_{address, pattern, ending} {}

    /// Returns whether the whole pattern matches the address.
    bool Matches() { return Search(PositionSearch::Asked::Answer); }

    /// Like Matches. If the address matches, what was consumed is added to counts.
    bool MatchesWithCounts(wild_card_counts& counts);

  private:
    bool TakeSteps(std::size_t& at, Way& way) const;
    bool TakeFixed(std::size_t begin, std::size_t end, Way& way) const;

    bool Search(PositionSearch::Asked asked);
    bool TakeOpen(Element const& open, FixedRun const& rest);
    bool SearchOpen(Element const& open, FixedRun const& rest, std::size_t longest);
    bool SearchPositions(PositionSearch::Asked asked);

    MatchedTexts const texts_;
    std::size_t at_ = 0; // How far the pattern has been read.
    Way way_;            // The only way up to there.
};

} // namespace CallRecordingUtils

#endif
