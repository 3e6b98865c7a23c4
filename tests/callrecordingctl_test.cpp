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
        {CALL_TYPE_SIP, "a@b@c", 1, "only be between user and host", false},
        {CALL_TYPE_SIP, "alice@p-x", 7, "\"-\"", false},
        {CALL_TYPE_SIP, "alice@pbx:5-6", 11, "\"-\"", false},
        {CALL_TYPE_SIP, "a@h\\,x", 3, "would end the user part", false},
        {CALL_TYPE_SIP, "a\\!b@h", 1, "add a port", false},
        {CALL_TYPE_SIP, "a@b\\!h", 3, "add a port", false},
        {CALL_TYPE_SIP, "a@h:1\\!2", 5, "begin the port", false},
        // What a hand wrote into the file.
        {CALL_TYPE_NUMBER, "1{2-3}", 1, "between < and >", true},
        {CALL_TYPE_SIP, "\\*1@pbx", 0, "not with \"\\\"", true},
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

TEST_F(Client, SetsUpExplainsAndReordersRules) {
    Row const rows[] = {
        {"list", 3, "", "telephony: no such directory"},
        {"add --from {200-299} --dry-run", 0, "rule 0 added at position 1 of 1", ""},
        {"add --from {200-299} --to {200-299}", 0, "rule 0 added", "made this directory"},
        {"add --to 00{10-99,!41}* --description abroad", 0, "rule 1 \"abroad\" added", ""},
        {"add", 2, "", "would record every call"},
        {"modify 0 --from * --from-type any --to * --to-type any", 2, "", "--everyone"},
        {"add --from alice@pbx:506[0,1] --duration 60", 0, "from sip alice@pbx", ""},
        {"add --from 450 --twin", 0, "rule 4 added at position 5 of 5", ""},
        {"add --disabled --everyone --at 1 -v", 0, "rule 4 is now rule 5, at position 6 of 6", ""},
        {"show 0", 0, "STATE         off\nFROM          any *\n", ""},
        {"show 3", 0, "FOR           60\n", ""},
        {"decide --from 213 --to 0041", 1, "not recorded", ""},
        {"decide --from 213 --to 0041 --explain", 1,
         "1  0   disabled; it would match if it were enabled\n"
         "3  2   to does not match number 00{10-99,!41}*: character 3: \"41\" does not begin with "
         "a "
         "run of {10-99,!41}\n"
         "2  1   to does not match number {200-299}: character 1: \"0041\" does not begin with a "
         "run "
         "of {200-299}\n"
         "4  3   from is of type number, not sip\n",
         ""},
        {"decide --from 213 --to 0041 --explain", 1, "and 1 more, which --all shows", ""},
        {"decide --from 45 --to 1 --explain --all", 1,
         "5  4   from does not match number 450: ends where 0 is still to come\n", ""},
        {"decide --from 4501 --to 1 --explain", 1,
         "goes on with \"1\" after the end of the pattern", ""},
        {"decide --from alice@pbx:5080 --to 1 --explain", 1,
         "from does not match sip alice@pbx:506[0,1]: character 13: \"8\" is not 6\n", ""},
        {"decide --from alice@pbx:5061 --to 1", 0, "rule 3 (position 4): type 0, duration 60", ""},
        {"decide --from 1 --to \\\\*9", 1, "not recorded", "--to: in an address * ? , - !"},
        {"down 2 2 --dry-run", 0, "dry run: rule 2 \"abroad\" is now rule 4", ""},
        {"up 4 2", 0, "position 3 of 6\n2 rules made room and changed", ""},
        {"decide --from 450 --to 0033", 0, "rule 2 (position 3)", ""},
        {"up 0", 1, "rule 0 is as it was", "rule 0 is the first already"},
        {"down 0 99", 0, "rule 0 is now rule 5, at position 6 of 6", ""},
        {"enable 5 '#3'", 0, "rule 5 is now on", "until they reload"},
        {"disable 5", 0, "rule 5 is now off", ""},
        {"modify 1 --from 451 --twin", 0, "\nrule 4 changed: from any * to number 451", ""},
        {"modify 0 --twin --duration 9", 5, "", "no rule mirrors rule 0"},
        {"modify 0 --description ''", 0, "rule 0 is as it was", ""},
        {"modify 0 --recording-type 1", 0, "rule 0 changed", ""},
        {"check", 0, "6 rules, nothing found", ""},
        {"delete 4 --twin", 0, "add --at 5 --from '*' --from-type any --to 451", ""},
        {"delete '#1' --if-state 0f", 7, "", "the rule file is another one"},
        {"delete '#1'", 0, "rule 0 deleted", ""},
        {"list", 0, "2  3   on     sip alice@pbx:506[0,1]  any *", ""},
        {"list --basic", 0, "adv", "leaves out"},
    };
    int line = 0;
    for (Row const& row : rows) {
        Expect(row);
        EXPECT_EQ(std::filesystem::exists(dir.Path("telephony")), ++line > 2);
    }
}

