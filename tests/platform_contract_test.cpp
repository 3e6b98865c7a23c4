/// @file
/// What the library needs of every platform, as platform/*.h say. For a device's platform:
/// scripts/check-platform.sh.

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <type_traits>

#include <CallParams.h>
#include <LogStream.h>
#include <MultiSectionFile.h>
#include <SmartBuffer.h>
#include <StringUtils.h>
#include <ThreadMutex.h>
#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

static_assert(std::is_same_v<decltype(CallParams::user), std::string> &&
              std::is_same_v<decltype(CallParams::host), std::string> &&
              std::is_same_v<decltype(CallParams::port), std::string> &&
              std::is_default_constructible_v<CallParams>);

/// A rule file, opened and read as the library does.
struct File : Configuration::MultiSectionFile {
    explicit File(std::string const& path)
        : MultiSectionFile(path.c_str(), true, false, false, nullptr, "{\n", "}\n", "=", "#",
                           nullptr) {}

    std::string Value(char const* key) {
        SmartBuffer buffer;
        GetSectionEntry(key, buffer.GetData(), buffer.GetCapacity());
        return buffer.GetData();
    }

    /// The values of key from the first section to the last, each with a blank after it.
    std::string Values(char const* key) {
        std::string values;
        int sections = 0;
        Restart();
        for (; GotoNextSection() != 0 && sections < 100; ++sections)
            values += Value(key) + " ";
        return sections < 100 ? values : "no end";
    }
};

struct PlatformContract : testing::Test {
    std::string Written() { return File(path).Values("k"); }

    TempDir dir;
    std::string const path = dir.Path("rules");
    std::string const three = "{\nk=1\n}\n{\nk=2\n}\n{\nk=3\n}\n";
};

TEST_F(PlatformContract, AMissingFileHasNoSectionsAndIsCreated) {
    File file(path);
    EXPECT_EQ(file.Values("k"), "");
    ASSERT_NE(file.AddSection(false), 0);
    file.SetSectionEntry("k", "1");
    file.Save(true, nullptr);
    EXPECT_EQ(Written(), "1 ");
}

TEST_F(PlatformContract, WhatCannotBeReadOrWrittenIsAnException) {
    EXPECT_ANY_THROW(File file(dir.Path()));
    dir.Write("gone/rules", three);
    File file(dir.Path("gone/rules"));
    std::filesystem::remove_all(dir.Path("gone"));
    EXPECT_ANY_THROW(file.Save(true, nullptr));
}

TEST_F(PlatformContract, TheCursorWalksOverTheSections) {
    dir.Write("rules", three);
    File file(path);
    EXPECT_EQ(file.Values("k"), "1 2 3 ");
    EXPECT_EQ(file.Values("k"), "1 2 3 "); // Restart goes back from wherever the cursor is.
    file.Restart();
    EXPECT_NE(file.GotoNextSection(), 0);
    EXPECT_NE(file.GotoNextSection(), 0);
    EXPECT_NE(file.GotoPreviousSection(), 0);
    EXPECT_EQ(file.Value("k"), "1");
    EXPECT_EQ(file.GotoPreviousSection(), 0);
    file.Restart();
    EXPECT_NE(file.GotoNextSection(), 0);
    EXPECT_EQ(file.Value("k"), "1");
}

/// Moves from the front by ">" and "<", sets k to "x" by "s", adds a section by "a", deletes by
/// "d".
void Edit(File& file, std::string const& steps) {
    file.Restart();
    for (char const step : steps) {
        switch (step) {
        case '>': EXPECT_NE(file.GotoNextSection(), 0); break;
        case '<': EXPECT_NE(file.GotoPreviousSection(), 0); break;
        case 'a': EXPECT_NE(file.AddSection(false), 0); break;
        case 'd': file.DeleteSection(); break;
        default: file.SetSectionEntry("k", "x"); EXPECT_EQ(file.Value("k"), "x");
        }
    }
}

TEST_F(PlatformContract, EditsChangeTheObjectAndASaveTheFile) {
    struct {
        char const *steps, *values;
    } const rows[] = {
        {">s", "x 2 3 "},   {">>>s", "1 2 x "},   {"a", "1 2 3  "},     {">>as", "1 2 3 x "},
        {">d", "2 3 "},     {">>d", "1 3 "},      {">>>d", "1 2 "},     {">d>s", "x 3 "},
        {">d>d", "3 "},     {">>s<s", "x x 3 "},  {">>d>sa", "1 x  "},  {">d>d>d", ""},
        {">d>d>das", "x "}, {">>>s<s", "1 x x "}, {"aas", "1 2 3  x "},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.steps);
        dir.Write("rules", three);
        {
            File file(path);
            Edit(file, row.steps);
            EXPECT_EQ(file.Values("k"), row.values);
        }
        EXPECT_EQ(Written(), "1 2 3 ") << "written without Save";
        File file(path);
        Edit(file, row.steps);
        file.Save(true, nullptr);
        EXPECT_EQ(Written(), row.values);
        Edit(file, "as");
        file.Save(true, nullptr);
        EXPECT_EQ(Written(), row.values + std::string("x "));
    }
}

