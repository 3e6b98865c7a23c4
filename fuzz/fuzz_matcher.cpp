/// @file
/// Fuzzes the matching operations: the first line of an input is a pattern in the matched form, and
/// an item list as well; the rest is the address.

#include "Fuzzing.h"

using namespace CallRecordingUtils;
using fuzzing::Require;

namespace {

void CompareItemLists(CCallRecordingAssistant const& assistant, std::string const& list,
                      std::string const& run) {
    SlowMatcher::Counts slow{};
    bool const accepts = SlowMatcher::Accepts(list, run, slow);
    for (bool const grouped : {true, false}) {
        wild_card_counts n;
        Require(assistant.IsInRange(list, run, n, grouped) == accepts, "both accept the run");
        Require((grouped ? n.grouped_symbol_count : n.symbol_count) ==
                        slow[SlowMatcher::GROUPED_SYMBOL] &&
                    (grouped ? n.grouped_question_count : n.question_count) ==
                        slow[SlowMatcher::GROUPED_QUESTION],
                "both count the same in a list");
    }
    Require(assistant.Exclude(list, run) == !SlowMatcher::Excludes(list, run),
            "both exclude the run");
}

/// The pattern as a SIP rule side compares it; empty when it matches nothing.
std::string WithPort(std::string const& pattern) {
    std::size_t const colon = pattern.rfind(':');
    std::string const rest = pattern.substr(0, colon);
    std::string const port = colon == std::string::npos ? "" : pattern.substr(colon + 1);
    return rest.find('@') == std::string::npos ? "" : rest + ':' + (port.empty() ? "*" : port);
}

void CompareSides(CCallRecordingAssistant const& assistant, std::string const& pattern,
                  std::string const& user) {
    auto const agrees = [&](CallType side, std::string const& address, CallType rule,
                            std::string const& compared) {
        wild_card_counts ignored;
        bool const matches = !compared.empty() && assistant.IsMatching(address, compared, ignored);
        CallParams params;
        params.user = user;
        params.host = "pbx";
        return assistant.IsSideMatched(params, side, pattern, rule) == matches;
    };
    Require(agrees(CALL_TYPE_NUMBER, user, CALL_TYPE_NUMBER, pattern), "a number side");
    Require(agrees(CALL_TYPE_SIP, user, CALL_TYPE_ANY, pattern), "a SIP side, any wanted");
    Require(agrees(CALL_TYPE_SIP, user + "@pbx:*", CALL_TYPE_SIP, WithPort(pattern)), "a SIP side");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Whether rules are loaded, and which, makes no difference here.
    static CCallRecordingAssistant const assistant(false);
    auto const [pattern, address] = fuzzing::Texts(data, size);
    fuzzing::CompareMatchers(assistant, address, pattern);
    if (!address.empty())
        CompareItemLists(assistant, pattern, address);
    CompareSides(assistant, pattern, address);
    return 0;
}
