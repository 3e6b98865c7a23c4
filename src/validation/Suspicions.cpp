// Reads a well-formed pattern the way the matcher does, and asks of each item whether it does what
// the user will have wanted. What an item takes, the matcher's item lists answer.

#include "validation/Suspicions.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>

#include "common/DecimalNumber.h"
#include "language/Elements.h"
#include "language/Forms.h"
#include "language/Items.h"
#include "matching/ItemList.h"
#include "validation/Sentence.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kLongestGroup = 1000; // Every item is put to every other one.
constexpr int kMostCandidates = 100;        // Tried of a range until one is left.

/// A place of the stored form, and what to say of it.
struct Suspicion {
    std::size_t begin;
    std::size_t length;
    char const* sentence; // To go on with behind the quoted text.
};
using Suspected = std::optional<Suspicion>;

bool AreLetters(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsLetter);
}

/// One item of a group, and where it stands in the pattern.
struct Item {
    std::string_view text;
    std::size_t begin;

    bool IsExclusion() const { return text.front() == '!'; }
    bool IsRange() const { return !IsExclusion() && text.find('-') != kNone; }
    std::string_view Low() const { return text.substr(0, text.find('-')); }
    std::string_view High() const { return text.substr(text.find('-') + 1); } // REQUIRES: IsRange()
};

Suspected About(Item const& item, char const* sentence) {
    return Suspicion{item.begin, item.text.size(), sentence};
}

// What a single item looks like.

Suspected SuspectBracket(Item const& item) {
    std::size_t const bracket = item.text.find_first_of("[]");
    if (item.IsExclusion() || bracket == kNone)
        return std::nullopt;
    return Suspicion{item.begin + bracket, 1,
                     " inside { } makes its item take nothing: leave out these brackets"};
}

Suspected SuspectDots(Item const& item) {
    std::size_t const dots = item.text.find("..");
    if (item.IsExclusion() || item.IsRange() || dots == kNone || dots == 0 ||
        item.text.back() == '.')
        return std::nullopt;
    return About(item, " is the text with its dots: write \"-\" for a range, as in {200-299}");
}

Suspected SuspectLetters(Item const& item) {
    if (!item.IsRange() || !AreLetters(item.Low()) || item.text.size() == 3)
        return std::nullopt;
    return About(item,
                 " takes the text before the \"-\" and single letters, since a range of letters "
                 "has one at each end: write each text as an item, or one letter, as in {a-c}");
}

Suspected SuspectNumbers(Item const& item) {
    if (!item.IsRange() || !IsDigit(item.Low().front()))
        return std::nullopt;
    if (item.Low().size() == 1 && item.High().size() > 1 && item.High().front() == '0')
        return About(item, " takes no leading zero: give both ends the same number of digits, as "
                           "in 01-05, or leave the zero out");
    if (ParseDecimal(item.High()) == std::numeric_limits<std::int32_t>::max() &&
        item.High() != "2147483647")
        return About(item,
                     " takes greater numbers of this length, too, since all beyond 2147483647 "
                     "count as that: write the leading digits before the range, as in "
                     "4930{0000-9999}");
    return std::nullopt;
}

// What items do to each other.

bool Accepts(std::string_view items, std::string_view candidate) {
    Consumed consumed;
    return AcceptsCandidate(items, candidate, consumed);
}

Suspected SuspectIdleExclusion(Item const& item, std::string_view items) {
    std::string_view const value = item.text.substr(1);
    bool const isIdle = value.find('?') == kNone && !Accepts(items, value);
    if (!item.IsExclusion() || !isIdle)
        return std::nullopt;
    return About(item, " excludes nothing that the other items take: correct it, or remove it");
}

bool LeavesLetter(Item const& item, std::string_view items) {
    for (char letter = item.Low().front(); letter <= item.High().front(); ++letter)
        if (IsLetter(letter) && !ExcludesCandidate(items, {&letter, 1}))
            return true;
    return false;
}

