// The lock around edits: who holds it, who may take it, and how it is released.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <callrecordingutils/CRuleFileLock.h>

#include "support/AsUser.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

using namespace std::chrono_literals;

struct Lock : testing::Test {
    Lock() { dir.UseAsConfiguration(); }
    static bool IsFree() { return CRuleFileLock(0).IsHeld(); }

    TempDir dir;
    std::string path = dir.Path(TempDir::RULE_FILE) + ".lock";
};

TEST_F(Lock, IsHeldByOneAtATime) {
    auto first = std::make_unique<CRuleFileLock>(0);
    EXPECT_TRUE(first->IsHeld());
    EXPECT_EQ(first->GetFailure(), "");
    auto const before = std::chrono::steady_clock::now();
    CRuleFileLock const second(60);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 60ms);
    EXPECT_FALSE(second.IsHeld());
    EXPECT_EQ(second.GetFailure(), path + ": another process is editing the rules");
    std::thread release([&first] {
        std::this_thread::sleep_for(30ms);
        first.reset();
    });
    EXPECT_TRUE(CRuleFileLock(10000).IsHeld());
    release.join();
    EXPECT_TRUE(IsFree());
}

/// A lock beside rules of user 1 and group 2, which take root to make.
struct LockOfOthers : Lock {
    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "takes root";
        chmod(dir.Path().c_str(), 0755);
        chmod(dir.Path("telephony").c_str(), 0777);
        dir.WriteRules("");
        Give(rules, 0664, 1, 2);
    }
    std::string const rules = dir.Path(TempDir::RULE_FILE);
};

TEST_F(LockOfOthers, IsOpenToThoseOnlyWhoMayWriteTheRules) {
    for (auto const& [mode, lock] : {std::pair{0644, "1:2 600"},
                                     {0664, "1:2 660"},
                                     {0666, "1:2 666"},
                                     {0600, "1:2 600"},
                                     {0444, "1:2 0"}}) {
        for (bool const isThere : {false, true}) { // With what the rules' mode was before.
            isThere || std::filesystem::remove(path);
            chmod(rules.c_str(), isThere ? mode : 0660);
            EXPECT_TRUE(isThere || IsFree());
        }
        EXPECT_TRUE(IsFree());
        EXPECT_EQ(OwnerAndMode(path), lock);
    }
    // Without rules the directory counts.
    std::filesystem::remove(path);
    std::filesystem::remove(rules);
    Give(dir.Path("telephony"), 0775, 3, 4);
    EXPECT_TRUE(IsFree());
    EXPECT_EQ(OwnerAndMode(path), "3:4 660");
    Give(path, 0600, 5, 5); // One that somebody made who could not give it away.
    EXPECT_TRUE(IsFree());
    EXPECT_EQ(OwnerAndMode(path), "5:5 600");
}

TEST_F(LockOfOthers, ServesAllEditorsOfAGroup) {
    auto const failure = [] { return CRuleFileLock(0).GetFailure(); };
    std::string const neither =
        path + ": belongs to neither the owner nor the group of the rule file";
    struct {
        mode_t rules;
        uid_t user;
        std::vector<gid_t> groups;
        std::string failure, lock;
    } const rows[] = {
        {0664, 3, {3, 2}, "", "3:2 660"}, // An editor makes it,
        {0664, 4, {4, 2}, "", "3:2 660"}, // the next one finds it,
        {0664, 5, {5}, path + ": cannot be opened: Permission denied", "3:2 660"},
        {0664, 1, {1, 2}, "", "3:2 660"},
        {0664, 0, {0}, "", "1:2 660"}, // and root gives it away.
        {0644, 3, {3, 2}, path + ": cannot be opened: Permission denied", "1:2 600"}, // By then.
        {0666, 0, {0}, "", "1:2 666"},
        {0666, 5, {5}, "", "1:2 666"},
    };
    for (auto const& row : rows) {
        chmod(rules.c_str(), row.rules);
        EXPECT_TRUE(row.rules != 0644 || IsFree());
        EXPECT_EQ(AsUser(row.user, row.groups, failure), row.failure) << row.lock;
        EXPECT_EQ(OwnerAndMode(path), row.lock);
    }
    std::filesystem::remove(path);
    EXPECT_EQ(AsUser(5, {5}, failure), neither);
    EXPECT_EQ(OwnerAndMode(path), "none");
    EXPECT_EQ(AsUser(1, {1}, failure), ""); // The owner need not be in the group.
    EXPECT_EQ(OwnerAndMode(path), "1:1 600");
    EXPECT_EQ(AsUser(1, {1, 2}, failure), "");
    EXPECT_EQ(OwnerAndMode(path), "1:2 666");
}

