// Decisions end to end: a real rule file, an assistant, calls.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "support/Edits.h"
#include <support/TempDir.h>

namespace CallRecordingUtils {
namespace {

/// The section of an enabled rule, with settings that tell its identifier.
std::string Stored(int id, char const* caller, CallType callerType, char const* called,
                   CallType calledType) {
    return Section(
        Rule(id, caller, callerType, called, calledType, ("to " + std::to_string(id)).c_str()));
}

struct Call {
    CallParams caller;
    CallType callerType;
    CallParams called;
    CallType calledType;
    int rule; // The deciding one; -1: none.
};

CallParams Number(char const* user) {
    return {user, {}, "", ""};
}
CallParams Sip(char const* user, char const* host, char const* port) {
    return {user, {}, host, port};
}

TEST(Decision, FirstEnabledRuleWithBothSidesDecides) {
    TempDir dir;
    dir.UseAsConfiguration();
    dir.WriteRules(Section(Disabled(Rule(1, "2*", CALL_TYPE_NUMBER, "0*", CALL_TYPE_NUMBER))) +
                   Stored(2, "20?", CALL_TYPE_NUMBER, "0044*", CALL_TYPE_NUMBER) +
                   Stored(3, "2*", CALL_TYPE_NUMBER, "00*", CALL_TYPE_NUMBER) +
                   Stored(4, "*", CALL_TYPE_ANY, "1<00-99>", CALL_TYPE_NUMBER) +
                   Stored(5, "alice@*.example", CALL_TYPE_SIP, "*", CALL_TYPE_ANY) +
                   Stored(6, "7*", CALL_TYPE_NUMBER2, "*", CALL_TYPE_ANY) +
                   Stored(7, "", CALL_TYPE_ANY, "*", CALL_TYPE_ANY) +
                   Stored(8, "*", CALL_TYPE_ANY, "support@pbx:5060", CALL_TYPE_SIP));
    Call const calls[] = {
        {Number("201"), CALL_TYPE_NUMBER, Number("00441"), CALL_TYPE_NUMBER, 2},
        {Number("211"), CALL_TYPE_NUMBER, Number("00441"), CALL_TYPE_NUMBER, 3},
        {Number("211"), CALL_TYPE_NUMBER, Number("0441"), CALL_TYPE_NUMBER, -1},
        {Sip("201", "pbx", "5060"), CALL_TYPE_SIP, Number("150"), CALL_TYPE_NUMBER, 4},
        {Sip("201", "pbx", "5060"), CALL_TYPE_SIP, Number("150"), CALL_TYPE_NUMBER2, -1},
        {Sip("alice", "a.example", "99"), CALL_TYPE_SIP, Number("5"), CALL_TYPE_NUMBER2, 5},
        {Sip("alice", "example", ""), CALL_TYPE_SIP, Number("5"), CALL_TYPE_NUMBER2, -1},
        {Number("7"), CALL_TYPE_NUMBER2, Number("5"), CALL_TYPE_NUMBER, 6},
        {Number("7"), CALL_TYPE_NUMBER, Sip("support", "pbx", "5060"), CALL_TYPE_SIP, 8},
        {Number("7"), CALL_TYPE_NUMBER, Sip("support", "pbx", ""), CALL_TYPE_SIP, -1},
        {Number("7"), CALL_TYPE_ANY, Number("150"), CALL_TYPE_NUMBER, 4},
    };
    CCallRecordingAssistant assistant(false);
    for (Call const& call : calls) {
        CallRecordingRuleParams rule;
        rule.record_to = "untouched";
        EXPECT_EQ(assistant.IsCallRecordingAllowed(call.caller, call.callerType, call.called,
                                                   call.calledType, &rule),
                  call.rule >= 0);
        EXPECT_EQ(assistant.IsCallRecordingAllowed(call.caller, call.callerType, call.called,
                                                   call.calledType, nullptr),
                  call.rule >= 0);
        EXPECT_EQ(rule.callrecordingrule_id, call.rule) << call.caller.user << call.called.user;
        EXPECT_EQ(rule.record_to, call.rule >= 0 ? "to " + std::to_string(call.rule) : "untouched");
    }
}

TEST(Decision, ReloadSwitchesBetweenWholeLists) {
    TempDir dir;
    dir.UseAsConfiguration();
    std::string const even = Stored(0, "1", CALL_TYPE_NUMBER, "1", CALL_TYPE_NUMBER) +
                             Stored(2, "*", CALL_TYPE_ANY, "*", CALL_TYPE_ANY);
    std::string const odd = Stored(1, "*", CALL_TYPE_ANY, "*", CALL_TYPE_ANY);
    dir.WriteRules(even);
    CCallRecordingAssistant assistant(false);
    std::atomic<bool> done{false};
    std::thread decider([&] {
        while (!done) {
            CallRecordingRuleParams rule;
            EXPECT_TRUE(assistant.IsCallRecordingAllowed(Number("5"), CALL_TYPE_NUMBER, Number("5"),
                                                         CALL_TYPE_NUMBER, &rule));
            EXPECT_EQ(rule.record_to, "to " + std::to_string(rule.callrecordingrule_id));
        }
    });
    for (int i = 0; i < 100; ++i) {
        dir.WriteRules(i % 2 == 0 ? odd : even);
        EXPECT_TRUE(assistant.ReloadCallRecordingRules());
    }
    done = true;
    decider.join();
}

} // namespace
} // namespace CallRecordingUtils
