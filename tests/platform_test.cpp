/// @file
/// Tests of what the plain host promises for the sectioned file, beyond what every platform has to
/// do.

#include <atomic>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <tuple>

#include <SmartBuffer.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/AsUser.h"
#include "support/FileSizeLimit.h"
#include "support/RuleFile.h"
#include "support/SlowFile.h"
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
    // "+" adds a section, ">" and "<" move, "-" deletes, everything else sets an entry.
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

TEST(MultiSectionFileTest, AgreesWithASlowFile) {
    char const* const outside[] = {"", "", "#c\n", "\n#\r\n"};
    char const* const open[] = {"{\n", "{\n", " {\t\r\n"};
    char const* const inside[] = {"", "a=1\n", "\tb=\r\n", "#a=0\n", "\na=2\n", "ab==\n"};
    char const* const close[] = {"}\n", "\t}\r\n"};
    std::mt19937 random(1); // NOLINT(bugprone-random-generator-seed): the same each time.
    auto const one = [&random](auto const& choices) {
        return std::string(choices[random() % std::size(choices)]);
    };
    TempDir dir;
    for (int round = 0; round < 100; ++round) {
        std::string text = one(outside);
        for (std::size_t sections = random() % 4; sections > 0; --sections)
            text += one(open) + one(inside) + one(inside) + one(close) + one(outside);
        if (random() % 3 == 0)
            text = text.substr(0, text.find_last_not_of('\n') + 1);
        dir.Write("rules", text);
        RuleFile file(dir.Path("rules"));
        SlowFile slow(text);
        std::string done;
        for (std::size_t steps = random() % 60; steps > 0; --steps) {
            char const step = ">>>><<.+-abc"[random() % 12];
            done += step;
            std::string const key(1, step);
            int isDone = 1;
            switch (step) {
            case '>': ASSERT_EQ(file.GotoNextSection() != 0, slow.Next()); break;
            case '<': ASSERT_EQ(file.GotoPreviousSection() != 0, slow.Previous()); break;
            case '.': file.Restart(), slow.Restart(); break;
            case '+': isDone = file.AddSection(false), slow.Add(); break;
            default:
                if (!slow.IsOnSection())
                    EXPECT_ANY_THROW(step == '-' ? file.DeleteSection()
                                                 : file.SetSectionEntry(key.c_str(), ""));
                else if (step == '-')
                    isDone = file.DeleteSection(), slow.Delete();
                else
                    isDone = file.SetSectionEntry(key.c_str(), done.c_str()), slow.Set(key, done);
            }
            ASSERT_EQ(isDone, 1);
            ASSERT_EQ(slow.IsOnSection() ? file.Value("a") : "",
                      slow.IsOnSection() ? slow.Value("a") : "")
                << text << "\n"
                << done;
        }
        ASSERT_EQ(file.Save(true, nullptr), 1);
        ASSERT_EQ(dir.Read("rules"), slow.Text()) << text << "\n" << done;
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
        {"\xEF\xBB\xBF# a\n", ":1: found a byte order mark (BOM)"},
        {"\xFF\xFE{\0\n\0"s, ":1: found the byte order mark (BOM) of UTF-16"},
        {"\xFE\xFF\0{"s, ":1: found the byte order mark (BOM) of UTF-16"},
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

TEST(MultiSectionFileTest, OpensOnlyWhatCanBecomeARuleFile) {
    TempDir dir;
    EXPECT_EQ(RuleFile(dir.Path("missing")).GotoNextSection(), 0);
    ASSERT_EQ(mkfifo(dir.Path("pipe").c_str(), 0600), 0);
    dir.Write("file", "");
    std::filesystem::create_symlink("loop", dir.Path("loop"));
    std::filesystem::create_symlink("missing/rules", dir.Path("astray"));
    for (char const* const name : {"", "pipe", "missing/rules", "file/rules", "loop", "astray"})
        EXPECT_EQ(Refusal(dir.Path(name)).find(dir.Path(name) + ": "), 0u);
}

TEST(MultiSectionFileTest, AFileThatCannotBeReadIsNotTakenForAnEmptyOne) {
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root";
    TempDir dir;
    chmod(dir.Path().c_str(), 0755);
    dir.Write("d/rules", kTwo);
    for (auto const& [file, directory, reason] :
         {std::tuple{0600, 0755, ": cannot be opened: Permission denied"},
          {0644, 0700, ": cannot be opened: Permission denied"},
          {0644, 0755, ""}}) {
        Give(dir.Path("d/rules"), static_cast<mode_t>(file), 0, 0);
        chmod(dir.Path("d").c_str(), static_cast<mode_t>(directory));
        std::string const expected = *reason == 0 ? "" : dir.Path("d/rules") + reason;
        EXPECT_EQ(AsUser(1, {1}, [&] { return Refusal(dir.Path("d/rules")); }), expected);
    }
}

TEST(MultiSectionFileTest, RefusesEntriesThatCannotBeReadBack) {
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

TEST(MultiSectionFileTest, CountsLinesAsTheFileWasRead) {
    TempDir dir;
    dir.Write("rules", "#\n{\nk=1\n}\n{\n\n#\nk=1\nj=2\n}\n");
    RuleFile file(dir.Path("rules"));
    char area[1];
    file.GotoNextSection();
    file.SetSectionEntry("j", "3");
    file.GotoNextSection();
    EXPECT_EQ(file.GetSectionLine(), 5u);
    auto const lines = file.GetEntryLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[1], std::pair("j"s, std::size_t{9}));
    for (std::string const place : {":9: ", ": "}) {
        try {
            file.GetSectionEntry("j", area, sizeof area);
            ADD_FAILURE();
        } catch (std::exception const& error) {
            EXPECT_EQ(error.what(),
                      dir.Path("rules") + place +
                          "the value of \"j\" has 1 characters, expected less than 1");
        }
        file.AddSection(false);
        file.SetSectionEntry("j", "4");
        EXPECT_EQ(file.GetSectionLine(), 0u);
    }
}

/// Adds a section and saves. Returns why that failed; empty when it did not.
std::string SaveError(RuleFile& file) {
    try {
        file.AddSection(false);
        file.Save(true, nullptr);
    } catch (std::exception const& error) {
        return error.what();
    }
    return "";
}

TEST(Save, ReplacesOnlyTheFileThatWasRead) {
    TempDir dir;
    std::string const path = dir.Path("d/rules");
    std::function<void()> const others[] = {
        [&] { dir.Write("d/rules", kTwo + kTwo); },
        [&] { std::filesystem::resize_file(path, 0); },
        [&] { std::filesystem::remove(path); },
        [&] {
            std::filesystem::copy_file(path, path + "2", std::filesystem::copy_options::none);
            std::filesystem::rename(path + "2", path);
        },
        [&] { std::filesystem::last_write_time(path, std::filesystem::file_time_type::min()); },
    };
    for (bool const isThere : {true, false}) {
        for (auto const& other : others) {
            dir.Write("d/rules", kTwo);
            isThere || std::filesystem::remove(path);
            RuleFile file(path);
            isThere ? other() : dir.Write("d/rules", kTwo);
            std::string const text = std::filesystem::exists(path) ? dir.Read("d/rules") : "none";
            EXPECT_EQ(SaveError(file),
                      path +
                          ": was changed by somebody else after it was read; nothing is written");
            EXPECT_EQ(std::filesystem::exists(path) ? dir.Read("d/rules") : "none", text);
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path("d")), {}),
                      text == "none" ? 0 : 1);
        }
    }
    RuleFile file(path); // Its own save is not a change by somebody else.
    EXPECT_EQ(SaveError(file) + SaveError(file), "");
    EXPECT_EQ(dir.Read("d/rules"), kTwo + "{\n}\n{\n}\n");
}