constexpr char kFaultyRules[] = "{\ncallrecordingrule_id=1\ncaller_pattern=*\ncaller_call_type=3\n"
                                "called_pattern=<5-1>\ncalled_call_type=7\ncall_recording_type=0\n"
                                "recording_rule_state=1\n}\n{\ncallrecordingrule_id=1\n"
                                "caller_pattern =1\ncaller_call_type=0\ncalled_pattern={1-5}\n"
                                "called_call_type=0\ncall_recording_type=0\n"
                                "recording_rule_state=1\n}\n";

TEST_F(Client, ExitsWithItsCodesAndNamesTheCulprit) {
    dir.WriteRules(kFaultyRules);
    std::string const path = dir.Path(TempDir::RULE_FILE);
    Row const rows[] = {
        {"check [1,2] \\\\*7 --type any", 0, "[1,2]\n#7\n", "is stored as a code"},
        {"check 1 [1-5,3]", 1, "1\n    [1-5,3]\n         ^\n    \"3\" is given twice", ""},
        {"check a@b --type sip", 0, "a@b\n", ""},
        {"check --typ sip", 2, "", "--typ"},
        {"check", 1, path + ":5: rule 1: to: malformed pattern: ", ""},
        {"check", 1, "\n    {5-1}\n     ^\n", ""},
        {"check", 1, path + ":6: rule 1: called_call_type is \"7\", expected 0 to 3", ""},
        {"check", 1, path + ":11: rule 1: the identifier 1 is already that of the rule on line 2",
         ""},
        {"check", 1, path + ":12: rule 1: \"caller_pattern \" is not read", ""},
        {"check", 1, path + ":10: rule 1: from: an empty pattern never matches", ""},
        {"list", 0, "any {5-1} (malformed)", ""},
        {"list", 0, "number {1-5} (malformed)", ""},
        {"add --from [1-", 1, "", "--from: malformed pattern of call type number: "},
        {"add --to ''", 1, "", "--to: an empty pattern never matches"},
        {"add --to-type fax", 2, "", "--to-type: \"fax\" is not a call type"},
        {"add --everyone --at 9", 2, "", "--at 9: there are only 2 rules"},
        {"add --everyone --description 'a\nb'", 4, "", "--description: a line break"},
        {"add --everyone --record-to " + std::string(65536, 'x'), 4, "",
         "\"record_to\" has 65536 characters, expected at most 65535"},
        {"modify 1", 2, "", "no field"},
        {"delete 1", 5, "", "more than one rule 1"},
        {"delete 7", 5, "", "no rule 7"},
        {"delete x", 2, "", "ID: \"x\" is not a number"},
        {"delete", 2, "", "ID is required"},
        {"rm 1", 2, "", "callrecordingctl: \"rm\" is not a command; did you mean delete?"},
        {"lsit", 2, "", "did you mean list?"},
        {"add --form 1", 2, "", "--form is not an option of add; did you mean --from?"},
        {"delete 7 --json", 5, "", "{\"error\":\"there is no rule 7;"},
        {"show '#3'", 5, "", "no rule #3"},
        {"help up", 0, "callrecordingctl up", ""},
    };
    for (Row const& row : rows)
        Expect(row);
    EXPECT_EQ(dir.ReadRules(), kFaultyRules);
}

