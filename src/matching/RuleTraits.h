// What a rule asks of a call, and what the call has, at certain places of its two sides.

#ifndef MATCHING_RULETRAITS_H
#define MATCHING_RULETRAITS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "language/Characters.h"
#include "matching/Decision.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// Characters fall into sixteen slots: each digit has a slot of its own, all others share six. What
/// is in another slot is another character; nothing else is ever concluded.
inline constexpr std::size_t kSlots = 16;
inline constexpr std::size_t kSharedSlots = 6;
constexpr std::array<std::uint8_t, 256> MakeSlotTable() {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = static_cast<std::uint8_t>(IsDigit(static_cast<char>(byte))
                                                    ? byte - '0'
                                                    : kSlots - kSharedSlots + byte % kSharedSlots);
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

/// From where the characters of a side are counted.
enum class View : std::uint8_t {
    CallType, // One "character", the call type.
    Front,    // From the start of the address.
    Back,     // From the last character of the user, backwards.
    Middle,   // From an origin: some character of the address that the search chooses.
};
inline constexpr std::size_t kViews = 4;
inline constexpr std::array<std::size_t, kViews> kTraitsOfView{1, 24, 8, 8};
constexpr std::size_t TraitsOfView(View view) {
    return kTraitsOfView[static_cast<std::size_t>(view)];
}

/// One character of a call: a place in one view of one side.
struct Trait {
    std::uint8_t view = 0;   // Numbered over both sides; the views of the caller come first.
    std::uint8_t offset = 0; // How far the place is from where the view counts.
    std::int8_t step = 0;    // The same as a step in memory, negative in views from the back.
};

inline constexpr std::size_t kTraitsOfSide = 41;
inline constexpr std::size_t kTraits = 2 * kTraitsOfSide;

constexpr Trait MakeTrait(std::size_t view, std::size_t offset) {
    bool const isBack = view % kViews == static_cast<std::size_t>(View::Back);
    auto const step = static_cast<std::int8_t>(offset);
    return {static_cast<std::uint8_t>(view), static_cast<std::uint8_t>(offset),
            static_cast<std::int8_t>(isBack ? -step : step)};
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

/// For each row of kTraitTable, the slots that a call which the rule takes can have there. The
/// middle traits of a side hold for at least one origin in the address.
using RuleTraits = std::array<SlotSet, kTraits>;

/// Reads the traits of a rule with sides, and adds to steps how many it took. There is an upper
/// bound for that, whatever the patterns are.
RuleTraits TraitsOf(RuleSides const& sides, std::size_t& steps);
inline RuleTraits TraitsOf(CallRecordingRuleParams const& rule, std::size_t& steps) {
    return TraitsOf(SidesOf(rule), steps);
}

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
        return trait.offset < text.size ? SlotOf(text.first[trait.step]) : SlotOf('\0');
    }

    std::string_view Address(std::size_t side) const {
        Text const& address = texts_[side * kViews + static_cast<std::size_t>(View::Front)];
        return {address.first, address.size};
    }

    /// Lets the middle view of a side count from the character at the place origin of its address.
    /// REQUIRES: the address is longer.
    void SetOrigin(std::size_t side, std::size_t origin);

  private:
    void SetSide(std::size_t side, CallSide const& callSide);

    std::array<Text, 2 * kViews> texts_;
};

} // namespace CallRecordingUtils

#endif
