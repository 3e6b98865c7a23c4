// What the process may do: have classes of the same names as the platform's, and fork.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>
#include <callrecordingutils/PatternValidation.h>

#include "host/own_classes.h"
#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

using Host = DatabaseTest;

bool Decides(CCallRecordingAssistant& assistant, char const* number) {
    CallParams caller, called;
    called.user = number;
    return assistant.IsCallRecordingAllowed(caller, CALL_TYPE_NUMBER, called, CALL_TYPE_NUMBER,
                                            nullptr);
}

TEST_F(Host, ClassesOfTheSameNamesStayApart) {
    dir.WriteRules("");
    CCallRecordingAssistant assistant(true);
    CallRecordingRuleParams rule = Rule(0, "*", CALL_TYPE_ANY, "1*", CALL_TYPE_NUMBER);
    ASSERT_TRUE(CCallRecordingDB::mpInstance->AddRule(&rule));
    ASSERT_TRUE(assistant.ReloadCallRecordingRules());
    EXPECT_TRUE(CCallRecordingDB::mpInstance->SetRuleState("0", true));
    EXPECT_TRUE(IsRangeCorrect("{1-5}"));
    EXPECT_TRUE(Decides(assistant, "15"));
    EXPECT_NE(Trace().find("Reloading"), std::string::npos);
    EXPECT_EQ(CountCallsOfOwnClasses(), kOwnCalls);
}

// The child of a fork has only the thread that forked. What other threads had locked stays locked
// for ever: the mutexes of the database, the log and other assistants.
TEST_F(Host, ForkedChildDecidesByAnAssistantThatNobodyElseUsed) {
    dir.WriteRules(Section(Rule(0, "*", CALL_TYPE_ANY, "1<00-99>", CALL_TYPE_NUMBER)));
    CCallRecordingAssistant mine(true), others(true);
    std::atomic<bool> isOver{false};
    auto const repeat = [&isOver](auto work) {
        return std::thread([&isOver, work] {
            while (!isOver)
                work();
        });
    };
    std::vector<std::thread> threads;
    threads.push_back(repeat([&others] { Decides(others, "150"); }));
    threads.push_back(repeat([&others] { others.GetLogger()->TRACE(0, true, "busy\n"); }));
    threads.push_back(repeat([] {
        CCallRecordingDB::GetInstance(false, false);
        CCallRecordingDB::CloseInstance();
    }));

    int answered = 0;
    for (int child = 0; child < 300; ++child) {
        pid_t const process = fork();
        if (process == 0) {
            alarm(5); // A child that waits for a lock is killed.
            wild_card_counts counts;
            std::string pattern = "1{00-99}\\*";
            bool const isRight = Decides(mine, "150") && !Decides(mine, "250") &&
                                 mine.IsMatching("#72", "#7?", counts) &&
                                 !IsPatternIncorrect(pattern) && ExplainPattern("{5-1}");
            _exit(isRight ? 0 : 1);
        }
        int status = -1;
        waitpid(process, &status, 0);
        answered += status == 0;
    }
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(answered, 300);
}

} // namespace
} // namespace CallRecordingUtils
