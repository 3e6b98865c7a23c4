// Checks a pattern step by step; the first step that finds something decides.

#include "validation/PatternCheck.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "language/Characters.h"
#include "language/Forms.h"
#include "validation/Brackets.h"
#include "validation/Finding.h"
#include "validation/RangeCheck.h"
#include "validation/RejectionMessage.h"
#include "validation/SymbolSetCheck.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = std::string_view::npos;

struct ForbiddenPair {
    std::string_view pair;
    PatternFault fault;
    std::size_t culprit; // Which of the two characters the user should look at.
};
constexpr std::array<ForbiddenPair, 19> kForbiddenPairs{{
    {"[,", PatternFault::EmptyItem, 1},       {",]", PatternFault::EmptyItem, 0},
    {"[-", PatternFault::IncompleteRange, 1}, {"-]", PatternFault::IncompleteRange, 0},
    {"[[", PatternFault::NestedGroup, 1},     {"]]", PatternFault::UnopenedGroup, 1},
    {"-,", PatternFault::IncompleteRange, 0}, {",-", PatternFault::IncompleteRange, 1},
    {"**", PatternFault::RepeatedStar, 1},    {"--", PatternFault::RepeatedDash, 1},
    {",,", PatternFault::EmptyItem, 1},       {"[]", PatternFault::EmptyGroup, 0},
    {"{,", PatternFault::EmptyItem, 1},       {",}", PatternFault::EmptyItem, 0},
    {"{-", PatternFault::IncompleteRange, 1}, {"-}", PatternFault::IncompleteRange, 0},
    {"{{", PatternFault::NestedGroup, 1},     {"}}", PatternFault::UnopenedGroup, 1},
    {"{}", PatternFault::EmptyGroup, 0},
}};

Finding At(PatternFault fault, std::size_t position) {
    return {fault, position, 1};
}

// The steps in their order. The first one reads the entry form; all others read it with the escapes
// replaced.

std::optional<Finding> CheckReservedCharacters(std::string_view text) {
    std::size_t const at = text.find_first_of(kEscapeCodes);
    if (at == kNone)
        return std::nullopt;
    return At(PatternFault::ReservedCharacter, at);
}

std::optional<Finding> CheckBackslashes(std::string_view text) {
    std::size_t const at = text.find('\\');
    if (at == kNone)
        return std::nullopt;
    return At(PatternFault::StrayBackslash, at);
}

std::optional<Finding> CheckFirstExclusion(std::string_view text) {
    std::size_t const at = text.find('!');
    if (at == kNone || GroupExtent(text).Covers(at))
        return std::nullopt;
    // Next to a bracket without a partner, that is the mistake.
    std::size_t const before = text.find_last_of("[]{}", at);
    if (before != kNone && Contains(kOpenings, text[before]))
        return At(PatternFault::UnclosedGroup, before);
    std::size_t const after = text.find_first_of("[]{}", at);
    if (after != kNone && Contains(kClosings, text[after]))
        return At(PatternFault::UnopenedGroup, after);
    return At(PatternFault::ExclusionOutsideGroup, at);
}

std::optional<Finding> CheckCharactersAndRunningBalance(std::string_view text) {
    std::array<int, kAllBrackets.size()> excess{}; // Of opening over closing brackets so far.
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!IsEntryCharacter(text[at]))
            return At(PatternFault::InvalidCharacter, at);
        for (std::size_t kind = 0; kind < kAllBrackets.size(); ++kind) {
            excess[kind] +=
                (text[at] == kAllBrackets[kind].opening) - (text[at] == kAllBrackets[kind].closing);
            if (std::abs(excess[kind]) > 1)
                return FirstMisplacedBracket(text, kAllBrackets[kind]);
        }
    }
    return std::nullopt;
}

std::optional<Finding> CheckFinalBalance(std::string_view text) {
    for (Brackets brackets : kAllBrackets)
        if (std::count(text.begin(), text.end(), brackets.opening) !=
            std::count(text.begin(), text.end(), brackets.closing))
            return FirstMisplacedBracket(text, brackets);
    return std::nullopt;
}

// Goes through the text rather than through the pairs, since the user sees the first place first.
std::optional<Finding> CheckForbiddenPairs(std::string_view text) {
    for (std::size_t at = 0; at + 1 < text.size(); ++at) {
        for (ForbiddenPair const& forbidden : kForbiddenPairs)
            if (text[at] == forbidden.pair[0] && text[at + 1] == forbidden.pair[1])
                return At(forbidden.fault, at + forbidden.culprit);
    }
    return std::nullopt;
}

