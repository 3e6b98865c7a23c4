/// @file
/// Tests of the log file of a plain host.

#include <cctype>
#include <csignal>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <LogStream.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/FileSizeLimit.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

void Trace(LogStream& log, unsigned char level, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log.TRACE(level, format, arguments, 0);
    va_end(arguments);
}

TEST(LogStreamTest, AppendsTheEntriesUpToItsLevel) {
    TempDir dir;
    setenv("QUVA_LOG_PATH", (dir.Path() + "/pre-").c_str(), 1);
    std::string expected;
    for (std::string const level : {"", "x3", "0", "10", "9", "99999999999999999999999"}) {
        setenv("QUVA_LOG_LEVEL", level.c_str(), 1);
        {
            LogStream log("log", false, true, 0x7FFFFFFF, 1, 2048, false);
            Trace(log, 0, "%d %s\n", 0, "a");
            Trace(log, 10, "%d %s\n", 9, "b");
        }
        EXPECT_EQ(dir.Read("pre-log"), expected += level.size() == 1 ? "0 a\n" : "0 a\n9 b\n");
        bool isEnabled = false;
        GetLogLevel(&isEnabled, nullptr);
        EXPECT_EQ(isEnabled, std::isdigit(level[0]) != 0);
    }
}

/// A log file in a directory of its own.
struct Log : testing::Test {
    Log() {
        setenv("QUVA_LOG_PATH", dir.Path("").c_str(), 1);
        unsetenv("QUVA_LOG_LEVEL");
        dir.Write("a/log", "");
    }
    static void Add(LogStream& log, std::string const& entry) {
        Trace(log, 0, "%s", entry.c_str());
        log.Flush();
    }
    TempDir dir;
};

TEST_F(Log, FollowsARotation) {
    LogStream log("a/log", false, true, 0x7FFFFFFF, 1, 2048, false);
    Add(log, "1\n");
    std::filesystem::rename(dir.Path("a/log"), dir.Path("a/log.1"));
    Add(log, "2\n");
    EXPECT_EQ(dir.Read("a/log.1") + dir.Read("a/log"), "1\n2\n");
    std::filesystem::resize_file(dir.Path("a/log"), 0);
    Add(log, "3\n");
    EXPECT_EQ(dir.Read("a/log"), "3\n");
    std::filesystem::remove(dir.Path("a/log"));
    Add(log, "4\n");
    EXPECT_EQ(dir.Read("a/log"), "4\n");
    // Where none can be created under the name, the old file is used, and later the new one again.
    std::filesystem::rename(dir.Path("a"), dir.Path("b"));
    Add(log, "5\n");
    EXPECT_EQ(dir.Read("b/log"), "4\n5\n");
    dir.Write("a/log", "");
    Add(log, "6\n");
    EXPECT_EQ(dir.Read("b/log") + dir.Read("a/log"), "4\n5\n6\n");
}

TEST_F(Log, ATornLineIsEndedBeforeTheNextEntry) {
    struct {
        char const* before;
        rlim_t limit; // To the size of the file while "a\nbc\n" and "lost\n" are added.
        char const* after;
    } const rows[] = {
        {"1\n", 2, "1\n23\n"},    // Nothing was written,
        {"1\n", 3, "1\na\n23\n"}, // or a part,
        {"1\n", 4, "1\na\n23\n"}, // or a part that ends with a line,
        {"1\n", 5, "1\na\nb\n23\n"},     {"1\n", 7, "1\na\nbc\n23\n"}, // or all of the first entry.
        {"1\n", 8, "1\na\nbc\nl\n23\n"}, {"torn", 4, "torn\n23\n"},    // What another process left.
        {"torn", 6, "torn\na\n23\n"},    {"", 0, "23\n"},
    };
    for (auto const& row : rows) {
        for (bool const isOpenedAgain : {false, true}) {
            SCOPED_TRACE(row.after);
            dir.Write("a/log", row.before);
            auto log = std::make_unique<LogStream>("a/log", false, true, 0, 1, 2048, false);
            {
                FileSizeLimit const limit(row.limit);
                Add(*log, "a\nbc\n");
                Add(*log, "lost\n");
            }
            if (isOpenedAgain)
                log = std::make_unique<LogStream>("a/log", false, true, 0, 1, 2048, false);
            Add(*log, "2");
            Add(*log, "3\n");
            EXPECT_EQ(dir.Read("a/log"), row.after);
        }
    }
}

