/// @file
/// Fuzzes pattern checks and matching. The first line of an input is used as a pattern in either
/// form and as a range expression; the rest is an address.

#include "Fuzzing.h"

#include <callrecordingutils/PatternValidation.h>

#include "support/SlowMatcher.h"

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

void CheckReason(std::optional<PatternRejection> const& rejection, bool isRejected,
                 std::string const& text) {
    Require(rejection.has_value() == isRejected, "both verdicts agree", text);
    Require(!rejection || rejection->position <= text.size(), "the position lies in the text",
            text);
    auto const isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
    Require(!rejection ||
                (!rejection->message.empty() &&
                 std::all_of(rejection->message.begin(), rejection->message.end(), isPrintable)),
            "the message is printable", text);
}

void CompareMatchers(CCallRecordingAssistant const& assistant, std::string const& address,
                     std::string const& pattern) {
    auto const answer = SlowMatcher::LibraryMatch(assistant, address, pattern);
    // If the slow matcher would take too long, the library's still has to come to an end.
    Require(pattern.size() * address.size() * address.size() >= 500000 ||
                answer == SlowMatcher::Match(assistant, address, pattern),
            "both matchers agree", pattern + " against " + address);
    CallParams const side{address, {}, "pbx", ""};
    Require(assistant.IsSideMatched(side, CALL_TYPE_NUMBER, pattern, CALL_TYPE_NUMBER) ==
                (!pattern.empty() && answer),
            "a number side is matched like its user", pattern);
    assistant.IsSideMatched(side, CALL_TYPE_SIP, pattern, CALL_TYPE_SIP); // Comes to an end.
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Which rules are loaded, if any, makes no difference here.
    static CCallRecordingAssistant const assistant(false);
    auto const [text, address] = fuzzing::Texts(data, size);
    CheckReason(ExplainRange(text), !IsRangeCorrect(text), text);
    std::string stored = text;
    bool const isRejected = IsPatternIncorrect(stored);
    CheckReason(ExplainPattern(text), isRejected, text);
    std::string again = stored;
    Require(IsPatternIncorrect(again) == isRejected || stored != text, "the second verdict", text);
    Require(again == stored, "nothing is left to rewrite", text);

    CompareMatchers(assistant, address, text);
    std::replace(stored.begin(), stored.end(), '{', '<');
    std::replace(stored.begin(), stored.end(), '}', '>');
    CompareMatchers(assistant, address, stored);
    return 0;
}
