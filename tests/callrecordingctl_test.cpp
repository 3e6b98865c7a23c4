// The configuration client as a process: its commands, its exit codes, what it prints where.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>

#include <nlohmann/json.hpp>

#include "support/Process.h"
#include "support/TempDir.h"

namespace {

using Words = std::vector<std::string>;

/// One command and parts of what it must print; an empty part stands for no output at all.
struct Row {
    Words words;
    int code;
    std::string out;
    std::string err;
};

class Client : public testing::Test {
  protected:
    /// The line that runs the client with its directory.
    std::string ClientLine(Words words) const {
        words.insert(words.begin(), CALLRECORDINGCTL_PATH);
        words.insert(words.end(), {"--config-dir", dir.Path()});
        return Line(words);
    }
    Outcome Run(Words const& words) const { return RunShell(ClientLine(words)); }
    nlohmann::json Json(Words words) const {
        words.push_back("--json");
        return nlohmann::json::parse(Run(words).out);
    }
    void Expect(Row const& row) const {
        auto const has = [](std::string const& text, std::string const& part) {
            return part.empty() ? text.empty() : text.find(part) != std::string::npos;
        };
        Outcome const outcome = Run(row.words);
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_TRUE(has(outcome.out, row.out)) << row.out << " is not in\n" << outcome.out;
        EXPECT_TRUE(has(outcome.err, row.err)) << row.err << " is not in\n" << outcome.err;
    }

