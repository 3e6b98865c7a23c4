// Reads the traits of calls, and those of rules from their patterns.
//
// A trait of a rule must admit every call that the rule takes. So it is any slot wherever a pattern
// is not understood or not read. What groups accept is read by the matcher's own readers: symbol
// items by ReadSymbolItems, other items by ItemReader.

#include "matching/RuleTraits.h"

#include <algorithm>
#include <optional>

#include "common/Bits.h"
#include "matching/MatchedTexts.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

static_assert(FirstTrait(1, View::CallType) == kTraitsOfSide &&
              FirstTrait(0, View::Middle) + TraitsOfView(View::Middle) == kTraitsOfSide);

constexpr std::size_t kFrontTraits = TraitsOfView(View::Front);
constexpr std::size_t kBackTraits = TraitsOfView(View::Back);
constexpr std::size_t kMiddleTraits = TraitsOfView(View::Middle);

/// How many steps the two sides of a rule may take together, of a nanosecond or two each. Reading
/// traits must not take longer than loading the rule did, and long patterns load fast. Reading more
/// would not help much, since the views see two dozen places of a side.
constexpr std::size_t kMostSteps = 180;
constexpr std::size_t kMostStepsOfCaller = kMostSteps / 2;

/// The steps of an element other than a literal, which takes one. Lists of range expressions are
/// read twice.
std::size_t StepsOf(Element const& element) {
    std::size_t const length = element.end - element.begin;
    return 9 + (element.construct == Construct::Range ? 3 * length : length);
}

SlotSet SlotsOf(char c) {
    return OnlySlot(SlotOf(c));
}

/// A set of ASCII characters as a table, one bit for each.
using CharacterTable = std::array<Word, 128 / kWordBits>;

/// For each slot the characters that are in it.
constexpr std::array<CharacterTable, kSlots> MakeSlotTables() {
    std::array<CharacterTable, kSlots> tables{};
    for (std::size_t c = 0; c < 128; ++c)
        tables[kSlotTable[c]][c / kWordBits] |= Word{1} << c % kWordBits;
    return tables;
}
constexpr std::array<CharacterTable, kSlots> kSlotTables = MakeSlotTables();

/// Adds low, and the characters after it up to high, which is of the same kind.
void Add(CharacterTable& table, char low, char high) {
    std::size_t const first = static_cast<unsigned char>(low);
    std::size_t const others = high > low ? static_cast<std::size_t>(high - low) : 0;
    table[first / kWordBits] |= ~Word{0} >> (kWordBits - 1 - others) << first % kWordBits;
}

SlotSet SlotsOf(CharacterTable const& table) {
    Word const digits = table[0] >> '0' & 0x3ff;
    auto slots = static_cast<SlotSet>(digits);
    bool const hasOthers = table[0] != digits << '0' || table[1] != 0; // Rarely.
    for (std::size_t slot = kSlots - kSharedSlots; hasOthers && slot < kSlots; ++slot)
        if (((table[0] & kSlotTables[slot][0]) | (table[1] & kSlotTables[slot][1])) != 0)
            slots |= OnlySlot(slot);
    return slots;
}

/// Returns the slots of the single characters that list admits.
SlotSet SlotsOfSet(std::string_view list) {
    CharacterTable accepted{};
    CharacterTable excluded{};
    std::size_t const end = ReadSymbolItems(list, 0, [&](bool excludes, char low, char high) {
        Add(excludes ? excluded : accepted, low, high);
    });
    if (end != list.size())
        return kAnySlot;
    return SlotsOf({accepted[0] & ~excluded[0], accepted[1] & ~excluded[1]});
}

/// Every byte, so that a call type can be looked at like a character of an address.
constexpr std::array<char, 256> MakeBytes() {
    std::array<char, 256> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i);
    return bytes;
}
constexpr std::array<char, 256> kBytes = MakeBytes();

/// The slots at each of the first places of some texts of one width.
using Slots = std::array<SlotSet, kFrontTraits>;

void AddValue(Slots& slots, std::string_view value) {
    for (std::size_t i = 0; i < std::min(slots.size(), value.size()); ++i)
        slots[i] |= IsLiteral(value[i]) ? SlotsOf(value[i]) : kAnySlot;
}