TEST_F(Client, FindsWhatAHandGetsWrongAndRenumbers) {
    struct {
        char const *key, *value, *finding; // An empty finding: there is none.
    } const rows[] = {
        {"note", "x", ""},
        {"descripton", "x", "is \"description\" meant?"},
        {"Caller-Pattern", "x", "is \"caller_pattern\" meant?"},
        {"callrecordingrule_id", "-4", "renumber"},
        {"callrecordingrule_id", "04", "reads as 4; \"callrecordingctl renumber\""},
        {"caller_pattern", "a@b:5060", ""},
        {"caller_pattern", "a@b:[1-9]<1-80>?*", ""},
        {"caller_pattern", "a@b:65536", "65535"},
        {"caller_pattern", "a@b:5060;transport=tcp", "digits only"},
        {"caller_pattern", "[1,!1]@b", "from: "},
        {"caller_pattern", "a\rb@h", "carriage return"},
    };
    for (auto const& [key, value, finding] : rows) {
        std::string text = "{\n";
        for (auto const& [name, standard] :
             std::map<std::string, std::string>{{"callrecordingrule_id", "4"},
                                                {"caller_pattern", "a@b"},
                                                {"caller_call_type", "1"},
                                                {"called_pattern", "*"},
                                                {"called_call_type", "3"},
                                                {"call_recording_type", "0"},
                                                {"recording_rule_state", "1"}})
            if (name != key)
                text.append(name).append("=").append(standard).append("\n");
        dir.WriteRules(text.append(key).append("=").append(value).append("\n}\n"));
        Row const outcome = Run("check");
        EXPECT_EQ(outcome.code, *finding == '\0' ? 0 : 1) << value << outcome.out;
        EXPECT_NE(outcome.out.find(finding), std::string::npos) << value << outcome.out;
    }
    dir.WriteRules("{\ncallrecordingrule_id=7\n}\n{\ncallrecordingrule_id=7\n}\n{\n"
                   "callrecordingrule_id=-1\n}\n{\ncallrecordingrule_id=08\n}\n");
    EXPECT_EQ(Run("renumber").code, 0);
    EXPECT_EQ(Json("list").at(0).at("callrecordingrule_id"), 7);
    EXPECT_EQ(Json("list").at(3).at("callrecordingrule_id"), 10);
    EXPECT_EQ(Run("renumber --all >/dev/full").code, 0); // It was saved.
    EXPECT_EQ(Json("list").at(3).at("callrecordingrule_id"), 3);
}

// Every pair of five rules to every place, against the same done to a list of texts.
TEST_F(Client, FindsChecksFilesAndCompletes) {
    dir.WriteRules("");
    Run("add --from 20[1-3] --description 'Vertrieb 東京'");
    Run("add --from 301 --to a@b --disabled --description 'x\u202Ey'");
    dir.Write("other", "{\ncallrecordingrule_id=7\ncaller_pattern=<5-1>\n}\n");
    std::string const other = dir.Path("other");
    Row const rows[] = {
        {"list --grep VERTRIEB", 0, "1  0   on ", ""},
        {"list --matching-from 'sip:301@x'", 0, "", "there are no rules"},
        {"list --matching-from '<tel:3-01>'", 0, "2  1   off", ""},
        {"list --matching-to 'a@b:9' --enabled", 0, "1  0   on ", ""},
        {"list --disabled --json", 0, "\"position\": 2", ""},
        {"list --disabled", 0, "x?y", ""},
        {"decide --from '\"A\" <tel:2-01>' --to 1", 0, "recorded by rule 0",
         "--from: taken for 201 (left out: name, brackets, tel:, separators)"},
        {"check " + other, 1, other + ":1: rule 7: ", ""},
        {"check -", 1, "standard input:", ""},
        {"check /etc/passwd --type number", 0, "/etc/passwd\n", ""}, // Not the file: a pattern.
    };
    for (Row const& row : rows)
        Expect(row.command == "check -" ? Row{"check - <" + other, row.code, row.out, row.err}
                                        : row);
    struct {
        char const *words, *offered;
    } const completions[] = {
        {"sh", "show\tShow one rule"},
        {"delete ", "0\tVertrieb"},
        {"delete 0 --tw", "--twin\t"},
        {"move 0 --after ", "1\tx?y\n"},
        {"add --to-type=s", "--to-type=sip\t"},
        {"decide --from-type s", "sip\t"},
        {"import ", ":files\n"},
        {"help und", "undo\t"},
    };
    for (auto const& [words, offered] : completions) {
        std::string const given(words);
        std::string const line = "__complete --config-dir=" + dir.Path() + " " + given +
                                 (given.back() == ' ' ? "''" : "") +
                                 "\n:"; // What Run adds is not for it.
        EXPECT_NE(Run(line).out.find(offered), std::string::npos) << words << Run(line).out;
    }
    for (char const* const command :
         {"", "list", "show", "decide", "check", "add", "modify", "delete", "up", "down", "move",
          "enable", "disable", "renumber", "undo", "log", "import", "export", "replay"}) {
        std::istringstream help(Run(std::string("help ") + command, "", " | cat").out);
        for (std::string line; std::getline(help, line);)
            EXPECT_LE(line.size(), 80U) << line;
    }
}

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
    Row const rows[] = {{"move 0 --before 3", 0, "at position 3 of 5", ""},
                        {"move '#5' --after '#1'", 0, "at position 2 of 5", ""},
                        {"move 0 --to 1", 1, "as it was", "there already"},
                        {"move 0 --before 0", 2, "", "itself"},
                        {"move 0 --to 1 --after 2", 2, "", "--to"}};
    for (Row const& row : rows)
        Expect(row);
}

