// The configuration client: the two forms of a pattern, then the process with its commands, exit
// codes and what it prints where.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <regex>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include "support/TempDir.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {

using namespace CallRecordingUtils;
namespace {

TEST(EntryForm, IsStoredAndShownAgain) {
    struct {
        CallType type;
        char const *entry, *stored;
    } const rows[] = {
        {CALL_TYPE_NUMBER, "", ""},
        {CALL_TYPE_NUMBER, "00{49-59,!50}[0,5]?*", "00<49-59,!50>[0,5]?*"},
        {CALL_TYPE_NUMBER2, "\\*\\?\\,\\-\\!", "#^@%:"},
        {CALL_TYPE_ANY, "[1-3,\\*]{a\\,b}", "[1-3,#]<a@b>"},
        {CALL_TYPE_SIP, "*@*", "*@*"},
        {CALL_TYPE_SIP, "@pbx", "@pbx"},
        {CALL_TYPE_SIP, "alice@pbx:", "alice@pbx:"},
        {CALL_TYPE_SIP, "a{01-20}@gw[1,2].x:506{0-1}", "a<01-20>@gw[1,2].x:506<0-1>"},
        {CALL_TYPE_SIP, "a\\,b@h\\-x:50\\,60", "a@b@h%x:50@60"},
        {CALL_TYPE_SIP, "a\\!b@h\\!x:*", "a:b@h:x:*"},
    };
    for (auto const& row : rows) {
        StoredPattern const converted = ToStored(row.entry, row.type);
        EXPECT_FALSE(converted.problem) << row.entry << ": " << converted.problem->message;
        EXPECT_EQ(converted.stored, row.stored) << row.entry;
        EXPECT_EQ(ToEntry(row.stored, row.type), row.entry);
        EXPECT_FALSE(ExplainStored(row.stored, row.type)) << row.stored;
    }
}

TEST(EntryForm, SaysWhatIsWrongAndWhere) {
    struct {
        CallType type;
        char const* pattern;
        std::size_t position;
        char const* message; // A part of it.
        bool isStored;
    } const rows[] = {
        {CALL_TYPE_NUMBER, "12-3", 2, "\"-\"", false},
        {CALL_TYPE_NUMBER, "a@b", 1, "sip", false},
        {CALL_TYPE_SIP, "alice", 5, "user@host", false},
        {CALL_TYPE_SIP, "alice:5060", 10, "user@host", false},
        {CALL_TYPE_SIP, "sip:alice@pbx", 3, "leave out \"sip:\"", false},
        {CALL_TYPE_SIP, "sip:alice@pbx:5060", 3, "\":\"", false},
        {CALL_TYPE_SIP, "alice@[::1]:5060", 7, "IPv6", false},
        {CALL_TYPE_SIP, "a@b@c", 1, "only between user and host", false},
        {CALL_TYPE_SIP, "alice@p-x", 7, "\"-\"", false},
        {CALL_TYPE_SIP, "alice@pbx:5-6", 11, "\"-\"", false},
        {CALL_TYPE_SIP, "a@h\\,x", 3, "would end the user part", false},
        {CALL_TYPE_SIP, "a\\!b@h", 1, "add the port", false},
        {CALL_TYPE_SIP, "a@b\\!h", 3, "add the port", false},
        {CALL_TYPE_SIP, "a@h:1\\!2", 5, "begin the port", false},
        // What a hand wrote into the file.
        {CALL_TYPE_NUMBER, "1{2-3}", 1, "between < and >", true},
        {CALL_TYPE_SIP, "\\*1@pbx", 0, "no \"\\\"", true},
        {CALL_TYPE_SIP, "sip:a@b", 3, "leave out", true},
        {CALL_TYPE_NUMBER, "5-1", 1, "\"-\"", true},
    };
    for (auto const& [type, pattern, position, message, isStored] : rows) {
        auto const problem =
            isStored ? ExplainStored(pattern, type) : ToStored(pattern, type).problem;
        ASSERT_TRUE(problem) << pattern;
        EXPECT_EQ(problem->position, position) << pattern;
        EXPECT_NE(problem->message.find(message), std::string::npos)
            << pattern << ": " << problem->message;
        EXPECT_TRUE(!isStored || ToEntry(pattern, type) == pattern); // It is shown as it is.
    }
}

/// One command, its exit code (-1 when it ended in another way) and what it prints. Of a row the
/// texts are parts, and an empty one stands for no output at all but the notes that every list and
/// every saved edit print.
struct Row {
    std::string command;
    int code;
    std::string out, err;
};

class Client : public testing::Test {
  protected:
    /// Runs the client by a shell that takes no "*" or "[" for its own, in its directory; before
    /// and after are more of the shell's line. May be called by several threads at once.
    Row Run(std::string const& command, std::string const& before = "",
            std::string const& after = "") const {
        TempDir const files;
        std::string const line = "set -f; " + before + CALLRECORDINGCTL_PATH + " " + command +
                                 " --config-dir " + dir.Path() + after;
        int const status = std::system(
            ("{ " + line + "; } >" + files.Path("out") + " 2>" + files.Path("err")).c_str());
        return {line, WIFEXITED(status) ? WEXITSTATUS(status) : -1, files.Read("out"),
                files.Read("err")};
    }
    nlohmann::json Json(std::string const& command) const {
        return nlohmann::json::parse(Run(command + " --json").out);
    }
    void Expect(Row const& row) const {
        static std::regex const notes("callrecordingctl: (note: telephony|the file is in).*\n");
        auto const has = [](std::string const& text, std::string const& part) {
            return part.empty() ? std::regex_replace(text, notes, "").empty()
                                : text.find(part) != std::string::npos;
        };
        Row const outcome = Run(row.command);
        EXPECT_EQ(outcome.code, row.code) << row.command;
        EXPECT_TRUE(has(outcome.out, row.out)) << row.command << "\n" << outcome.out;
        EXPECT_TRUE(has(outcome.err, row.err)) << row.command << "\n" << outcome.err;
    }