TEST_F(Log, AnEntryIsWrittenOnceItIsFlushedOrLarge) {
    LogStream log("a/log", false, true, 0, 1, 2048, false);
    Trace(log, 0, "%s", std::string(65535, 'x').c_str());
    EXPECT_EQ(dir.Read("a/log").size(), 0U);
    Trace(log, 0, "y");
    EXPECT_EQ(dir.Read("a/log").size(), 65536U);
    Trace(log, 0, "z");
    log.Flush();
    EXPECT_EQ(dir.Read("a/log"), std::string(65535, 'x') + "yz");
}

TEST_F(Log, DoesNotTouchAFileThatTookOverItsDescriptor) {
    for (bool const isWrittenTo : {false, true}) {
        auto log = std::make_unique<LogStream>("a/log", false, true, 0, 1, 2048, false);
        int number = 0;
        std::error_code error;
        while (std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(number), error) !=
               dir.Path("a/log"))
            ASSERT_LT(++number, 1000);
        dir.Write("other", "");
        int const other = open(dir.Path("other").c_str(), O_WRONLY);
        dup2(other, number); // As after closing all descriptors.
        if (isWrittenTo)
            Add(*log, "1\n");
        log.reset();
        EXPECT_EQ(dir.Read("other"), "");
        EXPECT_EQ(dir.Read("a/log"), isWrittenTo ? "1\n" : "");
        EXPECT_EQ(close(number), 0) << "the host's descriptor was closed";
        close(other);
    }
}

TEST_F(Log, WritesToAPipeAsLongAsSomebodyReads) {
    ASSERT_EQ(mkfifo(dir.Path("a/pipe").c_str(), 0600), 0);
    LogStream log("a/pipe", false, true, 0x7FFFFFFF, 1, 2048, false);
    Add(log, "lost");
    for (int round = 0; round < 2; ++round) {
        int const reader = open(dir.Path("a/pipe").c_str(), O_RDONLY | O_NONBLOCK);
        Add(log, "read");
        char text[8] = "";
        EXPECT_EQ(read(reader, text, sizeof text), 4);
        EXPECT_STREQ(text, "read");
        close(reader);
        Add(log, "lost");
    }
}

TEST_F(Log, LeavesTheHostASignalThatWasPendingBefore) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGXFSZ);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &set, nullptr), 0);
    raise(SIGXFSZ);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit const limit{1, before.rlim_max};
    LogStream log("a/log", false, true, 0x7FFFFFFF, 1, 2048, false);
    setrlimit(RLIMIT_FSIZE, &limit);
    Add(log, "entry\n");
    setrlimit(RLIMIT_FSIZE, &before);
    timespec const now{0, 0};
    EXPECT_EQ(sigtimedwait(&set, nullptr, &now), SIGXFSZ);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

TEST(LogStreamTest, SurvivesALogThatCannotBeWritten) {
    unsetenv("QUVA_LOG_LEVEL");
    TempDir dir;
    ASSERT_EQ(mkfifo(dir.Path("pipe").c_str(), 0600), 0);
    for (std::string const& path :
         {dir.Path("pipe"), dir.Path("none/log"), dir.Path(), "/dev/full"s}) {
        setenv("QUVA_LOG_PATH", path.c_str(), 1);
        int const reader = open(dir.Path("pipe").c_str(), O_RDONLY | O_NONBLOCK);
        LogStream log("", false, true, 0x7FFFFFFF, 1, 2048, false);
        close(reader); // Writing to the pipe would now end the process.
        EXPECT_NO_THROW(Trace(log, 0, "%s", std::string(1 << 20, 'x').c_str()));
        EXPECT_NO_THROW(log.Flush());
    }
}

} // namespace