TEST(Save, LosesNothingAmongWritersWithoutALock) {
    TempDir dir;
    dir.Write("rules", "");
    std::atomic<std::size_t> saved{0};
    std::atomic<std::size_t> failed{0};
    auto const write = [&] {
        while (saved < 30) {
            RuleFile file(dir.Path("rules"));
            ++(SaveError(file).empty() ? saved : failed);
        }
    };
    std::thread other(write);
    write();
    other.join();
    EXPECT_EQ(dir.Read("rules").size(), 4 * saved) << failed << " failed";
}

TEST(Save, RemovesLeftoversOfDeadProcessesAndNothingElse) {
    TempDir dir;
    dir.Write("rules", kTwo);
    char const* const others[] = {"rules.1.tmp",    "rules.1.2.tmp2",  "rules.1.x.tmp",
                                  "rules..2.tmp",   "rules.1.2.3.tmp", "rules1.2.tmp",
                                  "arules.1.2.tmp", "rules.tmp"};
    for (char const* const name : others)
        dir.Write(name, "");
    for (char const* const name : {"rules.1.2.tmp", "rules.4321.0.tmp", "rules.1.3.tmp"})
        dir.Write(name, "");
    std::filesystem::create_symlink("rules.tmp", dir.Path("rules.1.4.tmp"));
    std::filesystem::create_directory(dir.Path("rules.1.5.tmp"));
    EXPECT_EQ(mkfifo(dir.Path("rules.1.6.tmp").c_str(), 0600), 0);
    int const living = open(dir.Path("rules.1.3.tmp").c_str(), O_RDONLY);
    EXPECT_EQ(flock(living, LOCK_EX), 0);
    for (bool const isAlive : {true, false}) {
        RuleFile file(dir.Path("rules"));
        EXPECT_EQ(SaveError(file), "");
        EXPECT_EQ(std::filesystem::exists(dir.Path("rules.1.3.tmp")), isAlive);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}),
                  1 + 8 + 3 + (isAlive ? 1 : 0));
        close(living);
    }
    // A lock that somebody holds on the directory does not stop a save.
    int const held = open(dir.Path().c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(flock(held, LOCK_EX), 0);
    RuleFile file(dir.Path("rules"));
    EXPECT_EQ(SaveError(file), "");
    close(held);
}

