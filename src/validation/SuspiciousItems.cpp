// Looks at the items of groups one by one. What an item takes is asked of the matcher's item lists.

#include "validation/SuspiciousItems.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "common/DecimalNumber.h"
#include "language/Elements.h"
#include "language/Items.h"
#include "matching/ItemList.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kLongestGroup = 1000; // Each item is compared with all others of its group.
constexpr int kMostNumbers = 100;           // The longest range of which every number is tried.
constexpr std::int32_t kGreatestNumber = std::numeric_limits<std::int32_t>::max();

/// A character that no pattern names, so that only a "?" takes it.
constexpr char kUnnamed = '\x01';

/// One item of a group.
struct Item {
    std::string_view text;
    std::string_view list; // All items of its group.
    std::size_t begin;     // In the piece.

    bool IsExclusion() const { return text.front() == '!'; }
    bool IsRange() const { return !IsExclusion() && text.find('-') != kNone; }
    bool IsValue() const { return !IsExclusion() && !IsRange(); }
    bool IsNumberRange() const { return IsRange() && IsDigit(text.front()); }
    std::string_view Low() const { return text.substr(0, text.find('-')); }
    std::string_view High() const { return text.substr(text.find('-') + 1); } // REQUIRES: IsRange()
    bool HasFixedWidth() const { return Low().size() > 1 && Low().front() == '0'; }

    std::optional<Stretch> Whole() const { return Stretch{begin, text.size()}; }
};

/// Returns what find returns for the first item of piece for which it returns something.
template <typename Find>
std::optional<Stretch> FindInItems(PatternPiece const& piece, Find find) {
    std::string_view const pattern = piece.text;
    for (Element element = ReadElement(pattern, 0); element.end != element.begin;
         element = ReadElement(pattern, element.end)) {
        if (element.construct != Construct::Set && element.construct != Construct::Range)
            continue;
        std::string_view const list = ItemsOf(pattern, element);
        if (list.size() > kLongestGroup)
            continue;
        for (std::size_t at = 0; at < list.size(); at = EndOfItem(list, at) + 1) {
            std::string_view const text = list.substr(at, EndOfItem(list, at) - at);
            if (auto found = find(Item{text, list, element.begin + 1 + at}))
                return found;
        }
    }
    return std::nullopt;
}

/// Returns the first item of piece that isSuspicious accepts.
template <typename IsSuspicious>
std::optional<Stretch> FindItem(PatternPiece const& piece, IsSuspicious isSuspicious) {
    return FindInItems(
        piece, [&](Item const& item) { return isSuspicious(item) ? item.Whole() : std::nullopt; });
}

bool Accepts(std::string_view list, std::string_view candidate) {
    Consumed consumed;
    return AcceptsCandidate(list, candidate, consumed);
}

// Samples of what an item takes. They are chosen so that exclusions that reject all of them reject
// everything that the item takes. No samples means that there would be too many.
using Candidates = std::vector<std::string>;

/// An exclusion that rejects an unnamed character has a "?" there, and rejects every other one too.
Candidates CandidatesOfValue(Item const& item) {
    std::string candidate(item.text);
    std::replace(candidate.begin(), candidate.end(), '?', kUnnamed);
    return {candidate};
}

Candidates CandidatesOfLetters(Item const& item) {
    if (item.text.size() != 3)
        return {};
    Candidates letters;
    for (char letter = item.Low().front(); letter <= item.High().front(); ++letter)
        if (IsLetter(letter))
            letters.emplace_back(1, letter);
    return letters;
}

/// A fixed width is compared as text, byte by byte. What follows the first place where the ends
/// differ can be anything, except beside the ends: greater than in the low end, less than in the
/// high end.
Candidates CandidatesOfFixedWidth(Item const& item) {
    std::string_view const low = item.Low();
    std::string_view const high = item.High();
    std::size_t same = 0;
    while (low[same] == high[same])
        ++same;
    Candidates candidates;
    for (char digit = low[same]; digit <= high[same]; ++digit)
        candidates.push_back(
            std::string(low.substr(0, same)) + digit +
            std::string(low.size() - same - 1, digit < high[same] ? '\xff' : kUnnamed));
    return candidates;
}

/// The numbers, and each with other characters after it, since only the leading digits of a
/// candidate are read.
Candidates CandidatesOfNumbers(Item const& item) {
    std::int64_t const low = ParseDecimal(item.Low());
    std::int64_t const high = ParseDecimal(item.High());
    if (high == kGreatestNumber || high - low >= kMostNumbers)
        return {};
    Candidates candidates;
    for (std::int64_t number = low; number <= high; ++number)
        for (std::string candidate = std::to_string(number); candidate.size() <= item.High().size();
             candidate += kUnnamed)
            candidates.push_back(candidate);
    return candidates;
}

Candidates CandidatesOf(Item const& item) {
    if (item.IsValue())
        return CandidatesOfValue(item);
    if (!item.IsNumberRange())
        return CandidatesOfLetters(item);
    return item.HasFixedWidth() ? CandidatesOfFixedWidth(item) : CandidatesOfNumbers(item);
}

} // namespace

std::optional<Stretch> FindBracketInItem(PatternPiece const& piece) {
    return FindInItems(
        piece,
        [](Item const& item) -> std::optional<Stretch> {
            std::size_t const bracket = item.text.find_first_of("[]");
            if (item.IsExclusion() || bracket == kNone)
                return std::nullopt;
            return Stretch{item.begin + bracket, 1};
        });
}

std::optional<Stretch> FindDots(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            std::size_t const dots = item.text.find("..");
            return item.IsValue() && dots != kNone && dots != 0 && item.text.back() != '.';
        });
}

std::optional<Stretch> FindLongLetterRange(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            return item.IsRange() && !item.IsNumberRange() && item.text.size() != 3;
        });
}

std::optional<Stretch> FindUselessZero(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            return item.IsNumberRange() && item.Low().size() == 1 && item.High().size() > 1 &&
                   item.High().front() == '0';
        });
}

std::optional<Stretch> FindLargeNumber(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            return item.IsNumberRange() && !item.HasFixedWidth() &&
                   ParseDecimal(item.High()) == kGreatestNumber &&
                   item.High() != std::to_string(kGreatestNumber) &&
                   item.High().find_first_not_of('9') != kNone; // Or there are no greater numbers.
        });
}

std::optional<Stretch> FindIdleExclusion(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            return item.IsExclusion() && item.text.find('?') == kNone &&
                   !Accepts(item.list, item.text.substr(1));
        });
}

std::optional<Stretch> FindExcludedItem(PatternPiece const& piece) {
    return FindItem(
        piece,
        [](Item const& item) {
            if (item.IsExclusion())
                return false;
            Candidates const candidates = CandidatesOf(item);
            auto const isExcluded = [&item](std::string const& candidate) {
                return !Accepts(item.text, candidate) || ExcludesCandidate(item.list, candidate);
            };
            return !candidates.empty() &&
                   std::all_of(candidates.begin(), candidates.end(), isExcluded);
        });
}

} // namespace CallRecordingUtils