/// Adds low and the numbers from low to high. If the two have one width, all of these begin with
/// the digits that low and high have in common. After the first digit that differs any slot is
/// possible.
void AddNumbers(Slots& slots, std::string_view low, std::string_view high) {
    bool const isNumber = RunLength<IsDigit>(low) == low.size();
    // A number of more than nine digits may not fit into 32 bits, and counts as another one then.
    bool const isRead = isNumber && low.size() <= 9 && low.size() == high.size();
    std::size_t i = 0;
    for (; isRead && i < std::min(slots.size(), low.size()) && low[i] == high[i]; ++i)
        slots[i] |= SlotsOf(low[i]);
    if (isRead && i < std::min(slots.size(), low.size())) {
        CharacterTable digits{};
        Add(digits, low[i], high[i]);
        slots[i++] |= SlotsOf(digits);
    }
    std::fill(slots.begin() + static_cast<std::ptrdiff_t>(i), slots.end(), kAnySlot);
}

/// Returns the slots of what list accepts. REQUIRES: list accepts texts of one width only.
Slots SlotsOfRange(std::string_view list) {
    Slots slots{};
    for (ItemReader item(list); item.Next();)
        switch (item.Form()) {
        case ItemForm::Value: AddValue(slots, item.Value()); break;
        case ItemForm::NumberRange: AddNumbers(slots, item.Low(), item.High()); break;
        case ItemForm::Other: slots.fill(kAnySlot); break;
        }
    return slots;
}

/// Reads the traits of one side of a rule. After a "*", or a range expression that can take runs of
/// different lengths, a new stretch of the pattern begins, whose places cannot be counted from the
/// front any more.
class SideReader {
  public:
    SideReader(RuleSide const& side, std::size_t sideNumber, RuleTraits& traits)
        : side_(side), sideNumber_(sideNumber),
          traits_(traits), texts_{{}, side.pattern, Ending::AtEnd} {}

    /// Reads the pattern in up to mostSteps steps, and returns how many it took.
    std::size_t Read(std::size_t mostSteps) {
        if (side_.type != CALL_TYPE_ANY)
            Put(View::CallType, 0, SlotsOf(static_cast<char>(side_.type)));
        // The end of a longer pattern is not reached.
        if (side_.type == CALL_TYPE_SIP && side_.pattern.size() <= mostSteps)
            CutEmptyPort();
        std::size_t steps = 0;
        for (std::size_t at = 0;;) {
            std::string_view const left = texts_.pattern.substr(at, mostSteps - steps);
            std::size_t const literals = RunLength<IsLiteral>(left);
            TakeLiterals(left.substr(0, literals));
            steps += literals;
            Element const element = ReadElement(texts_.pattern, at + literals);
            if (StepsOf(element) > mostSteps - steps || !Take(element))
                break;
            steps += StepsOf(element);
            at = element.end;
        }
        EndStretch();
        return steps;
    }

  private:
    /// A pattern without a port takes every port.
    void CutEmptyPort() {
        std::optional<std::string_view> port;
        std::string_view const userAndHost = SplitPort(side_.pattern, port);
        if (!port || port->empty())
            texts_ = {{}, userAndHost, Ending::AtPort};
    }

    /// Returns whether the reading goes on after element.
    bool Take(Element const& element) {
        switch (element.construct) {
        case Construct::Literal: return true; // Not reached: TakeLiterals has taken them.
        case Construct::AnyOne: TakePlace(kAnySlot); return true;
        case Construct::Set: TakePlace(SlotsOfSet(ItemsOf(texts_.pattern, element))); return true;
        case Construct::AnyRun: EndStretch(); return true;
        case Construct::Range: TakeRange(element); return true;
        case Construct::End: TakeEnd(); return false;
        case Construct::Stop:
        case Construct::Unclosed: return false;
        }
        return false;
    }

    /// Looks only at those literals of a long run that some view can see.
    void TakeLiterals(std::string_view run) {
        if (literals_ == 0)
            origin_ = width_;
        literals_ += run.size();
        std::size_t const begin = std::min(run.size(), kFrontTraits);
        std::size_t const end = std::max(begin, run.size() - std::min(run.size(), kBackTraits));
        for (char const c : run.substr(0, begin))
            TakePlace(SlotsOf(c));
        width_ += end - begin;
        for (char const c : run.substr(end))
            TakePlace(SlotsOf(c));
    }