TEST(Save, WritesToNoFileThatIsThereAlready) {
    TempDir dir;
    dir.Write("rules", kTwo);
    dir.Write("victim", "keep");
    std::string const prefix = dir.Path("rules.") + std::to_string(getpid()) + ".";
    for (int number = 0; number < 900; ++number)
        std::filesystem::create_symlink("victim", prefix + std::to_string(number) + ".tmp");
    RuleFile file(dir.Path("rules"));
    EXPECT_EQ(SaveError(file), "");
    EXPECT_EQ(dir.Read("rules"), kTwo + "{\n}\n");
    EXPECT_EQ(dir.Read("victim"), "keep");
}

TEST(Save, RefusesTooLargeFiles) {
    TempDir dir;
    constexpr std::size_t kMost = std::size_t{64} * 1024 * 1024;
    dir.Write("rules", std::string(kMost, '#'));
    {
        RuleFile file(dir.Path("rules"));
        EXPECT_EQ(SaveError(file), dir.Path("rules") + ": has 67108869 bytes, expected at most " +
                                       "67108864: File too large");
    }
    std::filesystem::resize_file(dir.Path("rules"), kMost + 1);
    EXPECT_EQ(Refusal(dir.Path("rules")), dir.Path("rules") + ": has 67108865 bytes, expected at " +
                                              "most 67108864: File too large");
}

