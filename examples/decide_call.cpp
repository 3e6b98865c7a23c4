// Asks whether a call is to be recorded, and prints the rule that says so.
// Usage: decide_call DIRECTORY CALLER CALLED, each side a number or user@host[:port]

#include <cstdlib>
#include <iostream>
#include <string>

#include <callrecordingutils/CCallRecordingAssistant.h>

using namespace CallRecordingUtils;

namespace {

struct Side {
    CallParams params;
    CallType type;
};

Side ReadSide(std::string const& text) {
    std::size_t const at = text.find('@');
    std::size_t const colon = text.find(':', at);
    Side side{{}, at == std::string::npos ? CALL_TYPE_NUMBER : CALL_TYPE_SIP};
    side.params.user = text.substr(0, at);
    if (side.type == CALL_TYPE_SIP)
        side.params.host = text.substr(at + 1, colon - at - 1);
    if (colon != std::string::npos)
        side.params.port = text.substr(colon + 1);
    return side;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "Usage: decide_call DIRECTORY CALLER CALLED\n";
        return 2;
    }
    setenv("QUVA_PATH", (std::string(argv[1]) + "/").c_str(), 1);
    CCallRecordingAssistant assistant(false); // Loads the rules.

    Side const caller = ReadSide(argv[2]);
    Side const called = ReadSide(argv[3]);
    CallRecordingRuleParams rule;
    if (!assistant.IsCallRecordingAllowed(caller.params, caller.type, called.params, called.type,
                                          &rule)) {
        std::cout << "not recorded\n";
        return 1;
    }
    std::cout << "recorded under rule " << rule.callrecordingrule_id << " (" << rule.description
              << ") to " << rule.record_to << "\n";
    return 0;
}
