/// @file
/// Fuzzes the checks of patterns: the first line of an input is a pattern in the entry form, and
/// the text of a range expression as well; the rest is an address to match the pattern against.

#include "Fuzzing.h"

#include <callrecordingutils/PatternValidation.h>

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

void CheckReason(std::optional<PatternRejection> const& rejection, std::string const& text) {
    if (!rejection)
        return;
    Require(rejection->position <= text.size(), "the position lies in the text", text);
    Require(!rejection->message.empty() &&
                std::all_of(rejection->message.begin(), rejection->message.end(),
                            [](char c) { return c >= ' ' && c <= '~'; }),
            "the message is printable", rejection->message);
}

/// Returns the stored form, when text is well formed.
std::optional<std::string> CheckPattern(std::string const& text) {
    auto const rejection = ExplainPattern(text);
    CheckReason(rejection, text);
    std::string stored = text;
    Require(IsPatternIncorrect(stored) == rejection.has_value(), "both verdicts agree", text);

    Require(stored == text || text.find_first_of("#^@%:") == std::string::npos, "the rewriting",
            text);
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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Whether rules are loaded, and which, makes no difference here.
    static CCallRecordingAssistant const assistant(false);
    auto const [text, address] = fuzzing::Texts(data, size);
    CheckRange(text);
    if (auto matched = CheckPattern(text)) {
        std::replace(matched->begin(), matched->end(), '{', '<');
        std::replace(matched->begin(), matched->end(), '}', '>');
        fuzzing::CompareMatchers(assistant, address, *matched);
    }
    return 0;
}