bool LeavesNumber(Item const& item, std::string_view items) {
    std::int64_t const low = ParseDecimal(item.Low());
    std::int64_t const high = ParseDecimal(item.High());
    if (high - low >= kMostCandidates)
        return true;
    for (std::int64_t number = low; number <= high; ++number) {
        std::string candidate = std::to_string(number);
        if (item.Low().front() == '0' && candidate.size() < item.Low().size())
            candidate.insert(0, item.Low().size() - candidate.size(), '0');
        if (!ExcludesCandidate(items, candidate))
            return true;
    }
    return false;
}

/// A "?" is excluded only when every character is. So it is enough to try one that no exclusion
/// names.
bool LeavesValue(Item const& item, std::string_view items) {
    std::string candidate(item.text);
    std::replace(candidate.begin(), candidate.end(), '?', '\x01');
    return !ExcludesCandidate(items, candidate);
}

Suspected SuspectExcludedItem(Item const& item, std::string_view items) {
    if (item.IsExclusion())
        return std::nullopt;
    bool const leaves = !item.IsRange()               ? LeavesValue(item, items)
                        : IsLetter(item.text.front()) ? LeavesLetter(item, items)
                                                      : LeavesNumber(item, items);
    if (leaves)
        return std::nullopt;
    return About(item, " has no effect, since all that it takes is excluded: remove it, or the "
                       "exclusion");
}

Suspected SuspectItem(Item const& item, std::string_view items) {
    for (auto const suspect : {SuspectBracket, SuspectDots, SuspectLetters, SuspectNumbers})
        if (Suspected suspected = suspect(item))
            return suspected;
    for (auto const suspect : {SuspectIdleExclusion, SuspectExcludedItem})
        if (Suspected suspected = suspect(item, items))
            return suspected;
    return std::nullopt;
}

Suspected SuspectGroup(std::string_view items, std::size_t begin) {
    if (items.size() > kLongestGroup)
        return std::nullopt;
    for (std::size_t at = 0; at < items.size(); at = EndOfItem(items, at) + 1) {
        Item const item{items.substr(at, EndOfItem(items, at) - at), begin + at};
        if (Suspected suspected = SuspectItem(item, items))
            return suspected;
    }
    return std::nullopt;
}

/// Looks for a place where the matcher stops within the pattern. That is the worst of all.
Suspected SuspectStop(std::string_view stored) {
    Element element{Construct::End, 0, 0};
    do
        element = ReadElement(stored, element.end);
    while (element.end != element.begin);
    if (element.construct == Construct::End)
        return std::nullopt;
    return Suspicion{
        element.begin, 1,
        " stands in no group: the matcher stops here and takes any rest of the number, "
        "so put it into a group, as in [0-9,!5], or remove it"};
}

Suspected SuspectGroups(std::string_view stored) {
    for (Element element = ReadElement(stored, 0); element.end != element.begin;
         element = ReadElement(stored, element.end)) {
        bool const isGroup =
            element.construct == Construct::Set || element.construct == Construct::Range;
        if (!isGroup)
            continue;
        if (auto suspected = SuspectGroup(ItemsOf(stored, element), element.begin + 1))
            return suspected;
    }
    return std::nullopt;
}

} // namespace

std::optional<PatternProblem> FindSuspicion(std::string_view entry) {
    std::string const stored = ToStoredForm(entry);
    Suspected suspected = SuspectStop(stored);
    if (!suspected)
        suspected = SuspectGroups(stored);
    if (!suspected)
        return std::nullopt;
    std::string escaped(entry);
    StoreEscapes(escaped); // The stored form but for the braces, which stand at the same places.
    std::size_t const begin = PositionAsWritten(entry, escaped, suspected->begin);
    std::size_t const end = PositionAsWritten(entry, escaped, suspected->begin + suspected->length);
    return PatternProblem{begin,
                          Join({Quoted(entry.substr(begin, end - begin)), suspected->sentence})};
}

} // namespace CallRecordingUtils
