// Reads traits off calls and off the patterns of rules.
//
// A rule's trait must never be narrower than what its calls have. So whatever is not understood
// here is any slot, and what the exclusions of a set leave is asked of the matcher's own item
// lists.

#include "matching/RuleTraits.h"

#include <algorithm>
#include <optional>

#include "language/Items.h"
#include "matching/MatchedTexts.h"
#include "model/RuleSides.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

static_assert(FirstTrait(1, View::Type) == kTraitsOfSide &&
              FirstTrait(0, View::Middle) + kTraitsOfView[3] == kTraitsOfSide);

SlotSet SlotsOf(char c) {
    return OnlySlot(SlotOf(c));
}

/// The slots of the characters from low to high.
SlotSet SlotsBetween(char low, char high) {
    SlotSet slots = 0;
    for (int c = static_cast<unsigned char>(low); c <= static_cast<unsigned char>(high); ++c)
        slots |= SlotsOf(static_cast<char>(c));
    return slots;
}

/// The slots of the characters from low to high that list admits; without exclusions those of all.
SlotSet AdmittedBetween(std::string_view list, char low, char high) {
    if (!Contains(list, '!'))
        return SlotsBetween(low, high);
    SlotSet slots = 0;
    for (int code = static_cast<unsigned char>(low); code <= static_cast<unsigned char>(high);
         ++code) {
        char const c = static_cast<char>(code);
        Consumed consumed;
        if (AdmitsCandidate(list, {&c, 1}, consumed))
            slots |= SlotsOf(c);
    }
    return slots;
}

// The time for a list grows with the square of its length.
constexpr std::size_t kLongestJudgedList = 128;

/// The slots of the single characters that list admits. Only a "?" admits other characters than
/// those that stand in the list, digits behind a "-", and letters up to the one behind a "-".
SlotSet SlotsOfSet(std::string_view list) {
    if (list.size() > kLongestJudgedList)
        return kAnySlot;
    SlotSet slots = 0;
    char low = '\0';       // What the item begins with,
    std::size_t begin = 0; // and where.
    for (std::size_t at = 0; at < list.size();) {
        Part const part = ReadPart(list, at);
        at = part.kind == ItemPart::Exclusion ? EndOfItem(list, part.end) : part.end;
        switch (part.kind) {
        case ItemPart::AnyOne: return kAnySlot;
        case ItemPart::Separator:
            low = '\0';
            begin = at;
            break;
        case ItemPart::Literals:
            low = low == '\0' ? part.text.front() : low;
            slots |= AdmittedBetween(list, part.text.front(), part.text.front());
            break;
        case ItemPart::ToDigits:
            if (at - begin == 3 && IsDigit(low) && (at == list.size() || list[at] == ','))
                slots |= AdmittedBetween(list, low, part.text.front());
            else
                slots |= AdmittedBetween(list, '0', '9');
            break;
        case ItemPart::ToLetter: slots |= AdmittedBetween(list, low, part.text.front()); break;
        case ItemPart::Exclusion:
        case ItemPart::StrayDash:
        case ItemPart::Foreign: break;
        }
    }
    return slots;
}

using Slots = std::array<SlotSet, kTraitsOfView[static_cast<std::size_t>(View::Front)]>;

/// The slots of the runs of one width from the number low to the number high. All begin with what
/// the two have in common; behind the first digit that differs anything is taken for possible.
Slots SlotsOfNumbers(std::string_view low, std::string_view high) {
    Slots slots;
    slots.fill(kAnySlot);
    bool const isNumber = RunLength<IsDigit>(low) == low.size();
    // Longer numbers do not fit 32 bits, and are read as another one.
    if (!isNumber || low.size() > 9 || low.size() != high.size())
        return slots;
    std::size_t i = 0;
    for (; i < low.size() && low[i] == high[i]; ++i)
        slots[i] = SlotsOf(low[i]);
    if (i < low.size())
        slots[i] = SlotsOf(low[i]) | SlotsBetween(low[i], high[i]);
    return slots;
}

/// The slots of what a list admits of which all candidates have one width, more than 1: so its
/// items are values and ranges of numbers.
Slots SlotsOfList(std::string_view list) {
    Slots all{};
    Slots item{};
    std::size_t width = 0; // Of what is read of the item.
    std::string_view low;
    auto const endItem = [&] {
        for (std::size_t i = 0; i < all.size() && width > 0; ++i)
            all[i] |= item[i];
        width = 0;
    };
    for (std::size_t at = 0; at < list.size();) {
        Part const part = ReadPart(list, at);
        at = part.kind == ItemPart::Exclusion ? EndOfItem(list, part.end) : part.end;
        if (part.kind == ItemPart::Separator)
            endItem();
        else if (part.kind == ItemPart::ToDigits)
            item = SlotsOfNumbers(low, part.text);
        else if (part.kind != ItemPart::Exclusion)
            for (char const c : low = part.text) {
                if (width < item.size())
                    item[width] = part.kind == ItemPart::Literals ? SlotsOf(c) : kAnySlot;
                ++width;
            }
    }
    endItem();
    return all;
}

/// The elements of a pattern between two that have no certain width.
struct Stretch {
    std::size_t begin = 0;
    FixedRun run{};
};

/// The traits of one side of a rule, read off its pattern.
class SideReader {
  public:
    SideReader(RuleSide const& side, std::size_t sideNumber, RuleTraits& traits)
        : side_(side), sideNumber_(sideNumber),
          traits_(traits), texts_{{}, side.pattern, Ending::AtEnd} {}