TEST_F(LockOfOthers, RefusesWhatSomebodyElsePutThere) {
    std::string const other = dir.Path("telephony/other");
    auto const makeFile = [&] { dir.Write("telephony/callrecordingdb.lock", "keep"); };
    struct {
        char const* reason;
        std::function<void()> make;
    } const rows[] = {
        {"is a symbolic link", [&] { std::filesystem::create_symlink(other, path); }},
        {"has more than one name", [&] { std::filesystem::create_hard_link(other, path); }},
        {"is not a regular file", [&] { EXPECT_EQ(mkfifo(path.c_str(), 0600), 0); }},
        {"cannot be opened: Is a directory", [&] { std::filesystem::create_directory(path); }},
        {"belongs to neither the owner nor the group of the rule file", makeFile},
        {"belongs to neither the owner nor the group of the rule file",
         [&] { makeFile(), Give(path, 01600, 0, 0); }}, // Not empty, so not just being made.
    };
    for (auto const& row : rows) {
        dir.Write("telephony/other", "");
        Give(other, 0600, 0, 0);
        row.make();
        std::string const before = OwnerAndMode(path);
        EXPECT_EQ(CRuleFileLock(0).GetFailure(), path + ": " + row.reason);
        EXPECT_EQ(OwnerAndMode(path), before);
        EXPECT_EQ(OwnerAndMode(other), "0:0 600");
        std::filesystem::remove(path);
    }
    std::filesystem::remove_all(dir.Path("telephony"));
    EXPECT_EQ(CRuleFileLock(0).GetFailure(),
              path + ": cannot be opened: No such file or directory");
}

// What a process leaves that is killed before the file has its owner and mode.
TEST_F(LockOfOthers, FinishesAFileThatWasOnlyCreated) {
    for (uid_t const user : {0U, 1U, 3U}) {
        std::filesystem::remove(path);
        dir.Write("telephony/callrecordingdb.lock", "");
        Give(path, 01600, user, user);
        auto const failure = [] { return CRuleFileLock(0).GetFailure(); };
        EXPECT_EQ(AsUser(4, {4, 2}, failure), path + ": cannot be opened: Permission denied");
        EXPECT_EQ(AsUser(user, {user, 2}, failure), "");
        EXPECT_EQ(OwnerAndMode(path), user == 3 ? "3:2 660" : "1:2 660");
    }
    Give(path, 01600, 3, 3);
    std::thread finish([this] {
        std::this_thread::sleep_for(20ms);
        Give(path, 0660, 3, 2);
    });
    EXPECT_EQ(AsUser(4, {4, 2}, [] { return CRuleFileLock(0).GetFailure(); }), "");
    finish.join();
}

TEST_F(Lock, IsANewFileAfterTheOldOneWasRemoved) {
    auto first = std::make_unique<CRuleFileLock>(0);
    std::unique_ptr<CRuleFileLock> second;
    std::thread wait([&second] { second = std::make_unique<CRuleFileLock>(10000); });
    std::this_thread::sleep_for(30ms); // By now it most likely waits for the old file.
    std::filesystem::remove(path);
    first.reset();
    wait.join();
    EXPECT_TRUE(second->IsHeld());
    EXPECT_FALSE(IsFree());
}

TEST_F(Lock, BelongsToTheProcessThatTookIt) {
    auto lock = std::make_unique<CRuleFileLock>(0);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t const quits = fork();
    if (quits == 0) {
        lock.reset();
        _exit(0);
    }
    EXPECT_EQ(waitpid(quits, nullptr, 0), quits);
    EXPECT_FALSE(IsFree());
    pid_t const stays = fork();
    if (stays == 0) {
        char c = 0;
        close(ends[1]);
        _exit(static_cast<int>(read(ends[0], &c, 1)));
    }
    lock.reset();
    EXPECT_TRUE(IsFree());
    close(ends[1]);
    EXPECT_EQ(waitpid(stays, nullptr, 0), stays);
    close(ends[0]);
}

} // namespace
} // namespace CallRecordingUtils