TEST(Save, AFileSizeLimitIsAnErrorAndNoSignal) {
    TempDir dir;
    dir.Write("rules", kTwo);
    {
        FileSizeLimit const limit(10);
        RuleFile file(dir.Path("rules"));
        EXPECT_EQ(SaveError(file),
                  dir.Path("rules") + ": its temporary file cannot be written: File too large");
    }
    EXPECT_EQ(dir.Read("rules"), kTwo);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path()), {}), 1);
}

TEST(Save, KeepsTheOwnerOrElseTheGroupAndTheMode) {
    if (geteuid() != 0)
        GTEST_SKIP() << "takes root";
    TempDir dir;
    std::string const path = dir.Path("d/rules");
    std::string const refused = path + ": cannot be written: Permission denied";
    std::string const noGroup = path + ": its group cannot be kept: Operation not permitted";
    struct {
        mode_t mode;
        uid_t owner, user;
        std::vector<gid_t> groups;
        std::string failure, after;
    } const rows[] = {
        {0640, 1, 0, {0}, "", "1:7 640"},      {0664, 1, 2, {2, 7}, "", "2:7 664"},
        {0664, 2, 1, {1, 7}, "", "1:7 664"},   {0664, 1, 1, {7}, "", "1:7 664"},
        {0400, 1, 1, {1, 7}, "", "1:7 400"},   {0644, 1, 2, {2, 7}, refused, "1:7 644"},
        {0664, 1, 2, {2}, refused, "1:7 664"}, {0666, 1, 2, {2}, noGroup, "1:7 666"},
        {0640, 1, 1, {1}, noGroup, "1:7 640"},
    };
    for (auto const& row : rows) {
        dir.Write("d/rules", kTwo);
        Give(path, row.mode, row.owner, 7);
        chmod(dir.Path().c_str(), 0755);
        chmod(dir.Path("d").c_str(), 0777);
        std::string const failure = AsUser(row.user, row.groups, [&] {
            RuleFile file(path);
            return SaveError(file);
        });
        EXPECT_EQ(failure, row.failure) << row.after;
        EXPECT_EQ(OwnerAndMode(path), row.after);
        EXPECT_EQ(dir.Read("d/rules"), row.failure.empty() ? kTwo + "{\n}\n" : kTwo);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.Path("d")), {}), 1);
    }
}

// As container platforms mount configuration: they exchange the folder, and with it the files.
TEST(Save, RefusesAFileInAFolderThatIsExchanged) {
    TempDir dir;
    dir.Write("v1/rules", kTwo);
    std::filesystem::create_directory_symlink("v1", dir.Path("..data"));
    struct {
        std::string name, target;
        bool isRefused;
    } const rows[] = {{"rules", "..data/rules", true},
                      {"outer", "rules", true},
                      {"absolute", dir.Path("..data/rules"), false},
                      {"plain", "v1/rules", false},
                      {"parent",
                       "../" + std::filesystem::path(dir.Path()).filename().string() + "/v1/rules",
                       false}};
    for (auto const& row : rows) {
        std::filesystem::create_symlink(row.target, dir.Path(row.name));
        RuleFile file(dir.Path(row.name));
        std::string const before = dir.Read("v1/rules");
        EXPECT_EQ(SaveError(file),
                  row.isRefused ? dir.Path(row.name) + ": is a link into " + dir.Path("..data") +
                                      ", which is a link too: pointing that to another folder "
                                      "would undo the edit; nothing is written"
                                : "")
            << row.name;
        EXPECT_EQ(dir.Read("v1/rules"), row.isRefused ? before : before + "{\n}\n");
    }
    dir.Write("v1/folder/rules", kTwo);
    std::filesystem::create_directory_symlink("..data/folder", dir.Path("folder"));
    RuleFile file(dir.Path("folder/rules"));
    EXPECT_NE(SaveError(file).find("which is a link too"), std::string::npos);
    EXPECT_EQ(dir.Read("v1/folder/rules"), kTwo);
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

} // namespace
