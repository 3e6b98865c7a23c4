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

TEST(LogStreamTest, AppendsTheEntriesOfItsLevels) {
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

/// A log in a directory of its own.
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

TEST_F(Log, GoesOnBehindARotation) {
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
    // Where none can be made under the name, the old one serves, and then the new one again.
    std::filesystem::rename(dir.Path("a"), dir.Path("b"));
    Add(log, "5\n");
    EXPECT_EQ(dir.Read("b/log"), "4\n5\n");
    dir.Write("a/log", "");
    Add(log, "6\n");
    EXPECT_EQ(dir.Read("b/log") + dir.Read("a/log"), "4\n5\n6\n");
}

TEST_F(Log, NoHalfALineJoinsTheNext) {
    for (bool const isOpenedAgain : {false, true}) {
        dir.Write("a/log", "1\n");
        auto log = std::make_unique<LogStream>("a/log", false, true, 0, 1, 2048, false);
        {
            FileSizeLimit const limit(5);
            Add(*log, "entry\n");
            Add(*log, "lost\n");
        }
        if (isOpenedAgain)
            log = std::make_unique<LogStream>("a/log", false, true, 0, 1, 2048, false);
        Add(*log, "2");
        Add(*log, "3\n");
        EXPECT_EQ(dir.Read("a/log"), "1\nent\n23\n");
    }
}

TEST_F(Log, LeavesAFileAloneThatTookOverItsDescriptor) {
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

TEST_F(Log, APipeIsWrittenAsLongAsSomebodyReads) {
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

TEST_F(Log, ALimitThatWaitedBeforeIsLeftToTheHost) {
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

TEST(LogStreamTest, ALogThatCannotBeWrittenDisturbsNobody) {
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
