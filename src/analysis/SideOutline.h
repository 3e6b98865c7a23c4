// What the addresses that a rule side accepts can look like at their fronts and backs.

#ifndef ANALYSIS_SIDEOUTLINE_H
#define ANALYSIS_SIDEOUTLINE_H

#include <array>
#include <cstddef>

#include "analysis/Address.h"
#include "common/Bits.h"
#include "matching/RuleTraits.h"

namespace CallRecordingUtils {

/// The traits of a side that the decision index uses, as far as all addresses that the side accepts
/// have them. Two sides whose outlines do not meet accept no address in common: most pairs of a
/// long list are told apart by that, before anybody makes an automaton of their patterns.
class SideOutline {
  public:
    /// Of a side that accepts everything.
    SideOutline() { words_.fill(~Word{0}); }
    SideOutline(RuleSide side, CallKind calls);

    bool Meets(SideOutline const& other) const {
        for (std::size_t i = 0; i < words_.size(); ++i)
            if (HasEmptyLane(words_[i] & other.words_[i]))
                return false;
        return true;
    }
    SideOutline& operator&=(SideOutline const& other) {
        for (std::size_t i = 0; i < words_.size(); ++i)
            words_[i] &= other.words_[i];
        return *this;
    }
    bool IsEmpty() const { return !Meets(*this); }

    /// The slots of the character at a place of the address, counted from 0.
    SlotSet FrontAt(std::size_t place) const {
        std::size_t const lane = kFrontLane + place;
        return static_cast<SlotSet>(words_[lane / kLanesOfWord] >> lane % kLanesOfWord * kSlots);
    }

  private:
    // A lane has the slots of one trait: of the call type, the front and the back.
    static constexpr std::size_t kLanesOfWord = kWordBits / kSlots;
    static constexpr std::size_t kLanes = 32;
    static constexpr std::size_t kFrontLane = 1;
    static constexpr std::size_t kBackLane = kLanes - TraitsOfView(View::Back);

    void Set(std::size_t lane, SlotSet slots) {
        std::size_t const shift = lane % kLanesOfWord * kSlots;
        words_[lane / kLanesOfWord] &= ~(Word{kAnySlot} << shift);
        words_[lane / kLanesOfWord] |= Word{slots} << shift;
    }

    /// Subtracting 1 from each lane borrows into the top bit of those that are 0.
    static constexpr bool HasEmptyLane(Word word) {
        constexpr Word kOnes = 0x0001000100010001;
        return ((word - kOnes) & ~word & (kOnes << (kSlots - 1))) != 0;
    }

    std::array<Word, kLanes / kLanesOfWord> words_;
};

} // namespace CallRecordingUtils

#endif
