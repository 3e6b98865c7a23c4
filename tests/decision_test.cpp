// Decisions end to end: a real rule file, an assistant, calls.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include <support/TempDir.h>

namespace CallRecordingUtils {
namespace {

/// A rule as one line of the tables below: sides as "pattern/type".
std::string Rule(int id, std::string const& caller, int callerType, std::string const& called,
                 int calledType, bool enabled = true) {
    return "{\ncallrecordingrule_id=" + std::to_string(id) + "\ncaller_pattern=" + caller +
           "\ncaller_call_type=" + std::to_string(callerType) + "\ncalled_pattern=" + called +
           "\ncalled_call_type=" + std::to_string(calledType) +
           "\ncall_recording_type=1\nrecord_to=to " + std::to_string(id) +
           "\nrecording_duration=60\nrecording_rule_state=" + (enabled ? "1" : "0") +
           "\ndescription=rule\n}\n";
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
    dir.WriteRules(Rule(1, "2*", 0, "0*", 0, false) + Rule(2, "20?", 0, "0044*", 0) +
                   Rule(3, "2*", 0, "00*", 0) + Rule(4, "*", 3, "1<00-99>", 0) +
                   Rule(5, "alice@*.example", 1, "*", 3) + Rule(6, "7*", 2, "*", 3) +
                   Rule(7, "", 3, "*", 3) + Rule(8, "*", 3, "support@pbx:5060", 1));
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
        EXPECT_EQ(rule.recording_duration, call.rule >= 0 ? "60" : "");
    }
}

TEST(Decision, ReloadSwitchesBetweenWholeLists) {
    TempDir dir;
    dir.UseAsConfiguration();
    std::string const even = Rule(0, "1", 0, "1", 0) + Rule(2, "*", 3, "*", 3);
    std::string const odd = Rule(1, "*", 3, "*", 3);
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

TEST(Decision, NoRulesMeanNoRecording) {
    TempDir dir;
    dir.UseAsConfiguration();
    dir.WriteRules("# nothing yet\n");
    CCallRecordingAssistant assistant(false);
    EXPECT_FALSE(assistant.IsCallRecordingAllowed(Number("1"), CALL_TYPE_NUMBER, Number("1"),
                                                  CALL_TYPE_NUMBER, nullptr));
}

} // namespace
} // namespace CallRecordingUtils
