// What a call has, and a rule asks for, in certain places of the two sides.

#ifndef MATCHING_RULETRAITS_H
#define MATCHING_RULETRAITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/Decision.h"

namespace CallRecordingUtils {

/// Characters fall into sixteen slots: digits into one each, others shared. A call that lacks the
/// slot lacks the character, which is all that is ever concluded.
inline constexpr std::size_t kSlots = 16;
constexpr std::size_t SlotOf(char c) {
    // The end of a text reads as NUL, and must not look like the digit 0.
    return c == '\0' ? kSlots - 1 : static_cast<unsigned char>(c) % kSlots;
}

/// A set of slots, one bit for each.
using SlotSet = std::uint16_t;
inline constexpr SlotSet kAnySlot = 0xffff;
constexpr SlotSet OnlySlot(std::size_t slot) {
    return static_cast<SlotSet>(1U << slot);
}

/// Where the characters of a side are counted from.
enum class View : std::uint8_t {
    Type,   // One "character", the call type.
    Front,  // The start of the address.
    Back,   // The last character of the user, backwards.
    Middle, // Any character of the address that the search has chosen as its origin.
};
inline constexpr std::size_t kViews = 4;
inline constexpr std::array<std::size_t, kViews> kTraitsOfView{1, 24, 8, 8};

/// One place of a call: a character of a view of a side.
struct Trait {
    std::uint8_t view = 0; // Of both sides: those of the caller, then those of the called side.
    std::uint8_t offset = 0;
};

inline constexpr std::size_t kTraitsOfSide = 41;
inline constexpr std::size_t kTraits = 2 * kTraitsOfSide;

constexpr std::array<Trait, kTraits> MakeTraitTable() {
    std::array<Trait, kTraits> table{};
    std::size_t row = 0;
    for (std::size_t view = 0; view < 2 * kViews; ++view)
        for (std::size_t offset = 0; offset < kTraitsOfView[view % kViews]; ++offset)
            table[row++] = {static_cast<std::uint8_t>(view), static_cast<std::uint8_t>(offset)};
    return table;
}
inline constexpr std::array<Trait, kTraits> kTraitTable = MakeTraitTable();

/// Returns the row of kTraitTable where the traits of a view of a side (0: caller) begin.
constexpr std::size_t FirstTrait(std::size_t side, View view) {
    std::size_t row = side * kTraitsOfSide;
    for (std::size_t v = 0; v < static_cast<std::size_t>(view); ++v)
        row += kTraitsOfView[v];
    return row;
}

/// For each row of kTraitTable the slots that a call can have there which the rule matches. The
/// middle traits hold for one origin at least, the others as they are.
using RuleTraits = std::array<SlotSet, kTraits>;
RuleTraits TraitsOf(CallRecordingRuleParams const& rule);

/// The traits of a call.
class CallTraits {
    struct Text {
        char const* first;
        std::size_t size;
        std::ptrdiff_t step;
    };

  public:
    /// call must outlive the object.
    explicit CallTraits(Call const& call);

    std::size_t SlotAt(Trait trait) const {
        Text const& text = texts_[trait.view];
        return trait.offset < text.size ? SlotOf(text.first[trait.offset * text.step])
                                        : SlotOf('\0');
    }

    std::size_t AddressSize(std::size_t side) const { return Of(side, View::Front).size; }
    std::size_t SlotOfAddress(std::size_t side, std::size_t at) const {
        Text const& address = Of(side, View::Front);
        return SlotOf(at < address.size ? address.first[at] : '\0');
    }

    /// Makes the character at the place origin of the address the first of the middle view.
    /// REQUIRES: the address is longer.
    void SetOrigin(std::size_t side, std::size_t origin);

  private:
    void SetSide(std::size_t side, CallSide const& callSide);
    Text const& Of(std::size_t side, View view) const {
        return texts_[side * kViews + static_cast<std::size_t>(view)];
    }

    std::array<char, 2> types_;
    std::array<Text, 2 * kViews> texts_;
};

} // namespace CallRecordingUtils

#endif