std::optional<Finding> CheckExtentOfSets(std::string_view text) {
    std::size_t closing = 0;
    for (std::size_t opening = text.find('['); opening != kNone;
         opening = text.find('[', closing)) {
        closing = text.find(']', opening);
        if (closing == kNone)
            return FirstMisplacedBracket(text, kSetBrackets);
        std::size_t const wrong = text.find_first_of("[*]", opening + 1);
        if (text[wrong] == '[')
            return FirstMisplacedBracket(text, kSetBrackets);
        if (text[wrong] == '*')
            return At(PatternFault::StarInGroup, wrong);
    }
    return std::nullopt;
}

std::optional<Finding> CheckNoSeparator(std::string_view text, std::size_t begin, std::size_t end) {
    std::size_t const at = text.substr(0, end).find_first_of("-,", begin);
    if (at == kNone)
        return std::nullopt;
    return At(PatternFault::SeparatorOutsideGroup, at);
}

std::optional<Finding> CheckTextBeforeGroups(std::string_view text) {
    std::size_t const opening = text.find_first_of(kOpenings);
    return opening == kNone ? std::nullopt : CheckNoSeparator(text, 0, opening);
}

std::optional<Finding> CheckTextBetweenGroups(std::string_view text) {
    std::size_t opening = 0;
    for (;;) {
        std::size_t const closing = text.find_first_of(kClosings, opening);
        opening = text.find_first_of(kOpenings, closing);
        if (closing == kNone || opening == kNone)
            return std::nullopt;
        if (auto finding = CheckNoSeparator(text, closing, opening))
            return finding;
    }
}

std::optional<Finding> CheckTextAfterGroups(std::string_view text) {
    std::size_t const closing = text.find_last_of(kClosings);
    return closing == kNone ? std::nullopt : CheckNoSeparator(text, closing, text.size());
}

/// Returns the first separator of this kind that is in no group.
std::optional<Finding> CheckSeparators(std::string_view text, char separator) {
    GroupExtent const groups(text);
    for (std::size_t at = text.find(separator); at != kNone; at = text.find(separator, at + 1))
        if (!groups.Covers(at))
            return At(PatternFault::SeparatorOutsideGroup, at);
    return std::nullopt;
}

std::optional<Finding> CheckDashes(std::string_view text) {
    return CheckSeparators(text, '-');
}
std::optional<Finding> CheckCommas(std::string_view text) {
    return CheckSeparators(text, ',');
}

/// Checks the group of text from opening to closing.
template <typename Check>
std::optional<Finding> CheckGroup(Check check, std::string_view text, std::size_t opening,
                                  std::size_t closing) {
    auto finding = check(text.substr(opening, closing + 1 - opening));
    if (finding)
        finding->position += opening;
    return finding;
}

std::optional<Finding> CheckItemsOfSets(std::string_view text) {
    std::size_t closing = 0;
    for (std::size_t opening = text.find('['); opening != kNone;
         opening = text.find('[', closing)) {
        closing = text.find(']', opening);
        if (auto finding = CheckGroup(CheckSymbolSet, text, opening, closing))
            return finding;
    }
    return std::nullopt;
}

std::optional<Finding> CheckRangeExpressions(std::string_view text) {
    std::size_t closing = 0;
    for (std::size_t opening = text.find_first_of("{}"); opening != kNone;
         opening = text.find_first_of("{}", closing + 1)) {
        closing = text.find_first_of("{}", opening + 1);
        if (text[opening] == '}' || closing == kNone || text[closing] == '{')
            return FirstMisplacedBracket(text, kRangeBrackets);
        if (auto finding = CheckGroup(CheckRange, text, opening, closing))
            return finding;
    }
    return std::nullopt;
}

using Step = std::optional<Finding> (*)(std::string_view text);
// clang-format off
constexpr Step kStepsOnStoredForm[] = {
    CheckBackslashes,
    CheckFirstExclusion,
    CheckCharactersAndRunningBalance,
    CheckFinalBalance,
    CheckForbiddenPairs,
    CheckExtentOfSets,
    CheckTextBeforeGroups,
    CheckTextAfterGroups,
    CheckTextBetweenGroups,
    CheckDashes,
    CheckCommas,
    CheckItemsOfSets,
    CheckRangeExpressions,
};
// clang-format on

} // namespace

std::optional<Finding> CheckAndStoreEscapes(std::string& pattern) {
    if (auto finding = CheckReservedCharacters(pattern))
        return finding;
    StoreEscapes(pattern);
    for (Step step : kStepsOnStoredForm)
        if (auto finding = step(pattern))
            return finding;
    return std::nullopt;
}

std::optional<PatternRejection> RejectPattern(std::string_view entry) {
    std::string stored(entry);
    if (auto const finding = CheckAndStoreEscapes(stored))
        return Reject(BlameWrongClosing(stored, *finding), entry, stored);
    return std::nullopt;
}

} // namespace CallRecordingUtils
