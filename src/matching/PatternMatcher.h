// Matches one address against one pattern.

#ifndef MATCHING_PATTERNMATCHER_H
#define MATCHING_PATTERNMATCHER_H

#include <cstddef>
#include <memory_resource>
#include <string_view>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "language/Characters.h"
#include "matching/ItemList.h"
#include "matching/PatternCounts.h"

namespace CallRecordingUtils {

/// What SharedLiterals returns when pattern cannot match address.
inline constexpr std::size_t kDiffers = std::string_view::npos;

/// Returns how many literals pattern begins with, when address begins with the same ones; else
/// kDiffers.
inline std::size_t SharedLiterals(std::string_view pattern, std::string_view address) {
    std::size_t at = 0;
    for (; at < pattern.size() && IsLiteral(pattern[at]); ++at)
        if (at == address.size() || pattern[at] != address[at])
            return kDiffers;
    return at;
}

/// One search. The meaning of a pattern is that of the plain recursion which at every "*" and every
/// range expression tries the shortest run first and takes the first one with which the rest
/// matches.
///
/// The search gives the same answer, and the same counts, without recursion or backtracking. It
/// reads the pattern once from left to right and keeps the places of the address at which the
/// reading can stand, in the order in which the recursion would come to them. What the rest of the
/// pattern makes of a place depends on nothing but the place; so of several ways to the same place
/// only the first can ever be the recursion's, and the others are dropped: there are never more
/// places than the address has characters. At the end, the first place left that fits is the way
/// the recursion takes.
class PatternMatcher {
  public:
    /// The pattern is pattern with tail behind it; a group of pattern does not end in tail.
    /// literals is what SharedLiterals found, not kDiffers. The texts must outlive the matcher.
    PatternMatcher(std::string_view address, std::string_view pattern, std::size_t literals,
                   std::string_view tail = {})
        : address_(address), pattern_(pattern), tail_(tail), end_(pattern.size() + tail.size()),
          at_(literals), place_{literals, {}} {}

    /// Returns whether the whole address matches the whole pattern.
    bool Matches();

    /// Adds what the match consumed to counts. REQUIRES: Matches() returned true.
    void AddCounts(wild_card_counts& counts) const;

  private:
    /// A way to read the pattern up to at_: how far into the address it has come, and what the
    /// items of its groups consumed.
    struct Place {
        std::size_t position;
        Consumed grouped;
    };
    using Places = std::pmr::vector<Place>;
    using Marks = std::pmr::vector<bool>; // One for each position of the address.

    enum class Construct {
        End,    // Nothing is left.
        Step,   // One character: a literal, "?" or a set.
        AnyRun, // "*"
        Range,  // "<items>"
        Stop,   // A character outside the language: success.
        Broken  // A group that is not closed: no match.
    };

    struct Element {
        Construct construct;
        std::size_t begin; // Where in the pattern it stands.
        std::size_t end;
    };

    /// The steps up to the next element of another kind.
    struct StepRun {
        std::size_t end;   // Where in the pattern they end.
        std::size_t width; // How many characters they take.
        Construct next;    // What follows.
    };

    char PatternAt(std::size_t at) const {
        return at < pattern_.size() ? pattern_[at] : tail_[at - pattern_.size()];
    }
    Element Read(std::size_t at) const;
    StepRun ReadSteps(std::size_t at) const;
    std::string_view Items(Element const& group) const;

    bool TakeStep(Element const& step, Place& place) const;
    bool TakeLiterals(std::size_t& at, Place& place) const;
    bool TakeSteps(std::size_t begin, std::size_t end, Place& place) const;
    bool TakeRunTo(Element const& run, std::size_t end, Place& place) const;

    bool TakeRun(Element const& run, StepRun const& rest);
    bool SearchRun(Element const& run, StepRun const& rest, std::size_t longest);
    bool MatchFromManyPlaces();
    void KeepWhatSteps(Element const& step, Places& places) const;
    void SpreadAnyRun(Places const& from, Places& to) const;
    void SpreadRange(Element const& range, Places const& from, Places& to, Marks& taken) const;
    bool PickPlaceAtEnd(Places const& places);

    std::string_view const address_;
    std::string_view const pattern_;
    std::string_view const tail_;
    std::size_t const end_;
    std::size_t at_; // How far the pattern is read.
    Place place_;    // The one place while there is but one; at the end the deciding one.
};

} // namespace CallRecordingUtils

#endif
