// The C interface: what it answers, what it keeps when a file is broken, and that nothing waits or
// dangles.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

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

/// A rule for every call to called, of which the fields differ.
std::string RuleText(int id, std::string const& called) {
    return "{\ncallrecordingrule_id=" + std::to_string(id) +
           "\ncaller_pattern=2*\ncaller_call_type=3\ncalled_pattern=" + called +
           "\ncalled_call_type=0\ncall_recording_type=1\nrecord_to=archive\nrecording_duration=1h\n"
           "recording_rule_state=1\ndescription=words\n}\n";
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
    EXPECT_EQ(rule->place, 1);
    EXPECT_EQ(rule->id, 8);
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
    EXPECT_EQ(callrecording_reload(nullptr), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_count(nullptr), CALLRECORDING_ERROR);
    EXPECT_GT(callrecording_last_failure(nullptr, nullptr, 0), 0U);
    callrecording_close(nullptr);
}

TEST_F(CInterface, ABrokenFileTakesNothingAway) {
    dir.WriteRules("{\n");
    Open();
    EXPECT_EQ(callrecording_count(rules), 0);
    EXPECT_NE(LastFailure().find(dir.Path("telephony/callrecordingdb") + ":1"), std::string::npos);
    dir.WriteRules(RuleText(7, "9"));
    EXPECT_EQ(callrecording_reload(rules), CALLRECORDING_YES);
    EXPECT_EQ(LastFailure(), "");
    dir.WriteRules(RuleText(7, "9") + RuleText(8, "1") + "}\n");
    EXPECT_EQ(callrecording_reload(rules), CALLRECORDING_ERROR);
    EXPECT_EQ(callrecording_count(rules), 1);
    std::string const failure = LastFailure();
    EXPECT_EQ(failure.rfind(dir.Path()), 0U) << failure; // The path, and only once.
    std::array<char, 8> cut{};
    EXPECT_EQ(callrecording_last_failure(rules, cut.data(), cut.size()), failure.size());
    EXPECT_EQ(std::string(cut.data()), failure.substr(0, 7));
    EXPECT_EQ(callrecording_last_failure(rules, cut.data(), 0), failure.size());
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

TEST_F(CInterface, DecidesOnManyThreadsWhileOneReloads) {
    Open();
    std::atomic<bool> isDone{false};
    std::atomic<int> wrong{0};
    auto const decide = [&] {
        while (!isDone) {
            callrecording_rule const* rule = nullptr;
            callrecording_decide(rules, "201", CALLRECORDING_NUMBER, "9", CALLRECORDING_NUMBER,
                                 &rule);
            if (rule == nullptr || std::string(rule->record_to) != "archive")
                ++wrong;
            callrecording_rule_free(rule);
        }
    };
    std::thread one(decide);
    std::thread two(decide);
    for (int i = 0; i < 50; ++i) {
        dir.WriteRules(i % 2 == 0 ? "{\n" : RuleText(i, "9"));
        callrecording_reload(rules);
    }
    isDone = true;
    one.join();
    two.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(callrecording_count(rules), 1);
}

} // namespace
