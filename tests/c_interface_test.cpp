// The C interface: what it answers, what it keeps when a file is broken, what it says about itself,
// and that nothing waits or dangles.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>

#include <unistd.h>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/callrecordingutils.h>
#include <callrecordingutils/tokensArray.h>

#include <support/TempDir.h>

namespace {

// Numbers that programs are built with, and that no comparison of binary interfaces sees.
static_assert(CALLRECORDING_ERROR == -1 && CALLRECORDING_NO == 0 && CALLRECORDING_YES == 1 &&
              CALLRECORDING_DOUBTFUL == 2);
static_assert(CALLRECORDING_NUMBER == CALL_TYPE_NUMBER && CALLRECORDING_SIP == CALL_TYPE_SIP &&
              CALLRECORDING_NUMBER2 == CALL_TYPE_NUMBER2 && CALLRECORDING_ANY == CALL_TYPE_ANY);
static_assert(CallRecordingUtils::RULE_ENABLED == 0 && CallRecordingUtils::RULE_DISABLED == 1 &&
              CallRecordingUtils::RULE_NOT_SHOWABLE == 2);
static_assert(CallRecordingUtils::KEY_CALLRECORDINGRULE_ID == 0 &&
              CallRecordingUtils::KEY_DESCRIPTION == 9);

/// A rule for every call to called, whose fields differ.
std::string RuleText(int id, std::string const& called, std::string const& recordTo = "archive",
                     int state = 1) {
    return "{\ncallrecordingrule_id=" + std::to_string(id) +
           "\ncaller_pattern=2*\ncaller_call_type=3\ncalled_pattern=" + called +
           "\ncalled_call_type=0\ncall_recording_type=1\nrecord_to=" + recordTo +
           "\nrecording_duration=1h\nrecording_rule_state=" + std::to_string(state) +
           "\ndescription=words\n}\n";
}

callrecording_party PartyOf(char const* text) {
    callrecording_party party = CALLRECORDING_PARTY_INIT;
    party.text = text;
    return party;
}

class CInterface : public testing::Test {
  protected:
    CInterface() { dir.WriteRules("# rules\n" + RuleText(7, "9") + RuleText(8, "15<0-5>")); }
    ~CInterface() override { callrecording_close(rules); }

    void Open() { rules = callrecording_open(dir.Path().c_str()); }
    std::string LastFailure() {
        std::array<char, 512> text{};
        std::size_t const length = callrecording_last_failure(rules, text.data(), text.size());
        EXPECT_EQ(std::string(text.data()).size(), length);
        return text.data();
    }
    callrecording_state State() {
        callrecording_state state = CALLRECORDING_STATE_INIT;
        EXPECT_EQ(callrecording_get_state(rules, &state), CALLRECORDING_YES);
        return state;
    }
    /// The answer for the call between two parties; id becomes that of the rule, or -1.
    std::int32_t DecideParties(char const* caller, char const* called, int* id = nullptr) {
        callrecording_party const from = PartyOf(caller);
        callrecording_party const to = PartyOf(called);
        callrecording_rule const* rule = nullptr;
        std::int32_t const answer = callrecording_decide_parties(rules, &from, &to, &rule);
        if (id != nullptr)
            *id = rule == nullptr ? -1 : rule->id;
        callrecording_rule_free(rule);
        return answer;
    }