    void Read() {
        if (side_.type != CALL_TYPE_ANY)
            Put(View::Type, 0, SlotsOf(static_cast<char>(side_.type)));
        if (side_.type == CALL_TYPE_SIP) {
            std::optional<std::string_view> port;
            std::string_view const userAndHost = SplitPort(side_.pattern, port);
            if (!port || port->empty())
                texts_ = {{}, userAndHost, Ending::AtPort};
        }
        Stretch stretch{0, texts_.ReadFixed(0)};
        PutFront(stretch);
        std::size_t mostLiterals = 0;
        while (stretch.run.next == Construct::AnyRun || stretch.run.next == Construct::Range) {
            std::size_t const begin = ReadElement(texts_.pattern, stretch.run.end).end;
            stretch = {begin, texts_.ReadFixed(begin)};
            PutMiddle(stretch, mostLiterals);
            if (stretch.run.next == Construct::End && side_.type != CALL_TYPE_SIP)
                PutBack(stretch);
        }
    }

  private:
    void Put(View view, std::size_t offset, SlotSet slots) {
        if (offset < kTraitsOfView[static_cast<std::size_t>(view)])
            traits_[FirstTrait(sideNumber_, view) + offset] = slots;
    }

    /// Calls put(place, slots, isLiteral) for each character that the elements of stretch take.
    template <typename Act>
    void ForEachPlace(Stretch const& stretch, Act put) const {
        std::size_t place = 0;
        for (std::size_t at = stretch.begin; at < stretch.run.end;) {
            Element const element = ReadElement(texts_.pattern, at);
            std::size_t const width = texts_.WidthOf(element);
            at = element.end;
            if (element.construct == Construct::Literal)
                put(place, SlotsOf(texts_.pattern[element.begin]), true);
            else if (element.construct == Construct::AnyOne)
                put(place, kAnySlot, false);
            else if (width == 1)
                put(place, SlotsOfSet(ItemsOf(texts_.pattern, element)), false);
            else
                PutList(place, element, width, put);
            place += width;
        }
    }

    template <typename Act>
    void PutList(std::size_t place, Element const& range, std::size_t width, Act put) const {
        Slots const slots = SlotsOfList(ItemsOf(texts_.pattern, range));
        for (std::size_t i = 0; i < width; ++i)
            put(place + i, i < slots.size() ? slots[i] : kAnySlot, false);
    }

    /// The first stretch. When it is all of the pattern, its places are certain from the back too.
    void PutFront(Stretch const& stretch) {
        bool const isAll = stretch.run.next == Construct::End && side_.type != CALL_TYPE_SIP;
        ForEachPlace(stretch, [&](std::size_t place, SlotSet slots, bool) {
            Put(View::Front, place, slots);
            if (isAll)
                Put(View::Back, stretch.run.width - 1 - place, slots);
        });
        // A rule for any call type does not see where the user of a SIP call ends.
        if (stretch.run.next == Construct::End && side_.type != CALL_TYPE_ANY)
            Put(View::Front, stretch.run.width,
                SlotsOf(texts_.ending == Ending::AtPort ? ':' : '\0'));
    }

    /// The last stretch of several.
    void PutBack(Stretch const& stretch) {
        ForEachPlace(
            stretch, [&](std::size_t place, SlotSet slots,
                         bool) { Put(View::Back, stretch.run.width - 1 - place, slots); });
    }

    /// Of several stretches with literals the one with the most of them is taken, from its first
    /// literal on.
    void PutMiddle(Stretch const& stretch, std::size_t& mostLiterals) {
        std::size_t literals = 0;
        std::size_t origin = 0;
        ForEachPlace(stretch, [&](std::size_t place, SlotSet, bool isLiteral) {
            if (isLiteral && literals++ == 0)
                origin = place;
        });
        if (literals <= mostLiterals)
            return;
        mostLiterals = literals;
        std::fill_n(traits_.begin() +
                        static_cast<std::ptrdiff_t>(FirstTrait(sideNumber_, View::Middle)),
                    kTraitsOfView[static_cast<std::size_t>(View::Middle)], kAnySlot);
        ForEachPlace(stretch, [&](std::size_t place, SlotSet slots, bool) {
            if (place >= origin)
                Put(View::Middle, place - origin, slots);
        });
    }

    RuleSide const side_;
    std::size_t const sideNumber_;
    RuleTraits& traits_;
    MatchedTexts texts_; // The pattern alone.
};

} // namespace

RuleTraits TraitsOf(CallRecordingRuleParams const& rule) {
    RuleTraits traits;
    traits.fill(kAnySlot);
    auto const [caller, called] = SidesOf(rule);
    SideReader(caller, 0, traits).Read();
    SideReader(called, 1, traits).Read();
    return traits;
}

CallTraits::CallTraits(Call const& call) {
    SetSide(0, call.caller);
    SetSide(1, call.called);
}

void CallTraits::SetSide(std::size_t side, CallSide const& callSide) {
    std::string_view const address = callSide.Address();
    std::string_view const user = callSide.User();
    types_[side] = static_cast<char>(callSide.Type());
    Text* const texts = &texts_[side * kViews];
    texts[static_cast<std::size_t>(View::Type)] = {&types_[side], 1};
    texts[static_cast<std::size_t>(View::Front)] = {address.data(), address.size()};
    texts[static_cast<std::size_t>(View::Back)] = {user.empty() ? nullptr : &user.back(),
                                                   user.size()};
    texts[static_cast<std::size_t>(View::Middle)] = {address.data(), address.size()};
}

void CallTraits::SetOrigin(std::size_t side, std::size_t origin) {
    std::string_view const rest = Address(side).substr(origin);
    texts_[side * kViews + static_cast<std::size_t>(View::Middle)] = {rest.data(), rest.size()};
}

} // namespace CallRecordingUtils
