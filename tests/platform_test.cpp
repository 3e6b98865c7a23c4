/// @file
/// Tests of the plain host's platform: the sectioned file, the log, the small helpers.

#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <LogStream.h>
#include <SmartBuffer.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/RuleFile.h"
#include "support/TempDir.h"

namespace {

using namespace std::string_literals;

std::string const TWO = "{\nk=1\n}\n{\nk=2\n}\n";

/// Returns the message of the exception that action throws; empty when there is none.
std::string ThrownBy(std::function<void()> const& action) {
    try {
        action();
    } catch (std::exception const& exception) {
        return exception.what();
    }
    return "";
}

TEST(MultiSectionFileTest, AnEditChangesItsLinesAndNoOtherByte) {
    auto const set = [](char const* key, char const* value) {
        return [=](RuleFile& file) {
            file.GotoNextSection();
            file.SetSectionEntry(key, value);
        };
    };
    auto const add = [](RuleFile& file) {
        file.AddSection(false);
        file.SetSectionEntry("k", "v");
    };
    auto const remove = [](RuleFile& file) {
        file.GotoNextSection();
        file.DeleteSection();
    };
    auto const several = [&](RuleFile& file) {
        set("k", "longer")(file);
        set("k", "")(file);
        set("k", "x")(file);
        file.GotoPreviousSection();
        file.DeleteSection();
        set("j", "y")(file);
        file.GotoPreviousSection();
        file.SetSectionEntry("j", "z");
        file.SetSectionEntry("k", "w");
    };
    struct {
        std::string before;
        std::function<void(RuleFile&)> edit;
        std::string after;
    } const rows[] = {
        {"", [](RuleFile&) {}, ""},
        {"# a\n\n{\n#k=0\n \tk=1#x\nx= y \n\n}\n#b", [](RuleFile&) {},
         "# a\n\n{\n#k=0\n \tk=1#x\nx= y \n\n}\n#b"},
        {"# a\n{\n#k=0\n \tk= 1#x\nx= y \n}\n", set("k", " 2# "),
         "# a\n{\n#k=0\n \tk= 2# \nx= y \n}\n"},
        {"{\nk=1\nk=2\n}\n", set("k", "3"), "{\nk=3\nk=2\n}\n"},
        {"{\nkk=1\nK=1\n#k=1\nk =1\n}\n", set("k", ""), "{\nkk=1\nK=1\n#k=1\nk =1\nk=\n}\n"},
        {"{\nk==1=\n}\n", set("k", "={}"), "{\nk=={}\n}\n"},
        {"{\r\nk=1\r\n}\r\n", set("k", "22"), "{\r\nk=22\r\n}\r\n"},
        {"{\r\nj=1\n}\n", set("k", "2"), "{\r\nj=1\nk=2\r\n}\n"},
        {" {\t\nk=1\n\t} ", set("k", "2"), " {\t\nk=2\n\t} "},
        {"", add, "{\nk=v\n}\n"},
        {"#\n{\n}", add, "#\n{\n}\n{\nk=v\n}\n"},
        {"#\r\n{\r\n}", add, "#\r\n{\r\n}\r\n{\r\nk=v\r\n}\r\n"},
        {"{\r\n}\r", add, "{\r\n}\r\n{\r\nk=v\r\n}\r\n"},
        {"# only", add, "# only\n{\nk=v\n}\n"},
        {"#a\n{\n#b\nk=1\n}\n#c\n{\n}\n", remove, "#a\n#c\n{\n}\n"},
        {"#a\n{\nk=1\n}", remove, "#a\n"},
        {"{\nk=1\n}\n#a\n{\nk=2\n}\n#b\n{\nk=3\n}\n#c\n", several,
         "{\nk=w\nj=z\n}\n#a\n#b\n{\nk=x\nj=y\n}\n#c\n"},
    };
    TempDir dir;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.before);
        dir.Write("rules", row.before);
        RuleFile file(dir.Path("rules"));
        row.edit(file);
        EXPECT_EQ(dir.Read("rules"), row.before) << "written without Save";
        file.Save(true, nullptr);
        EXPECT_EQ(dir.Read("rules"), row.after);
    }
}

TEST(MultiSectionFileTest, SaysWhereAFileIsMalformed) {
    struct {
        std::string content;
        char const* message;
    } const rows[] = {
        {"# a\n{\nk=1\n{\n}\n}\n",
         ":4: found \"{\" in the section opened at line 2, expected \"}\""},
        {"{\n}\n}\n", ":3: found \"}\" while no section is open"},
        {"\n{\nk=1\n", ":3: the file ends in the section opened at line 2"},
        {"{", ":1: the file ends in the section opened at line 1"},
        {"{\n}\nk=1\n", ":3: found \"k=1\" outside the sections"},
        {"{\n# a\nk 1\n}\n", ":3: found \"k 1\", expected a key, \"=\" and a value"},
        {"{\n =1\n}\n", ":2: found \"=1\", an entry without a key"},
        {"{\n}\n#\0\n"s, ":3: found a NUL"},
        {"\x1B[2J" + std::string(1000, 'x'), ":1: found \"?[2Jxxxxxxxxxx"},
    };
    TempDir dir;
    for (auto const& row : rows) {
        dir.Write("rules", row.content);
        std::string const message = ThrownBy([&] { RuleFile(dir.Path("rules")); });
        EXPECT_EQ(message.find(dir.Path("rules") + row.message), 0u) << message;
        EXPECT_LT(message.size(), 300u);
    }
}