    TempDir dir;
    callrecording_rules* rules = nullptr;
};

TEST_F(CInterface, DecidesAndHandsOutTheRule) {
    Open();
    EXPECT_EQ(callrecording_version(), 10000);
    EXPECT_EQ(callrecording_count(rules), 2);
    callrecording_rule const* rule = nullptr;
    ASSERT_EQ(callrecording_decide(rules, "201@[::1]:5060", CALLRECORDING_SIP, "153",
                                   CALLRECORDING_NUMBER, &rule),
              CALLRECORDING_YES);
    callrecording_close(rules); // The rule lives on.
    rules = nullptr;
    EXPECT_EQ(rule->size, sizeof *rule);
    EXPECT_EQ(rule->place, 1);
    EXPECT_EQ(rule->id, 8);
    EXPECT_EQ(rule->state, CALLRECORDING_ENABLED);
    EXPECT_EQ(rule->forbids_recording, 0);
    EXPECT_EQ(rule->recording_type, 1);
    EXPECT_EQ(rule->caller_call_type, CALLRECORDING_ANY);
    EXPECT_EQ(rule->called_call_type, CALLRECORDING_NUMBER);
    EXPECT_EQ(rule->caller_pattern + std::string(rule->called_pattern) + rule->record_to +
                  rule->recording_duration + rule->description,
              "2*15<0-5>archive1hwords");
    callrecording_rule_free(rule);
}

TEST_F(CInterface, AnswersWhateverItIsAsked) {
    Open();
    struct {
        callrecording_rules* rules;
        char const* caller;
        std::int32_t callerType;
        char const* called;
        std::int32_t calledType;
        std::int32_t answer;
    } const rows[] = {
        {rules, "201", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER, CALLRECORDING_YES},
        {rules, "201", CALLRECORDING_NUMBER2, "9", CALLRECORDING_NUMBER, CALLRECORDING_YES},
        {rules, "201", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER2, CALLRECORDING_NO},
        {rules, "301", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER, CALLRECORDING_NO},
        {nullptr, "201", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER, CALLRECORDING_ERROR},
        {rules, nullptr, CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER, CALLRECORDING_ERROR},
        {rules, "201", CALLRECORDING_NUMBER, nullptr, CALLRECORDING_NUMBER, CALLRECORDING_ERROR},
        {rules, "201", CALLRECORDING_ANY, "9", CALLRECORDING_NUMBER, CALLRECORDING_ERROR},
        {rules, "201", CALLRECORDING_NUMBER, "9", -1, CALLRECORDING_ERROR},
    };
    for (auto const& row : rows) {
        callrecording_rule const* rule = reinterpret_cast<callrecording_rule const*>(&row);
        EXPECT_EQ(callrecording_decide(row.rules, row.caller, row.callerType, row.called,
                                       row.calledType, &rule),
                  row.answer);
        EXPECT_EQ(rule != nullptr, row.answer == CALLRECORDING_YES);
        callrecording_rule_free(rule);
        EXPECT_EQ(callrecording_decide(row.rules, row.caller, row.callerType, row.called,
                                       row.calledType, nullptr),
                  row.answer);
    }
    EXPECT_EQ(callrecording_reload(nullptr, nullptr), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_count(nullptr), CALLRECORDING_ERROR);
    EXPECT_GT(callrecording_last_failure(nullptr, nullptr, 0), 0U);
    callrecording_close(nullptr);
}

TEST_F(CInterface, ABrokenFileTakesNothingAway) {
    dir.WriteRules("{\n");
    Open();
    EXPECT_EQ(callrecording_count(rules), 0);
    EXPECT_EQ(DecideParties("201", "9"), CALLRECORDING_ERROR);
    EXPECT_EQ(State().is_loaded, 0);
    EXPECT_NE(LastFailure().find(dir.Path("telephony/callrecordingdb") + ":1"), std::string::npos);
    dir.WriteRules(RuleText(7, "9"));
    EXPECT_EQ(callrecording_reload(rules, nullptr), CALLRECORDING_YES);
    EXPECT_EQ(LastFailure(), "");
    dir.WriteRules(RuleText(7, "9") + RuleText(8, "1") + "}\n");
    callrecording_failure reason = CALLRECORDING_FAILURE_INIT;
    EXPECT_EQ(callrecording_reload(rules, &reason), CALLRECORDING_ERROR);
    EXPECT_EQ(reason.kind, CALLRECORDING_FAILURE_MALFORMED);
    EXPECT_EQ(callrecording_count(rules), 1);
    std::string const failure = LastFailure();
    EXPECT_EQ(failure, reason.text);
    EXPECT_EQ(failure.rfind(dir.Path()), 0U) << failure; // The path, and only once.
    std::array<char, 8> cut{};
    EXPECT_EQ(callrecording_last_failure(rules, cut.data(), cut.size()), failure.size());
    EXPECT_EQ(std::string(cut.data()), failure.substr(0, 7));
    EXPECT_EQ(callrecording_last_failure(rules, cut.data(), 0), failure.size());
}

TEST_F(CInterface, SaysWhyThereAreNoRules) {
    std::string const file = dir.Path(TempDir::RULE_FILE);
    struct {
        char const* prepare; // A shell command, run in the folder telephony.
        std::int32_t answer, kind, decision;
    } const rows[] = {
        {"rm callrecordingdb", CALLRECORDING_YES, CALLRECORDING_FAILURE_MISSING, CALLRECORDING_NO},
        {"mkdir callrecordingdb", CALLRECORDING_ERROR, CALLRECORDING_FAILURE_OTHER,
         CALLRECORDING_ERROR},
        {"rmdir callrecordingdb; ln -s loop callrecordingdb; ln -s callrecordingdb loop",
         CALLRECORDING_ERROR, CALLRECORDING_FAILURE_OTHER, CALLRECORDING_ERROR},
        {"rm callrecordingdb loop; cd ..; rmdir telephony", CALLRECORDING_ERROR,
         CALLRECORDING_FAILURE_MISSING, CALLRECORDING_ERROR},
    };
    for (auto const& row : rows) {
        std::string const command = "cd " + dir.Path("telephony") + " && " + row.prepare;
        ASSERT_EQ(std::system(command.c_str()), 0);
        Open();
        callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
        EXPECT_EQ(callrecording_reload(rules, &failure), row.answer) << row.prepare;
        EXPECT_EQ(failure.kind, row.kind) << row.prepare;
        EXPECT_EQ(LastFailure(), failure.text);
        EXPECT_EQ(std::string(failure.text).rfind(dir.Path(), 0), 0U) << failure.text;
        EXPECT_EQ(DecideParties("201", "9"), row.decision) << row.prepare;
        EXPECT_EQ(callrecording_decide(rules, "201", 0, "9", 0, nullptr), row.decision);
        EXPECT_EQ(State().failed_loads, row.answer == CALLRECORDING_YES ? 0U : 2U);
        callrecording_close(rules);
    }
    rules = nullptr;
}

TEST_F(CInterface, ReadsTheFileAgainOnlyIfItIsAnotherOne) {
    Open();
    usleep(60000); // Only then a later change is sure to change the file's times.
    callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
    auto const reload = [&] { return callrecording_reload_if_changed(rules, &failure); };
    reload();
    std::uint64_t const loads = State().loads;
    EXPECT_EQ(reload(), CALLRECORDING_NO);
    EXPECT_EQ(State().loads, loads);
    dir.WriteRules(RuleText(7, "9"));
    EXPECT_EQ(reload(), CALLRECORDING_YES);
    EXPECT_EQ(callrecording_count(rules), 1);
    usleep(60000);
    EXPECT_EQ(reload(), CALLRECORDING_NO); // Read once more, since it had just been written.
    EXPECT_EQ(State().loads, loads + 2);
    EXPECT_EQ(reload(), CALLRECORDING_NO);
    EXPECT_EQ(State().loads, loads + 2);
    dir.WriteRules("}");
    usleep(60000);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(reload(), CALLRECORDING_ERROR);
        EXPECT_EQ(failure.kind, CALLRECORDING_FAILURE_MALFORMED);
    }
    EXPECT_EQ(State().loads, loads + 3);
    EXPECT_EQ(callrecording_count(rules), 1);
    std::filesystem::remove(dir.Path(TempDir::RULE_FILE));
    EXPECT_EQ(reload(), CALLRECORDING_YES);
    EXPECT_EQ(failure.kind, CALLRECORDING_FAILURE_MISSING);
    EXPECT_EQ(callrecording_count(rules), 0);
    EXPECT_EQ(reload(), CALLRECORDING_NO);
    EXPECT_EQ(DecideParties("201", "9"), CALLRECORDING_NO);
    std::filesystem::remove(dir.Path("telephony"));
    EXPECT_EQ(callrecording_reload(rules, &failure), CALLRECORDING_ERROR);
    std::filesystem::create_directory(dir.Path("telephony"));
    EXPECT_EQ(reload(), CALLRECORDING_NO); // No longer an error, and no rules as before.
    EXPECT_EQ(callrecording_reload_if_changed(nullptr, &failure), CALLRECORDING_ERROR);
}