TEST_F(Client, ImportsAllOrNothingAndKeepsWhatStays) {
    std::string const sample =
        "# head\n\n# one\n{\ncallrecordingrule_id=3\ncaller_pattern=<1-5>\n"
        "# inside\nmore=x\ndescription=a,\"b\" \xFF\ncalled_pattern=*\n}\n"
        "{\ncallrecordingrule_id=1\ncaller_pattern={\ncalled_pattern=<5-1>\n}\n# end";
    dir.WriteRules(sample); // The second one is malformed, and stays all the same.
    EXPECT_EQ(Run("import - --replace", Run("list --json").command + " | ").code, 0);
    EXPECT_EQ(dir.ReadRules(), sample);
    EXPECT_EQ(Run("import - --replace", Run("export").command + " | ").code, 0);
    EXPECT_EQ(dir.ReadRules(), sample);
    dir.Write("faulty.csv", "From;to-type;ENABLED;id\n[1-;;;\n5;fax;;\n1;;perhaps;\n;;;\n;any;;1\n"
                            "2;;;x\n;;;;;\n\"open;;;\n");
    dir.Write("faulty.json", "[{\"callrecordingrule_id\": 5,\n\"caller_pattern\": \"5\",\n"
                             "\"caller_pattern_entry\": \"6\", \"caller_call_type\": 0,\n"
                             "\"enabled\": true, \"recording_rule_state\": 1, \"what\": 1},\n7]");
    dir.Write("more.csv", "id,from,description\n1,77,\"x, y\"\n,\"{1-5}\",new\n");
    std::string const csv = dir.Path("faulty.csv"), json = dir.Path("faulty.json");
    Row const rows[] = {
        {"import " + csv, 1, "", csv + ":2: from: malformed pattern"},
        {"import " + csv, 1, "", "\n    [1-\n    ^\n"},
        {"import " + csv, 1, "", csv + ":3: to_type: \"fax\" is no call type"},
        {"import " + csv, 1, "", csv + ":4: enabled: \"perhaps\" is not yes or no"},
        {"import " + csv, 1, "", csv + ":6: this rule would record every call"},
        {"import " + csv, 1, "", csv + ":7: id: \"x\" is no number"},
        {"import " + csv, 1, "", csv + ":8: 6 fields under 4 columns"},
        {"import " + csv, 1, "", csv + ":9: a quote"},
        {"import " + json, 1, "", json + ":3: caller_pattern_entry: is not the entry form of"},
        {"import " + json, 1, "", json + ":4: recording_rule_state: contradicts"},
        {"import " + json, 1, "", json + ":4: \"what\" is no member"},
        {"import " + json, 1, "", json + ":5: expected an array of rules"},
        {"import /none", 3, "", "/none: No such file"},
        {"import " + dir.Path("more.csv") + " --dry-run", 0, "rule 4 \"x, y\" added", ""},
    };
    for (Row const& row : rows)
        Expect(row);
    EXPECT_EQ(dir.ReadRules(), sample);
    Run("import --replace " + dir.Path("more.csv"));
    EXPECT_EQ(
        dir.ReadRules().find("# head\n\n# one\n{\ncallrecordingrule_id=1\ncaller_pattern=77\n"), 0U)
        << dir.ReadRules();
    EXPECT_EQ(Json("list").at(1).at("callrecordingrule_id"), 4);
}

