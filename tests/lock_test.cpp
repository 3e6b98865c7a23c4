// The lock around edits: who holds it, who may, and how it is given back.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <callrecordingutils/CRuleFileLock.h>

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

TEST_F(Lock, IsOpenToThoseOnlyWhoMayWriteTheRules) {
    struct {
        mode_t rules, lock;
    } const rows[] = {{0644, 0600}, {0664, 0660}, {0666, 0666}, {0600, 0600}, {0444, 0000}};
    for (auto const& row : rows) {
        for (bool const isThere : {false, true}) {
            std::filesystem::remove(path);
            if (isThere)
                dir.Write("telephony/callrecordingdb.lock", ""); // As an older client made it.
            dir.WriteRules("");
            std::string const rules = dir.Path(TempDir::RULE_FILE);
            ASSERT_EQ(chmod(rules.c_str(), row.rules), 0);
            bool const isOwned = chown(rules.c_str(), 1, 2) == 0; // Not so for other than root.
            EXPECT_TRUE(!isOwned || IsFree());
            struct stat status {};
            EXPECT_EQ(stat(path.c_str(), &status), isOwned ? 0 : status.st_uid);
            EXPECT_TRUE(!isOwned || (status.st_uid == 1 && status.st_gid == 2 &&
                                     (status.st_mode & 07777) == row.lock))
                << std::oct << row.rules << " " << status.st_mode;
        }
    }
    // Without rules the directory tells.
    std::filesystem::remove_all(dir.Path("telephony"));
    std::filesystem::create_directory(dir.Path("telephony"));
    ASSERT_EQ(chmod(dir.Path("telephony").c_str(), 0775), 0);
    EXPECT_TRUE(IsFree());
    struct stat status {};
    EXPECT_TRUE(stat(path.c_str(), &status) == 0 && (status.st_mode & 07777) == 0660);
}

TEST_F(Lock, SaysWhyItCannotBeHad) {
    std::filesystem::create_symlink("elsewhere", path);
    EXPECT_EQ(CRuleFileLock(0).GetFailure(),
              path + ": cannot be opened: Too many levels of symbolic links");
    std::filesystem::remove_all(dir.Path("telephony"));
    EXPECT_EQ(CRuleFileLock(0).GetFailure(),
              path + ": cannot be opened: No such file or directory");
}

TEST_F(Lock, AFileThatWasRemovedIsMadeAnew) {
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