TEST(MultiSectionFileTest, OpensWhatCanBecomeARuleFileOnly) {
    TempDir dir;
    EXPECT_EQ(RuleFile(dir.Path("missing")).GotoNextSection(), 0);
    ASSERT_EQ(mkfifo(dir.Path("pipe").c_str(), 0600), 0);
    dir.Write("file", "");
    std::filesystem::create_symlink("loop", dir.Path("loop"));
    std::filesystem::create_symlink("missing/rules", dir.Path("astray"));
    for (char const* const name : {"", "pipe", "missing/rules", "file/rules", "loop", "astray"})
        EXPECT_EQ(ThrownBy([&] { RuleFile(dir.Path(name)); }).find(dir.Path(name) + ": "), 0u);
}

TEST(MultiSectionFileTest, TheCursorWalksBothWays) {
    TempDir dir;
    dir.Write("rules", "{\nk=1\n}\n{\nk=2\n}\n{\nk=3\n}\n");
    RuleFile file(dir.Path("rules"));
    // Takes the steps and returns the value of k after each, "-" where there is no section.
    auto const walk = [&](std::string const& steps) {
        std::string values;
        for (char const step : steps) {
            int const isThere = step == '>' ? file.GotoNextSection() : file.GotoPreviousSection();
            values += isThere != 0 ? file.Value("k") : "-";
        }
        return values;
    };
    auto const expectNowhere = [&] {
        EXPECT_ANY_THROW(file.Value("k"));
        EXPECT_ANY_THROW(file.DeleteSection());
        EXPECT_ANY_THROW(file.SetSectionEntry("k", "v"));
    };
    expectNowhere();
    EXPECT_EQ(walk("<>>>>>"), "-123--");
    expectNowhere();
    EXPECT_EQ(walk("<<<<>>"), "321-12");
    file.DeleteSection();
    expectNowhere();
    EXPECT_EQ(walk("><"), "31");
    file.DeleteSection();
    EXPECT_EQ(walk("<>"), "-3");
    file.AddSection(false);
    file.SetSectionEntry("k", "4");
    EXPECT_EQ(walk("<>><"), "34-4");
    file.Restart();
    EXPECT_EQ(walk(">"), "3");
}

TEST(MultiSectionFileTest, TakesNoEntryThatItCouldNotGiveBack) {
    TempDir dir;
    dir.Write("rules", TWO);
    RuleFile file(dir.Path("rules"));
    file.GotoNextSection();
    std::string area(SmartBuffer().GetCapacity() - 1, 'x');
    for (std::string const& value : {area + "x", "a\nb"s, "a\r"s})
        EXPECT_ANY_THROW(file.SetSectionEntry("k", value.c_str()));
    for (char const* const key : {"", " k", "#k", "k=", "k\n"})
        EXPECT_ANY_THROW(file.SetSectionEntry(key, "1")) << key;
    file.Save(true, nullptr);
    EXPECT_EQ(dir.Read("rules"), TWO);

    file.SetSectionEntry("k", area.c_str());
    EXPECT_EQ(file.Value("k"), area);
    std::string const untouched = area = std::string(area.size(), '?');
    EXPECT_ANY_THROW(file.GetSectionEntry("k", area.data(), static_cast<unsigned>(area.size())));
    EXPECT_EQ(area, untouched);
    EXPECT_EQ(file.GetSectionEntry("none", area.data(), 1), 0);
    EXPECT_EQ(area.substr(0, 2), "\0?"s);
}

TEST(MultiSectionFileTest, SaveKeepsTheModeAndFollowsLinks) {
    TempDir dir;
    dir.Write("real/rules", TWO);
    ASSERT_EQ(chmod(dir.Path("real/rules").c_str(), 0640), 0);
    std::filesystem::create_symlink("real/rules", dir.Path("inner"));
    std::filesystem::create_symlink(dir.Path("inner"), dir.Path("outer"));
    std::filesystem::create_symlink("real/new", dir.Path("dangling"));
    for (char const* const name : {"outer", "dangling"}) {
        RuleFile file(dir.Path(name));
        file.AddSection(false);
        file.Save(true, nullptr);
        EXPECT_TRUE(std::filesystem::is_symlink(dir.Path(name)));
    }
    EXPECT_EQ(dir.Read("real/rules"), TWO + "{\n}\n");
    EXPECT_EQ(dir.Read("real/new"), "{\n}\n");
    struct stat status = {};
    ASSERT_EQ(stat(dir.Path("real/rules").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0640u);
}

void Trace(LogStream& log, unsigned char level, char const* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    log.TRACE(level, format, arguments, 0);
    va_end(arguments);
}

TEST(LogStreamTest, AppendsTheEntriesOfItsLevels) {
    struct {
        char const* level;
        char const* added;
    } const rows[] = {{"", "0 a|9 b|"}, {"x3", "0 a|9 b|"},
                      {"0", "0 a|"},    {"9", "0 a|9 b|"},
                      {"8", "0 a|"},    {"99999999999999999999999", "0 a|9 b|"}};
    TempDir dir;
    setenv("QUVA_LOG_PATH", (dir.Path() + "/pre-").c_str(), 1);
    std::string expected;
    for (auto const& row : rows) {
        setenv("QUVA_LOG_LEVEL", row.level, 1);
        LogStream log("log", false, true, 0x7FFFFFFF, 1, 2048, false);
        Trace(log, 0, "%d %s|", 0, "a");
        Trace(log, 9, "%d %s|", 9, "b");
        log.Flush();
        EXPECT_EQ(dir.Read("pre-log"), expected += row.added);
        bool isEnabled = false;
        GetLogLevel(&isEnabled, nullptr);
        EXPECT_EQ(isEnabled, std::isdigit(row.level[0]) != 0);
    }
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
