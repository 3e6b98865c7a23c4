// Matches one address against one pattern.

#ifndef MATCHING_PATTERNMATCHER_H
#define MATCHING_PATTERNMATCHER_H

#include <cstddef>
#include <memory_resource>
#include <string_view>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "language/Elements.h"
#include "matching/ItemList.h"

namespace CallRecordingUtils {

/// Returns whether address begins with the literals that pattern begins with. Where it does not,
/// the pattern cannot match.
inline bool BeginsWithLiteralsOf(std::string_view pattern, std::string_view address) {
    for (std::size_t at = 0; at < pattern.size() && IsLiteral(pattern[at]); ++at)
        if (at == address.size() || pattern[at] != address[at])
            return false;
    return true;
}

/// Where in the address the end of a pattern may lie.
enum class Ending {
    AtEnd,  // At the end of the address.
    AtPort, // Before any ":", as if ":*" stood behind the pattern.
};

/// One search. The meaning of a pattern is that of a backtracking recursion which at every "*" and
/// every range expression tries the shortest run first, and takes the first one with which the rest
/// of the pattern matches.
///
/// The search is a simulation of a nondeterministic automaton that keeps the backtracker's priority
/// order. It reads the pattern once from left to right, and keeps all the positions in the address
/// that the reading can have come to, in the order in which the recursion would come to them. What
/// the rest of the pattern makes of a position depends on nothing but the position. So when two
/// ways lead to one position, only the first can be the recursion's, and the other is dropped:
/// there are never more ways than the address has positions. At the end, the first way left that
/// fits is the one that the recursion takes. Answer and counts are the recursion's, without its
/// cost.
class PatternMatcher {
  public:
    /// The texts must outlive the matcher.
    PatternMatcher(std::string_view address, std::string_view pattern,
                   Ending ending = Ending::AtEnd)
        : address_(address), pattern_(pattern), ending_(ending) {}

    /// Returns whether the whole pattern matches the address.
    bool Matches();

    /// Adds what the match consumed to counts. REQUIRES: Matches() returned true.
    void AddCounts(wild_card_counts& counts) const;

  private:
    /// A way to read the pattern up to at_: how far into the address it has come, and what the
    /// items of its groups consumed.
    struct Way {
        std::size_t position = 0;
        Consumed grouped;
    };
    using Ways = std::pmr::vector<Way>;
    using Marks = std::pmr::vector<bool>; // One for each position of the address.

    /// The steps up to the next element of another kind.
    struct StepRun {
        std::size_t end;   // Where in the pattern they end.
        std::size_t width; // How many characters they take.
        Construct next;    // What follows.
    };

    StepRun ReadSteps(std::size_t at) const;
    bool CanEndAt(std::size_t position) const;

    bool TakeStep(Element const& step, Way& way) const;
    bool TakeLiterals(std::size_t& at, Way& way) const;
    bool TakeSteps(std::size_t begin, std::size_t end, Way& way) const;
    bool TakeRunTo(Element const& run, std::size_t end, Way& way) const;

    bool TakeRun(Element const& run, StepRun const& rest);
    bool SearchRun(Element const& run, StepRun const& rest, std::size_t longest);
    bool FollowManyWays();
    void KeepWhatSteps(Element const& step, Ways& ways) const;
    void SpreadAnyRun(Ways const& from, Ways& to) const;
    void SpreadRange(Element const& range, Ways const& from, Ways& to, Marks& taken) const;
    bool PickWayAtEnd(Ways const& ways);

    std::string_view const address_;
    std::string_view const pattern_;
    Ending const ending_;
    std::size_t at_ = 0; // How far the pattern is read.
    Way way_;            // The one way while there is but one; at the end the deciding one.
};

} // namespace CallRecordingUtils

#endif