TEST_F(CInterface, SaysWhatIsLoadedAndWhatItAnswered) {
    dir.WriteRules(RuleText(1, "9") + RuleText(2, "8", "never:") + RuleText(3, "7", "x", 0));
    Open();
    DecideParties("201", "9");
    DecideParties("201", "7");
    DecideParties("201", "6");
    for (int i = 0; i < 3; ++i)
        callrecording_decide(rules, "201", 0, "8", 0, nullptr);
    for (int i = 0; i < 4; ++i)
        callrecording_decide(rules, "201", 0, nullptr, 0, nullptr);
    dir.WriteRules("}");
    callrecording_reload(rules, nullptr);
    dir.WriteRules("");
    std::int64_t const before = std::time(nullptr);
    callrecording_reload(rules, nullptr);
    callrecording_state const state = State();
    EXPECT_EQ(state.size, sizeof state);
    EXPECT_EQ(state.is_loaded, 1);
    EXPECT_EQ(state.rule_count, 0);
    EXPECT_STREQ(state.digits, "e3b0c442");
    EXPECT_GE(state.loaded_time, before);
    EXPECT_EQ(state.loads, 3U);
    EXPECT_EQ(state.failed_loads, 1U);
    EXPECT_EQ(state.failed_kind, CALLRECORDING_FAILURE_MALFORMED);
    EXPECT_LE(before - state.failed_time, 5);
    EXPECT_NE(std::string(state.failed_text).find("callrecordingdb:1"), std::string::npos);
    EXPECT_EQ(LastFailure(), "");
    EXPECT_EQ(state.answers_yes, 1U);
    EXPECT_EQ(state.answers_no, 2U);
    EXPECT_EQ(state.answers_forbidden, 3U);
    EXPECT_EQ(state.answers_error, 4U);
    callrecording_state small = CALLRECORDING_STATE_INIT;
    small.size = 8;
    EXPECT_EQ(callrecording_get_state(rules, &small), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_get_state(rules, nullptr), CALLRECORDING_ERROR);
}

