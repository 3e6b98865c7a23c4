// What a call has, and a rule asks for, in certain places of the two sides.

#ifndef MATCHING_RULETRAITS_H
#define MATCHING_RULETRAITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "language/Characters.h"
#include "matching/Decision.h"

namespace CallRecordingUtils {

/// Characters fall into sixteen slots: digits into one each, all others into six. A call that lacks
/// the slot lacks the character, which is all that is ever concluded.
inline constexpr std::size_t kSlots = 16;
constexpr std::array<std::uint8_t, 256> MakeSlotTable() {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<std::uint8_t>(IsDigit(static_cast<char>(byte)) ? byte - '0'
                                                                                 : 10 + byte % 6);
    return table;
}
inline constexpr std::array<std::uint8_t, 256> kSlotTable = MakeSlotTable();
constexpr std::size_t SlotOf(char c) {
    return kSlotTable[static_cast<unsigned char>(c)];
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
    std::int8_t place =
        0; // The offset in the text, which views from the back go through backwards.
};

inline constexpr std::size_t kTraitsOfSide = 41;
inline constexpr std::size_t kTraits = 2 * kTraitsOfSide;

constexpr Trait MakeTrait(std::size_t view, std::size_t offset) {
    bool const isBack = view % kViews == static_cast<std::size_t>(View::Back);
    auto const place = static_cast<std::int8_t>(offset);
    return {static_cast<std::uint8_t>(view), static_cast<std::uint8_t>(offset),
            static_cast<std::int8_t>(isBack ? -place : place)};
}

constexpr std::array<Trait, kTraits> MakeTraitTable() {
    std::array<Trait, kTraits> table{};
    std::size_t row = 0;
    for (std::size_t view = 0; view < 2 * kViews; ++view)
        for (std::size_t offset = 0; offset < kTraitsOfView[view % kViews]; ++offset)
            table[row++] = MakeTrait(view, offset);
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
    };

  public:
    /// call must outlive the object.
    explicit CallTraits(Call const& call);

    std::size_t SlotAt(Trait trait) const {
        Text const& text = texts_[trait.view];
        return trait.offset < text.size ? SlotOf(text.first[trait.place]) : SlotOf('\0');
    }

    std::string_view Address(std::size_t side) const {
        Text const& address = texts_[side * kViews + static_cast<std::size_t>(View::Front)];
        return {address.first, address.size};
    }

    /// Makes the character at the place origin of the address the first of the middle view.
    /// REQUIRES: the address is longer.
    void SetOrigin(std::size_t side, std::size_t origin);

  private:
    void SetSide(std::size_t side, CallSide const& callSide);

    std::array<char, 2> types_;
    std::array<Text, 2 * kViews> texts_;
};

} // namespace CallRecordingUtils

#endif