    TempDir dir;
};

TEST_F(Client, SetsUpExplainsAndReordersRules) {
    Row const rows[] = {
        {{"list"}, 0, "", "there are no rules yet"},
        {{"add", "--from", "{200-299}", "--dry-run"}, 0, "rule 0 added at position 1 of 1", ""},
        {{"add", "--from", "{200-299}", "--to", "{200-299}"},
         0,
         "rule 0 added",
         "made this directory"},
        {{"add", "--to", "00{10-99,!41}*", "--description", "abroad"}, 0, "rule 1 added", ""},
        {{"add", "--from", "alice@pbx:506[0,1]", "--duration", "60"}, 0, "from sip alice@pbx", ""},
        {{"add", "--from", "450", "--twin"}, 0, "rule 4 added at position 5 of 5", ""},
        {{"add", "--disabled", "--at", "1"}, 0, "rule 4 is now rule 5, at position 6 of 6", ""},
        {{"show", "0"}, 0, "STATE         off\nFROM          any *\n", ""},
        {{"decide", "--from", "213", "--to", "0041"}, 1, "not recorded", ""},
        {{"decide", "--from", "213", "--to", "0041", "--explain"},
         1,
         "1  0   disabled; it would match if it were enabled\n"
         "2  1   to does not match number {200-299}\n"
         "3  2   to does not match number 00{10-99,!41}*\n"
         "4  3   from is of type number, not sip\n",
         ""},
        {{"decide", "--from", "alice@pbx:5061", "--to", "1"}, 0, "rule 3 (position 4): ", ""},
        {{"decide", "--from", "450", "--to", "0033"}, 0, "rule 2 (position 3)", ""},
        {{"down", "2", "2", "--dry-run"}, 0, "dry run: rule 2 is now rule 4", ""},
        {{"up", "4", "2"}, 0, "rule 4 is now rule 2, at position 3 of 6\nrule 2 is now rule 3", ""},
        {{"decide", "--from", "450", "--to", "0033"}, 0, "rule 2 (position 3)", ""},
        {{"up", "0"}, 1, "", "rule 0 is the first already"},
        {{"down", "0", "99"}, 0, "rule 0 is now rule 5, at position 6 of 6", ""},
        {{"enable", "5"}, 0, "rule 5 is now on", ""},
        {{"disable", "5"}, 0, "rule 5 is now off", ""},
        {{"modify", "1", "--from", "451", "--twin"},
         0,
         "\nrule 4 changed: from any * to number 451",
         ""},
        {{"modify", "0", "--twin", "--duration", "9"}, 5, "", "no rule mirrors rule 0"},
        {{"modify", "0", "--description", ""}, 0, "rule 0 is as it was", ""},
        {{"check"}, 0, "6 rules, nothing found", ""},
        {{"delete", "4", "--twin"}, 0, "rule 1 deleted", ""},
        {{"delete", "0"}, 0, "rule 0 deleted", ""},
        {{"list"}, 0, "2  3   on     sip alice@pbx:506[0,1]  any *", ""},
        {{"list", "--basic"}, 0, "adv", "leaves out"},
    };
    int line = 0;
    for (Row const& row : rows) {
        SCOPED_TRACE("row " + std::to_string(++line) + ", " + row.words.front());
        Expect(row);
        EXPECT_EQ(std::filesystem::exists(dir.Path("telephony")), line > 2);
    }
}

constexpr char FAULTY_RULES[] = "{\ncallrecordingrule_id=1\ncaller_pattern=*\ncaller_call_type=3\n"
                                "called_pattern=<5-1>\ncalled_call_type=7\ncall_recording_type=0\n"
                                "recording_rule_state=1\n}\n{\ncallrecordingrule_id=1\n"
                                "caller_pattern =1\ncaller_call_type=0\ncalled_pattern={1-5}\n"
                                "called_call_type=0\ncall_recording_type=0\n"
                                "recording_rule_state=1\n}\n";

TEST_F(Client, ExitsWithItsCodesAndNamesTheCulprit) {
    dir.WriteRules(FAULTY_RULES);
    std::string const path = dir.Path(TempDir::RULE_FILE);
    Row const rows[] = {
        {{"check", "[1,2]", "\\*7", "--type", "any"}, 0, "[1,2]\n#7\n", "is stored as a code"},
        {{"check", "1", "[1-5,3]"}, 1, "1\n    [1-5,3]\n         ^\n    \"3\" is given twice", ""},
        {{"check", "a@b", "--type", "sip", "--", "-1@c"}, 1, "a@b\n    -1@c\n    ^\n", ""},
        {{"check", "--typ", "sip"}, 2, "", "--typ"},
        {{"check"}, 1, path + ":5: rule 1: to: malformed pattern: ", ""},
        {{"check"}, 1, "\n    {5-1}\n     ^\n", ""},
        {{"check"}, 1, path + ":6: rule 1: called_call_type is \"7\", expected 0 to 3", ""},
        {{"check"}, 1, path + ":11: rule 1: the identifier 1 is that of the rule on line 2", ""},
        {{"check"}, 1, path + ":12: rule 1: \"caller_pattern \" is not read", ""},
        {{"check"}, 1, path + ":10: rule 1: from: an empty pattern never matches", ""},
        {{"list"}, 0, "any {5-1} (malformed)", ""},
        {{"list"}, 0, "number {1-5} (malformed)", ""},
        {{"add", "--from", "[1-"}, 1, "", "--from: malformed pattern of call type number: "},
        {{"add", "--to", ""}, 1, "", "--to: an empty pattern never matches"},
        {{"add", "--to-type", "fax"}, 2, "", "--to-type: \"fax\" is no call type"},
        {{"add", "--at", "9"}, 2, "", "--at 9: there are only 2 rules"},
        {{"add", "--description", "a\nb"}, 4, "", "--description: a line break"},
        {{"add", "--record-to", std::string(65536, 'x')}, 4, "", "--record-to: 65536 characters"},
        {{"modify", "1"}, 2, "", "no field"},
        {{"delete", "1"}, 5, "", "more than one rule 1"},
        {{"delete", "7"}, 5, "", "no rule 7"},
        {{"delete", "x"}, 2, "", "ID: \"x\" is no number"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.words.front() + ": " + row.out + row.err);
        Expect(row);
    }
    EXPECT_EQ(dir.ReadRules(), FAULTY_RULES);
}

TEST_F(Client, FindsRulesThatCanNeverDecide) {
    struct Cover {
        Words earlier, later;
        bool covers;
    } const rows[] = {
        {{}, {"--from", "a@b"}, true},
        {{"--from", "1"}, {"--from", "1", "--to", "2"}, true},
        {{"--from", "1", "--from-type", "any"}, {"--from", "1"}, true},
        {{"--from", "1"}, {"--from", "1", "--from-type", "any"}, false},
        {{"--from", "1", "--from-type", "any"}, {"--from", "1@b"}, false},
        {{"--from-type", "sip"}, {"--from", "a@b:5060"}, true},
        {{"--from", "a@b"}, {"--from", "a@b:*"}, true},
        {{"--from", "a@b:5060"}, {"--from", "a@b"}, false},
        {{"--from-type", "number", "--from", "*"}, {"--from", "1", "--from-type", "2"}, false},
        {{"--disabled"}, {"--from", "1"}, false},
        {{}, {"--from", "1", "--disabled"}, false},
    };
    for (auto [earlier, later, covers] : rows) {
        dir.WriteRules("");
        earlier.insert(earlier.begin(), "add");
        later.insert(later.begin(), "add");
        Run(earlier);
        Run(later);
        Outcome const outcome = Run({"check"});
        EXPECT_EQ(outcome.code, covers ? 1 : 0) << later[2] << "\n" << outcome.out;
    }
}

TEST_F(Client, FailsWhereTheFileCannotBeReadOrSaved) {
    EXPECT_EQ(RunShell(Line({CALLRECORDINGCTL_PATH, "list", "--config-dir", "/no/such"})).code, 3);
    dir.WriteRules("{\n}\njunk\n");
    for (char const* const command : {"list", "check", "add"})
        Expect({{command}, 3, "", "callrecordingdb:3: found \"junk\""});
    dir.WriteRules("# none\n");
    int const lock = open(dir.Path("telephony/callrecordingdb.lock").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    EXPECT_EQ(Run({"add", "--wait", "0"}).code, 4);
    close(lock);
    std::string const add = ClientLine({"add"}) + ">/dev/null 2>&1";
    EXPECT_EQ(RunShell("trap '' XFSZ; ulimit -f 0; " + add).code, 4);
    EXPECT_EQ(dir.ReadRules(), "# none\n");
}

TEST_F(Client, KeepsAPatternOnItsWayToTheFileAndBack) {
    EXPECT_EQ(Run({"add", "--from", "a{01-20}\\,@gw[1,2]:50\\-60", "--to", "\\*{7-9,!8}", "--json",
                   "--description", "\xFFnot UTF-8", "--duration", "", "--recording-type", "1"})
                  .code,
              0);
    std::string const file = dir.ReadRules();
    EXPECT_NE(file.find("caller_pattern=a<01-20>@@gw[1,2]:50%60\n"), std::string::npos) << file;
    EXPECT_NE(file.find("called_pattern=#<7-9,!8>\n"), std::string::npos) << file;
    EXPECT_NE(file.find("description=\xFFnot UTF-8\n"), std::string::npos) << file;
    nlohmann::json const rule = Json({"list"}).at(0);
    EXPECT_EQ(rule.at("caller_pattern_entry"), "a{01-20}\\,@gw[1,2]:50\\-60");
    EXPECT_EQ(rule.at("called_pattern"), "#<7-9,!8>");
    EXPECT_EQ(rule.at("called_pattern_entry"), "\\*{7-9,!8}");
    EXPECT_EQ(rule.at("caller_call_type_name"), "sip");
    EXPECT_EQ(rule.at("call_recording_type"), 1);
    EXPECT_EQ(Json({"show", "0"}), rule);
    EXPECT_EQ(Json({"disable", "0"}).at(0).at("after").at("recording_rule_state"), 1);
    nlohmann::json const decision = Json({"decide", "--from", "1", "--to", "2", "--explain"});
    EXPECT_EQ(decision.at("recorded"), false);
    EXPECT_EQ(decision.at("rules").at(0).at("decides"), false);
    EXPECT_EQ(Json({"check", "5"}).at(0).at("stored"), "5");
    EXPECT_EQ(Json({"check"}), nlohmann::json::array());
}

TEST_F(Client, FitsTheWidthAndEndsQuietlyWithItsReader) {
    dir.WriteRules("");
    for (char const* user : {"a", "b"})
        Run({"add", "--from",
             user + std::string("{1-20,!7}@a.very.long.host.name.example.com:5060"), "--record-to",
             "archive:/somewhere/far/away", "--description", "words to wrap around"});
    setenv("COLUMNS", "80", 1);
    std::istringstream lines(Run({"list"}).out);
    unsetenv("COLUMNS");
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 80U) << line;
    EXPECT_EQ(RunShell("(sleep 0.1; " + ClientLine({"list"}) + ") | :").err, "");
}

TEST_F(Client, AddsInParallelUnderIdentifiersOfTheirOwn) {
    Run({"add"});
    auto const addMany = [this] {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(Run({"add"}).code, 0);
    };
    std::thread other(addMany);
    addMany();
    other.join();
    std::set<int> ids;
    for (auto const& rule : Json({"list"}))
        ids.insert(rule.at("callrecordingrule_id").get<int>());
    EXPECT_EQ(ids.size(), 201U);
}

} // namespace
