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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    // Whether rules are loaded, and which, makes no difference here.
    static CCallRecordingAssistant const assistant(false);
    auto const [pattern, address] = fuzzing::Texts(data, size);
    fuzzing::CompareMatchers(assistant, address, pattern);
    if (!address.empty())
        CompareItemLists(assistant, pattern, address);
    CallParams const side{address, {}, "pbx", ""};
    Require(assistant.IsSideMatched(side, CALL_TYPE_NUMBER, pattern, CALL_TYPE_NUMBER) ==
                (!pattern.empty() && SlowMatcher::LibraryMatch(assistant, address, pattern)),
            "a number side is matched like its user");
    assistant.IsSideMatched(side, CALL_TYPE_SIP, pattern, CALL_TYPE_SIP); // Comes to an end.
    return 0;
}