    TempDir dir;
};

// Every pair of five rules to every place, against the same done to a list of texts.
TEST_F(Client, MovesRulesAsAListWould) {
    for (int pair = 0; pair < 25; ++pair) {
        int const first = pair / 5, second = pair % 5;
        for (int place = 0; first < second && place < 4; ++place) {
            std::string text, wanted;
            for (char const name : std::string("ABCDE"))
                text += "{\ncallrecordingrule_id=" + std::to_string(name - 'A') +
                        "\ndescription=" + name + "\n}\n";
            for (int i = 0; i < 5; ++i)
                if (i != first && i != second)
                    wanted += static_cast<char>('A' + i);
            wanted.insert(static_cast<std::size_t>(place),
                          {static_cast<char>('A' + first), static_cast<char>('A' + second)});
            dir.WriteRules(text);
            Run("move " + std::to_string(second) + " '#" + std::to_string(first + 1) + "' --to " +
                std::to_string(place + 1));
            std::string got;
            for (auto const& rule : Json("list"))
                got += rule.at("description").get<std::string>();
            EXPECT_EQ(got, wanted) << first << second << " to " << place;
        }
    }
}

TEST_F(Client, OutlivesAHistoryThatCannotBeWrittenAndOneThatAKillLeft) {
    std::mt19937 random(1); // NOLINT(cert-msc32-c,cert-msc51-cpp)
    auto const description = [&random] {
        std::string text(20000, ' ');
        for (char& c : text)
            c = "0123456789abcdef"[random() % 16];
        return text;
    };
    dir.WriteRules("");
    Run("add --from 1");
    for (int i = 0; i < 4; ++i)
        Run("modify 0 --description " + description());
    auto const size = std::filesystem::file_size(dir.Path("telephony/callrecordingdb.history"));
    std::string const limit = "trap '' XFSZ; ulimit -f " + std::to_string(size / 512) + "; ";
    Row const full = Run("modify 0 --description " + description(), limit);
    EXPECT_EQ(full.code, 0) << full.err; // It was saved, and the history had no room for it.
    EXPECT_NE(full.err.find("missing in the history"), std::string::npos) << full.err;
    Run("add --from 3");
    EXPECT_EQ(Json("log").size(), 7U); // Put right by this one.
    dir.WriteRules("#" + std::string(1 << 20, ' ') + "\n" + dir.ReadRules());
    EXPECT_EQ(Run("add --from 2", "trap '' XFSZ; ulimit -f 1000; ").code, 4);
    EXPECT_EQ(Json("log").size(), 8U); // The edit by hand, and not the one that failed.
    dir.Write("telephony/callrecordingdb.history", "no database");
    Expect({"add --from 2", 0, "rule 2 added", "missing in the history"});
    Expect({"log", 3, "", "callrecordingdb.history: file is not a database"});
}

TEST_F(Client, FailsWhereTheFileCannotBeReadOrSaved) {
    EXPECT_EQ(Run("list", "", "/none").code, 3);
    dir.WriteRules("{\n}\njunk\n");
    for (char const* const command : {"list", "check", "add --everyone"})
        Expect({command, 3, "", "callrecordingdb:3: found \"junk\""});
    dir.WriteRules("# none\n");
    int const lock = open(dir.Path("telephony/callrecordingdb.lock").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_EQ(Run("add --everyone --wait 0").code, 4);
    std::thread other([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        dir.WriteRules("# none\n{\ncallrecordingrule_id=7\n}\n");
        close(lock);
    });
    // It reads the file when it has the lock, and on a slow machine says that it waits.
    EXPECT_NE(Run("add --everyone").out.find("rule 8 added"), std::string::npos);
    other.join();
    dir.WriteRules("# none\n");
    EXPECT_EQ(Run("add --everyone", "trap '' XFSZ; ulimit -f 0; ", " >/dev/null 2>&1").code, 4);
    EXPECT_EQ(dir.ReadRules(), "# none\n");
}

} // namespace
} // namespace callrecordingctl