    void TakePlace(SlotSet slots) {
        if (isFirst_)
            Put(View::Front, width_, slots);
        if (literals_ > 0 && width_ - origin_ < kMiddleTraits)
            middle_[width_ - origin_] = slots;
        last_[width_ % kBackTraits] = slots;
        ++width_;
    }

    void TakeRange(Element const& range) {
        std::string_view const list = ItemsOf(texts_.pattern, range);
        std::size_t const width = texts_.WidthOf(range);
        if (width == 0) {
            EndStretch();
        } else if (width == 1) {
            TakePlace(SlotsOfSet(list));
        } else {
            Slots const slots = SlotsOfRange(list);
            for (std::size_t i = 0; i < width; ++i)
                TakePlace(i < slots.size() ? slots[i] : kAnySlot);
        }
    }

    void TakeEnd() {
        // A rule for any call type matches the user of a SIP call, but the view goes on behind it.
        if (isFirst_ && side_.type != CALL_TYPE_ANY)
            Put(View::Front, width_, SlotsOf(texts_.ending == Ending::AtPort ? ':' : '\0'));
        if (side_.type == CALL_TYPE_SIP) // Its user does not end where the pattern does.
            return;
        for (std::size_t i = 0; i < std::min(width_, kBackTraits); ++i)
            Put(View::Back, i, last_[(width_ - 1 - i) % kBackTraits]);
    }

    /// The middle traits come from the stretch with most literals, the first stretch excepted.
    /// Their origin is its first literal.
    void EndStretch() {
        if (!isFirst_ && literals_ > mostLiterals_) {
            mostLiterals_ = literals_;
            for (std::size_t i = 0; i < kMiddleTraits; ++i)
                Put(View::Middle, i, i < width_ - origin_ ? middle_[i] : kAnySlot);
        }
        isFirst_ = false;
        width_ = literals_ = 0;
    }

    void Put(View view, std::size_t offset, SlotSet slots) {
        if (offset < TraitsOfView(view))
            traits_[FirstTrait(sideNumber_, view) + offset] = slots;
    }

    RuleSide const side_;
    std::size_t const sideNumber_;
    RuleTraits& traits_;
    MatchedTexts texts_; // The pattern alone.

    // The stretch that is being read.
    bool isFirst_ = true;
    std::size_t width_ = 0;
    std::size_t literals_ = 0;
    std::size_t origin_ = 0;                    // The place of its first literal.
    std::array<SlotSet, kMiddleTraits> middle_; // From there on.
    std::array<SlotSet, kBackTraits> last_;     // Its last places, in a ring.

    std::size_t mostLiterals_ = 0; // Of all stretches but the first.
};

} // namespace

RuleTraits TraitsOf(RuleSides const& sides, std::size_t& steps) {
    RuleTraits traits;
    traits.fill(kAnySlot);
    std::size_t const stepsOfCaller = SideReader(sides.caller, 0, traits).Read(kMostStepsOfCaller);
    steps += stepsOfCaller;
    steps += SideReader(sides.called, 1, traits).Read(kMostSteps - stepsOfCaller);
    return traits;
}

CallTraits::CallTraits(Call const& call) {
    SetSide(0, call.caller);
    SetSide(1, call.called);
}

void CallTraits::SetSide(std::size_t side, CallSide const& callSide) {
    std::string_view const address = callSide.Address();
    std::string_view const user = callSide.User();
    auto const set = [&](View view, char const* first, std::size_t size) {
        texts_[side * kViews + static_cast<std::size_t>(view)] = {first, size};
    };
    set(View::CallType, &kBytes[static_cast<unsigned char>(callSide.Type())], 1);
    set(View::Front, address.data(), address.size());
    set(View::Back, user.empty() ? nullptr : &user.back(), user.size());
    set(View::Middle, address.data(), address.size());
}

void CallTraits::SetOrigin(std::size_t side, std::size_t origin) {
    std::string_view const rest = Address(side).substr(origin);
    texts_[side * kViews + static_cast<std::size_t>(View::Middle)] = {rest.data(), rest.size()};
}

} // namespace CallRecordingUtils