TEST_F(CInterface, DecidesWhateverATelephoneSystemHas) {
    dir.WriteRules("{\ncallrecordingrule_id=3\ncaller_pattern=*\ncalled_pattern=112\n"
                   "recording_rule_state=1\n}\n" +
                   RuleText(7, "9") + RuleText(8, "#72", "never:"));
    Open();
    int id = 0;
    EXPECT_EQ(DecideParties("", "sip:112@pbx", &id), CALLRECORDING_YES);
    EXPECT_EQ(id, 3);
    EXPECT_EQ(DecideParties("\"A\" <sip:2-1@pbx>", "tel:9", &id), CALLRECORDING_YES);
    EXPECT_EQ(id, 7);
    EXPECT_EQ(DecideParties("21", "sip:%2a72@evil", &id), CALLRECORDING_NO);
    EXPECT_EQ(id, 8); // It forbids.
    EXPECT_EQ(DecideParties("21", "8", &id), CALLRECORDING_NO);
    EXPECT_EQ(id, -1);
    EXPECT_EQ(DecideParties(nullptr, "112", &id), CALLRECORDING_YES);

    char const bytes[] = "sip:21@pbx;tag=x9:pbx"; // Without a NUL between.
    callrecording_party caller = PartyOf(bytes);
    caller.text_length = 10;
    callrecording_party called = CALLRECORDING_PARTY_INIT;
    called.user = bytes + 16;
    called.user_length = 1;
    called.host = bytes + 18;
    EXPECT_EQ(callrecording_decide_parties(rules, &caller, &called, nullptr), CALLRECORDING_YES);
    caller.size = 8;
    callrecording_rule const* rule = reinterpret_cast<callrecording_rule const*>(bytes);
    EXPECT_EQ(callrecording_decide_parties(rules, &caller, &called, &rule), CALLRECORDING_ERROR);
    EXPECT_EQ(rule, nullptr);
    EXPECT_EQ(callrecording_decide_parties(rules, nullptr, &called, nullptr), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_decide_parties(rules, &called, nullptr, nullptr), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_decide_parties(nullptr, &called, &called, &rule), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_decide(rules, "21", 0, "#72", 0, &rule), CALLRECORDING_NO);
    EXPECT_EQ(rule, nullptr); // Who asks like this knows nothing of rules that forbid.
}

