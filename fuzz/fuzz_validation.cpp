/// @file
/// Fuzzes the checks of patterns: the first line of an input is a pattern in the entry form, and
/// the text of a range expression as well; the rest is an address to match the pattern against.

#include "Fuzzing.h"

#include <callrecordingutils/PatternValidation.h>

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

constexpr char kReserved[] = "#^@%:";

void CheckReason(std::optional<PatternRejection> const& rejection, std::string const& text) {
    if (!rejection)
        return;
    Require(rejection->position <= text.size(), "the position lies in the text", text);
    Require(!rejection->message.empty() &&
                std::all_of(rejection->message.begin(), rejection->message.end(),
                            [](char c) { return c >= ' ' && c <= '~'; }),
            "the message is printable", rejection->message);
}

/// Searches from the start again and again, as nobody would for use.
std::string WithEscapesStored(std::string text) {
    for (std::string const row : {"*#", "?^", ",@", "-%", "!:"})
        for (std::size_t at; (at = text.find({'\\', row[0]})) != std::string::npos;)
            text.replace(at, 2, 1, row[1]);
    return text;
}

/// Returns the stored form, when text is well formed.
std::optional<std::string> CheckPattern(std::string const& text) {
    auto const rejection = ExplainPattern(text);
    CheckReason(rejection, text);
    std::string stored = text;
    Require(IsPatternIncorrect(stored) == rejection.has_value(), "both verdicts agree", text);

    bool const hasReserved = text.find_first_of(kReserved) != std::string::npos;
    Require(stored == (hasReserved ? text : WithEscapesStored(text)), "the rewriting", text);
    Require(!hasReserved || rejection->fault == PatternFault::ReservedCharacter, "reserved", text);
    std::string again = stored;
    bool const isRejectedAgain = IsPatternIncorrect(again);
    Require(again == stored, "nothing is left to rewrite", text);
    Require(stored != text || isRejectedAgain == rejection.has_value(), "the second verdict", text);
    return rejection ? std::nullopt : std::optional(stored);
}

void CheckRange(std::string const& text) {
    auto const rejection = ExplainRange(text);
    CheckReason(rejection, text);
    Require(IsRangeCorrect(text) == !rejection.has_value(), "both range verdicts agree", text);
}

/// Every range expression of a well-formed pattern is well formed, and every group is closed.
void CheckGroups(std::string const& stored) {
    for (std::size_t at = 0; (at = stored.find_first_of("[{", at)) != std::string::npos;) {
        std::size_t const end = stored.find(stored[at] == '[' ? ']' : '}', at);
        Require(end != std::string::npos, "the group is closed", stored);
        Require(stored[at] == '[' || IsRangeCorrect(stored.substr(at, end + 1 - at)),
                "the range expression is well formed", stored);
        at = end;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Whether rules are loaded, and which, makes no difference here.
    static CCallRecordingAssistant const assistant(false);
    auto const [text, address] = fuzzing::Texts(data, size);
    CheckRange(text);
    if (auto matched = CheckPattern(text)) {
        CheckGroups(*matched);
        std::replace(matched->begin(), matched->end(), '{', '<');
        std::replace(matched->begin(), matched->end(), '}', '>');
        fuzzing::CompareMatchers(assistant, address, *matched);
    }
    return 0;
}