TEST_F(PlatformContract, AValueIsReadBackTheSameOrRefused) {
    dir.Write("rules", "{\nj=2\n}\n");
    SmartBuffer buffer;
    ASSERT_NE(buffer.GetCapacity(), 0U);
    ASSERT_NE(buffer.GetCapacity(), 0xFFFFFFFFU);
    ASSERT_GE(buffer.GetCapacity(), 256U);
    struct {
        std::string value;
        bool mayBeRefused;
    } const rows[] = {
        {"", false},
        {"1<00-99,!13>[1-3]*#^@%:", false},
        {"#no comment", false},
        {"a=b==", false},
        {"{", false},
        {"}", false},
        {" blanks\t ", false},
        {"\x80\xFF\x01", false},
        {std::string(255, 'x'), false},
        {std::string(buffer.GetCapacity() - 1, 'x'), false},
        {std::string(buffer.GetCapacity(), 'x'), true},
        {"line\nbreak", true},
        {"ends\r", true},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.value);
        File file(path);
        file.GotoNextSection();
        try {
            file.SetSectionEntry("k", row.value.c_str());
            file.Save(true, nullptr);
            File again(path);
            again.GotoNextSection();
            EXPECT_EQ(again.Value("k"), row.value);
            EXPECT_EQ(again.Value("j"), "2");
            EXPECT_EQ(again.GotoNextSection(), 0);
        } catch (...) {
            EXPECT_TRUE(row.mayBeRefused);
        }
    }
}

TEST_F(PlatformContract, OnlyTheBufferIsWritten) {
    dir.Write("rules", "{\nk=12345\n}\n");
    File file(path);
    file.GotoNextSection();
    for (unsigned size = 1; size <= 6; ++size) {
        std::string area(16, '?');
        try {
            file.GetSectionEntry("k", area.data(), size);
            EXPECT_LT(std::string(area.c_str()).size(), size);
        } catch (...) {
            EXPECT_LE(size, 5U); // "12345" and its NUL fit into six bytes.
        }
        EXPECT_EQ(area.find_first_not_of('?', size), std::string::npos);
    }
    std::string area = "stale";
    file.GetSectionEntry("none", area.data(), static_cast<unsigned>(area.size()));
    EXPECT_STREQ(area.c_str(), "");
}

TEST(PlatformContractOfMutex, AThreadWaitsUntilItIsUnlocked) {
    ThreadMutex mutex;
    std::atomic<bool> isWaiting{false};
    std::atomic<bool> isInside{false};
    mutex.Lock();
    std::thread other([&] {
        isWaiting = true;
        mutex.Lock();
        isInside = true;
        mutex.Unlock();
    });
    while (!isWaiting)
        std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(isInside);
    mutex.Unlock();
    other.join();
    EXPECT_TRUE(isInside);
}

void Trace(LogStream& log, unsigned char level, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log.TRACE(level, format, arguments, 0);
    va_end(arguments);
}

/// Where the log goes: PLATFORM_LOG_FILE for a device's, else where the plain host writes it.
TEST_F(PlatformContract, TheLogHasEachEntryOnceItIsFlushed) {
    setenv("QUVA_LOG_PATH", dir.Path("").c_str(), 1);
    setenv("QUVA_LOG_LEVEL", "9", 1);
    LogStream log("callrecording.log", false, true, 0x7FFFFFFF, 1, 2048U, false);
    for (bool isEnabled : {false, true}) {
        bool again = !isEnabled;
        GetLogLevel(&isEnabled, nullptr);
        GetLogLevel(&again, nullptr);
        EXPECT_EQ(isEnabled, again);
    }
    Trace(log, 3, "%d%% of %s\n", 7, "it");
    log.Flush();
    char const* const device = std::getenv("PLATFORM_LOG_FILE");
    std::filesystem::path const file(device != nullptr ? device : dir.Path("callrecording.log"));
    if (!std::filesystem::exists(file))
        GTEST_SKIP() << "PLATFORM_LOG_FILE does not say where the log goes";
    std::filesystem::copy_file(file, dir.Path("copy"));
    EXPECT_NE(dir.Read("copy").find("7% of it\n"), std::string::npos);
}

TEST(PlatformContractOfTexts, DigitsAndLettersAreThoseOfAscii) {
    for (std::string const text :
         {"0",   "0123456789", "a", "azAZ", "",  "a1", "1a", "-1", "+1",   " 1",  "1 ",
          "1.0", "0x1",        "/", ":",    "@", "[",  "`",  "{",  "\xE4", "\xB2"}) {
        bool const isNumeric = text == "0" || text == "0123456789";
        EXPECT_EQ(StringUtils::IsNumeric(text, false, false), isNumeric) << text;
        EXPECT_EQ(StringUtils::IsAlpha(text, false), text == "a" || text == "azAZ") << text;
    }
}

} // namespace