TEST_F(CInterface, ExplainsAndListsRules) {
    dir.WriteRules(RuleText(1, "9") + RuleText(2, "12", "never:", 0));
    Open();
    callrecording_party const caller = PartyOf("2");
    callrecording_party const called = PartyOf("129");
    callrecording_explanation why = CALLRECORDING_EXPLANATION_INIT;
    auto const explain = [&](int place, callrecording_party const& to) {
        return callrecording_explain(rules, &caller, &to, place, &why);
    };
    EXPECT_EQ(explain(CALLRECORDING_NEAREST, called), CALLRECORDING_NO);
    EXPECT_EQ(why.place, 1);
    EXPECT_EQ(why.is_enabled, 0);
    EXPECT_EQ(why.caller_matches, 1);
    EXPECT_EQ(why.called_matches, 0);
    EXPECT_STREQ(why.reason, "disabled; called does not match 12: goes on with \"9\" after the end "
                             "of the pattern");
    EXPECT_EQ(explain(0, PartyOf("9")), CALLRECORDING_YES);
    EXPECT_STREQ(why.reason, "");
    EXPECT_EQ(explain(2, called), CALLRECORDING_ERROR);
    EXPECT_EQ(explain(-2, called), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_explain(rules, &caller, nullptr, 0, &why), CALLRECORDING_ERROR);

    callrecording_rule const* rule = nullptr;
    ASSERT_EQ(callrecording_rule_at(rules, 1, &rule), CALLRECORDING_YES);
    EXPECT_EQ(rule->place, 1);
    EXPECT_EQ(rule->id, 2);
    EXPECT_EQ(rule->state, CALLRECORDING_DISABLED);
    EXPECT_EQ(rule->forbids_recording, 1);
    EXPECT_STREQ(rule->record_to, CALLRECORDING_NEVER);
    callrecording_rule_free(rule);
    EXPECT_EQ(callrecording_rule_at(rules, 2, &rule), CALLRECORDING_NO);
    EXPECT_EQ(rule, nullptr);
    EXPECT_EQ(callrecording_rule_at(rules, -1, &rule), CALLRECORDING_NO);
    EXPECT_EQ(callrecording_rule_at(nullptr, 0, &rule), CALLRECORDING_ERROR);
    dir.WriteRules("");
    callrecording_reload(rules, nullptr);
    EXPECT_EQ(explain(CALLRECORDING_NEAREST, called), CALLRECORDING_NO);
    EXPECT_EQ(why.place, -1);
}

TEST_F(CInterface, ReadsRulesFromAText) {
    std::string const text = RuleText(7, "9") + "#" + std::string(1, '\0') + "}";
    rules = callrecording_open_text(text.data(), text.size() - 3);
    EXPECT_EQ(DecideParties("2", "9"), CALLRECORDING_YES);
    EXPECT_EQ(callrecording_reload_if_changed(rules, nullptr), CALLRECORDING_NO);
    callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
    EXPECT_EQ(callrecording_reload(rules, &failure), CALLRECORDING_ERROR);
    EXPECT_NE(std::string(failure.text), "");
    EXPECT_EQ(callrecording_count(rules), 1);
    std::string const state = State().digits;
    callrecording_close(rules);
    dir.WriteRules(RuleText(7, "9"));
    Open();
    EXPECT_EQ(State().digits, state);
    callrecording_close(rules);
    rules = callrecording_open_text("\n}", CALLRECORDING_NUL_TERMINATED);
    EXPECT_EQ(DecideParties("2", "9"), CALLRECORDING_ERROR);
    EXPECT_EQ(LastFailure().rfind("the text:2: ", 0), 0U) << LastFailure();
    EXPECT_EQ(State().failed_kind, CALLRECORDING_FAILURE_MALFORMED);
    callrecording_close(rules);
    rules = callrecording_open_text(nullptr, 0);
    EXPECT_EQ(DecideParties("2", "9"), CALLRECORDING_NO);
}

