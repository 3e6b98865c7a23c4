/// @file
/// Tests of the plain host's platform: the sectioned file, the log, the small helpers.

#include <cctype>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
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

std::string const kTwo = "{\nk=1\n}\n{\nk=2\n}\n";

/// Returns why the file at path is refused; empty when it is not.
std::string Refusal(std::string const& path) {
    try {
        RuleFile const file(path);
    } catch (std::exception const& exception) {
        return exception.what();
    }
    return "";
}

TEST(MultiSectionFileTest, AnEditChangesItsLinesAndNoOtherByte) {
    // "+" adds a section, ">" and "<" move, "-" deletes, what else there is sets an entry.
    struct {
        std::string before;
        std::vector<char const*> steps;
        std::string after;
    } const rows[] = {
        {"# a\n{\n#k=0\n \tk= 1#x\nx= y \n}\n\n#b",
         {">", "k= 2# "},
         "# a\n{\n#k=0\n \tk= 2# \nx= y \n}\n\n#b"},
        {"{\nk=1\nk=2\n}\n", {">", "k=3"}, "{\nk=3\nk=2\n}\n"},
        {"{\nkk=1\nK=1\n#k=1\nk =1\n}\n", {">", "k="}, "{\nkk=1\nK=1\n#k=1\nk =1\nk=\n}\n"},
        {"{\nk==1=\n}\n", {">", "k=={}"}, "{\nk=={}\n}\n"},
        {"{\r\nk=1\r\n}\r\n", {">", "k=22"}, "{\r\nk=22\r\n}\r\n"},
        {"{\r\nj=1\n}\n", {">", "k=2"}, "{\r\nj=1\nk=2\r\n}\n"},
        {" {\t\nk=1\n\t} ", {">", "k=2"}, " {\t\nk=2\n\t} "},
        {"", {"+", "k=v"}, "{\nk=v\n}\n"},
        {"# only", {"+"}, "# only\n{\n}\n"},
        {"#\r\n{\r\n}", {"+", "k=v"}, "#\r\n{\r\n}\r\n{\r\nk=v\r\n}\r\n"},
        {"{\r\n}\r", {"+"}, "{\r\n}\r\n{\r\n}\r\n"},
        {"#a\n{\n#b\nk=1\n}\n#c\n{\n}\n", {">", "-"}, "#a\n#c\n{\n}\n"},
        {"#a\n{\nk=1\n}", {">", "-"}, "#a\n"},
        {"{\nk=1\n}\n#a\n{\nk=2\n}\n#b\n{\nk=3\n}\n#c\n",
         {">", "k=longer", "k=", ">", "-", ">", "j=y", "<", "k=w", "j=z", ">", "k=x"},
         "{\nk=w\nj=z\n}\n#a\n#b\n{\nk=x\nj=y\n}\n#c\n"},
    };
    TempDir dir;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.before);
        dir.Write("rules", row.before);
        RuleFile file(dir.Path("rules"));
        for (std::string const step : row.steps) {
            if (step.size() > 1)
                file.SetSectionEntry(step.substr(0, 1).c_str(), step.substr(2).c_str());
            else if (step == "-")
                file.DeleteSection();
            else
                step == "+"   ? file.AddSection(false)
                : step == ">" ? file.GotoNextSection()
                              : file.GotoPreviousSection();
        }
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
        std::string const message = Refusal(dir.Path("rules"));
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
        EXPECT_EQ(Refusal(dir.Path(name)).find(dir.Path(name) + ": "), 0u);
}

TEST(MultiSectionFileTest, TheCursorWalksBothWays) {
    TempDir dir;
    dir.Write("rules", "{\nk=1\n}\n{\nk=2\n}\n{\nk=3\n}\n");
    RuleFile file(dir.Path("rules"));
    // Takes the steps, "x" deleting, and returns the value of k after each, "-" where there is no
    // section.
    auto const walk = [&](std::string const& steps) {
        std::string values;
        for (char const step : steps) {
            bool const isThere = step == 'x'   ? file.DeleteSection() == 0
                                 : step == '>' ? file.GotoNextSection() != 0
                                               : file.GotoPreviousSection() != 0;
            values += isThere ? file.Value("k") : "-";
            if (!isThere) {
                EXPECT_ANY_THROW(file.Value("k"));
                EXPECT_ANY_THROW(file.DeleteSection());
                EXPECT_ANY_THROW(file.SetSectionEntry("k", "v"));
            }
        }
        return values;
    };
    EXPECT_ANY_THROW(file.Value("k"));
    EXPECT_EQ(walk("<>>>>><<<<>>"), "-123--321-12");
    EXPECT_EQ(walk("x><x<>"), "-31--3");
    file.AddSection(false);
    file.SetSectionEntry("k", "4");
    EXPECT_EQ(walk("<>><"), "34-4");
    file.Restart();
    EXPECT_EQ(walk(">"), "3");
}

TEST(MultiSectionFileTest, TakesNoEntryThatItCouldNotGiveBack) {
    TempDir dir;
    dir.Write("rules", kTwo);
    RuleFile file(dir.Path("rules"));
    file.GotoNextSection();
    std::string area(SmartBuffer().GetCapacity() - 1, 'x');
    for (std::string const& value : {area + "x", "a\nb"s, "a\r"s})
        EXPECT_ANY_THROW(file.SetSectionEntry("k", value.c_str()));
    for (char const* const key : {"", " k", "#k", "k=", "k\n"})
        EXPECT_ANY_THROW(file.SetSectionEntry(key, "1")) << key;
    file.Save(true, nullptr);
    EXPECT_EQ(dir.Read("rules"), kTwo);

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
    dir.Write("real/rules", kTwo);
    ASSERT_EQ(chmod(dir.Path("real/rules").c_str(), 0640), 0);
    std::filesystem::create_symlink("real/rules", dir.Path("inner"));
    std::filesystem::create_symlink(dir.Path("inner"), dir.Path("outer"));
    std::filesystem::create_symlink("real/new", dir.Path("dangling"));
    umask(2);
    for (char const* const name : {"outer", "dangling"}) {
        RuleFile file(dir.Path(name));
        file.AddSection(false);
        file.Save(true, nullptr);
        EXPECT_TRUE(std::filesystem::is_symlink(dir.Path(name)));
    }
    EXPECT_EQ(dir.Read("real/rules"), kTwo + "{\n}\n");
    EXPECT_EQ(dir.Read("real/new"), "{\n}\n");
    for (auto const& [name, mode] : {std::pair{"outer", 0640u}, {"dangling", 0664u}}) {
        struct stat status = {};
        ASSERT_EQ(stat(dir.Path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, mode);
    }
}

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