TEST_F(Client, RecordsEditsAndTakesThemBack) {
    dir.WriteRules("# mine\n");
    Run("add --from 1");
    std::string const one = dir.ReadRules();
    std::string const state = Json("list").at(0).at("file_state");
    Run("add --from 2 --at 1 --description 'two' --twin");
    Run("delete 0 1");
    Row const rows[] = {
        {"undo --dry-run", 0, "dry run: rule 0 \"two\" added", ""},
        {"undo", 0, "rule 0 \"two\" added at position 1 of 3", ""},
        {"undo", 0, "rule 0 \"two\" deleted", ""},
        {"undo --to 3", 0, "is now rule", ""},
        {"undo", 0, "is now rule 0", ""}, // That takes back the going forth.
        {"disable 0 --if-state " + state, 0, "now off", ""},
        {"disable 0 --if-state " + state, 7, "", "nothing was changed\n  rule 0 is now off"},
        {"undo 9", 1, "", "only 2 edits are recorded"},
        {"log --rule 0", 0, "disable 0 --if-state", ""},
        {"log --rule 77", 0, "", "no edit is recorded that fits"},
        {"log --since noon", 2, "", "--since: \"noon\" is not a time"},
        {"log --since 1h --json", 0, "\"command\": \"", ""},
        {"show 0 --at 1d --json", 5, "", "no rule 0"},
        {"undo", 0, "rule 0 is now on", ""},
    };
    for (Row const& row : rows)
        Expect(row);
    EXPECT_EQ(dir.ReadRules(), one);
    dir.WriteRules(one + "# by hand\n");
    Expect({"log", 0, "changed outside the history by then\n     no rule changed", ""});
    Expect({"undo", 1, "", "changed outside the history"});
    EXPECT_EQ(Run("undo --also-outside").code, 0);
    EXPECT_EQ(dir.ReadRules(), one);
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

TEST_F(Client, FindsRulesThatCanNeverDecide) {
    struct {
        char const *earlier, *later;
        bool covers;
    } const rows[] = {
        {"", "--from a@b", true},
        {"--from 1", "--from 1 --to 2", true},
        {"--from 1 --from-type any", "--from 1", true},
        {"--from 1", "--from 1 --from-type any", false},
        {"--from 1 --from-type any", "--from 1@b", true},
        {"--from-type sip", "--from a@b:5060", true},
        {"--from a@b", "--from a@b:*", true},
        {"--from a@b:5060", "--from a@b", false},
        {"--from-type number --from *", "--from 1 --from-type 2", false},
        {"--disabled", "--from 1", false},
        {"", "--from 1 --disabled", false},
    };
    for (auto const& [earlier, later, covers] : rows) {
        dir.WriteRules("");
        Run(std::string("add --everyone ") + earlier);
        Run(std::string("add --everyone ") + later);
        EXPECT_EQ(Run("check").code, covers ? 1 : 0) << earlier << " and " << later;
    }
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

TEST_F(Client, KeepsAPatternOnItsWayToTheFileAndBack) {
    EXPECT_EQ(Run("add --from 'a{01-20}\\,@gw[1,2]:50\\-60' --to '\\*{7-9,!8}' --json "
                  "--description '\xFFnot UTF-8' --duration '' --recording-type 1")
                  .code,
              0);
    std::string const file = dir.ReadRules();
    EXPECT_NE(file.find("caller_pattern=a<01-20>@@gw[1,2]:50%60\n"), std::string::npos) << file;
    EXPECT_NE(file.find("called_pattern=#<7-9,!8>\n"), std::string::npos) << file;
    EXPECT_NE(file.find("description=\xFFnot UTF-8\n"), std::string::npos) << file;
    nlohmann::json const rule = Json("list").at(0);
    EXPECT_EQ(rule.at("caller_pattern_entry"), "a{01-20}\\,@gw[1,2]:50\\-60");
    EXPECT_EQ(rule.at("called_pattern_entry"), "\\*{7-9,!8}");
    EXPECT_EQ(rule.at("caller_call_type_name"), "sip");
    EXPECT_EQ(rule.at("call_recording_type"), 1);
    EXPECT_EQ(Json("show 0"), rule);
    EXPECT_EQ(Json("disable 0").at(0).at("after").at("recording_rule_state"), 1);
    nlohmann::json const decision = Json("decide --from 1 --to 2 --explain");
    EXPECT_EQ(decision.at("recorded"), false);
    EXPECT_EQ(decision.at("rules").at(0).at("decides"), false);
    EXPECT_EQ(Json("check 5").at(0).at("stored"), "5");
    EXPECT_EQ(Json("check").at(0).at("kind"), "pattern"); // The port, which has a "-" in it.
}

TEST_F(Client, FitsTheWidthAndEndsQuietlyWithItsReader) {
    dir.WriteRules("");
    for (char const* user : {"a", "b"})
        Run(std::string("add --record-to archive:/somewhere/far/away --from ") + user +
            "{1-20,!7}@a.very.long.host.name.example.com:5060 --description 'words to wrap "
            "around'");
    std::istringstream lines(Run("list", "COLUMNS=80 ").out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), 80U) << line;
    Row const cut = Run("list", "(sleep 0.1; ", ") | :");
    EXPECT_EQ(cut.err.find("cannot"), std::string::npos) << cut.err;
}

} // namespace
} // namespace callrecordingctl