TEST_F(CInterface, ConvertsPatterns) {
    struct {
        bool isEntry;
        char const* pattern;
        std::int32_t type, answer;
        char const* form;
    } const rows[] = {
        {true, "0{1-5}\\*", CALLRECORDING_NUMBER, CALLRECORDING_YES, "0<1-5>#"},
        {true, "a\\-b@p:50{60-61}", CALLRECORDING_SIP, CALLRECORDING_YES, "a%b@p:50<60-61>"},
        {true, "0{1-5", CALLRECORDING_ANY, CALLRECORDING_NO, ""},
        {true, nullptr, CALLRECORDING_ANY, CALLRECORDING_ERROR, ""},
        {true, "1", 4, CALLRECORDING_ERROR, ""},
        {false, "0<1-5>#", CALLRECORDING_NUMBER, CALLRECORDING_YES, "0{1-5}\\*"},
        {false, "a@h", CALLRECORDING_SIP, CALLRECORDING_YES, "a@h"},
        {false, "0{1", CALLRECORDING_NUMBER, CALLRECORDING_NO, "0{1"},
        {false, "0<1", CALLRECORDING_NUMBER, CALLRECORDING_NO, "0<1"},
    };
    for (auto const& row : rows) {
        auto const convert = row.isEntry ? callrecording_stored_form : callrecording_entry_form;
        std::size_t length = 99;
        std::array<char, 64> form{"x"};
        EXPECT_EQ(convert(row.pattern, row.type, form.data(), form.size(), &length), row.answer);
        EXPECT_EQ(std::string(form.data()), row.form);
        EXPECT_EQ(length, std::string(row.form).size());
        EXPECT_EQ(convert(row.pattern, row.type, nullptr, 0, nullptr), row.answer);
    }
}

TEST_F(CInterface, FindsOneOfManyRules) {
    std::string text;
    for (int id = 0; id < 500; ++id)
        text += RuleText(id, "7" + std::to_string(id));
    dir.WriteRules(text);
    Open();
    for (int const id : {0, 7, 499, 500}) {
        std::string const called = "7" + std::to_string(id);
        callrecording_rule const* rule = nullptr;
        callrecording_decide(rules, "201", CALLRECORDING_NUMBER, called.c_str(),
                             CALLRECORDING_NUMBER, &rule);
        EXPECT_EQ(rule == nullptr ? 500 : rule->place, id);
        EXPECT_EQ(rule == nullptr ? 500 : rule->id, id);
        callrecording_rule_free(rule);
    }
}

TEST_F(CInterface, FindsTheDirectoryAsTheLibraryDoes) {
    setenv("QUVA_PATH", dir.Path("").c_str(), 1);
    for (char const* slashes : {"", "/"}) {
        callrecording_rules* const named = callrecording_open((dir.Path() + slashes).c_str());
        callrecording_rules* const found = callrecording_open(nullptr);
        EXPECT_EQ(callrecording_count(named), 2);
        EXPECT_EQ(callrecording_count(found), 2);
        callrecording_close(named);
        callrecording_close(found);
    }
}

TEST_F(CInterface, ChecksPatterns) {
    struct {
        char const* pattern;
        std::int32_t type, answer;
        std::size_t position;
        char const* start;
    } const rows[] = {
        {"0{1-5}", CALLRECORDING_NUMBER, CALLRECORDING_YES, 0, ""},
        {"0{1-5", CALLRECORDING_ANY, CALLRECORDING_NO, 1, "this \"{\""},
        {"[1,!2]", CALLRECORDING_NUMBER, CALLRECORDING_DOUBTFUL, 3, "\"!2\" exc"},
        {"", CALLRECORDING_NUMBER2, CALLRECORDING_DOUBTFUL, 0, "an empty"},
        {"*@pbx:50{60-80}", CALLRECORDING_SIP, CALLRECORDING_YES, 0, ""},
        {"*@{1,[2]}:5060", CALLRECORDING_SIP, CALLRECORDING_DOUBTFUL, 5, "\"[\" insi"},
        {"*@1:{1-05}", CALLRECORDING_SIP, CALLRECORDING_DOUBTFUL, 5, "\"1-05\" t"},
        {"201", CALLRECORDING_SIP, CALLRECORDING_NO, 3, "a SIP pa"},
        {"1\\!@pbx", CALLRECORDING_SIP, CALLRECORDING_NO, 1, "an escap"},
        {"*@p\\!b", CALLRECORDING_SIP, CALLRECORDING_NO, 3, "an escap"},
        {"1\\!@p\\!b:*", CALLRECORDING_SIP, CALLRECORDING_YES, 0, ""},
        {"*@p\\,b", CALLRECORDING_SIP, CALLRECORDING_NO, 3, "an escap"},
        {"*@pbx:5\\!", CALLRECORDING_SIP, CALLRECORDING_NO, 7, "an escap"},
        {"201", 4, CALLRECORDING_ERROR, 0, ""},
        {nullptr, CALLRECORDING_NUMBER, CALLRECORDING_ERROR, 0, ""},
    };
    for (auto const& row : rows) {
        std::size_t position = 99;
        std::array<char, 9> reason{"previous"};
        EXPECT_EQ(callrecording_check_pattern(row.pattern, row.type, &position, reason.data(),
                                              reason.size()),
                  row.answer);
        EXPECT_EQ(position, row.position) << row.pattern;
        EXPECT_EQ(std::string(reason.data()), row.start);
        EXPECT_EQ(callrecording_check_pattern(row.pattern, row.type, nullptr, nullptr, 0),
                  row.answer);
    }
}

TEST_F(CInterface, DecidesOnManyThreadsWhileOthersReload) {
    Open();
    std::atomic<bool> isDone{false};
    std::atomic<int> wrong{0};
    std::atomic<std::size_t> asked{0};
    auto const decide = [&] {
        while (!isDone) {
            callrecording_rule const* rule = nullptr;
            if (asked++ % 2 == 0) {
                callrecording_decide(rules, "201", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER,
                                     &rule);
            } else {
                callrecording_party const caller = PartyOf("sip:201@pbx");
                callrecording_party const called = PartyOf("9");
                callrecording_decide_parties(rules, &caller, &called, &rule);
            }
            if (rule == nullptr || std::string(rule->record_to) != "archive")
                ++wrong;
            callrecording_rule_free(rule);
        }
    };
    auto const reload = [&](bool isOnlyIfChanged) {
        while (!isDone) {
            callrecording_failure failure = CALLRECORDING_FAILURE_INIT;
            bool const isError = (isOnlyIfChanged ? callrecording_reload_if_changed
                                                  : callrecording_reload)(rules, &failure) < 0;
            if (isError != (failure.kind != CALLRECORDING_FAILURE_NONE) ||
                isError != (failure.text[0] != '\0'))
                ++wrong;
            State();
        }
    };
    std::thread threads[] = {std::thread(decide), std::thread(decide), std::thread(reload, true),
                             std::thread(reload, false)};
    std::string const next = dir.Path("telephony/next");
    for (int i = 0; i < 50; ++i) {
        dir.Write("telephony/next", i % 2 == 0 ? "{\n" : RuleText(i, "9"));
        std::filesystem::rename(next, dir.Path(TempDir::RULE_FILE));
        usleep(1000);
    }
    isDone = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    callrecording_reload(rules, nullptr);
    callrecording_state const state = State();
    EXPECT_EQ(state.rule_count, 1);
    EXPECT_EQ(state.answers_yes, asked);
    EXPECT_EQ(state.answers_no + state.answers_error + state.answers_forbidden, 0U);
}

} // namespace
