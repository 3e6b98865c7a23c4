// example, check, diff and prove as a person or a script meets them: words, JSON and exit codes.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include "support/TempDir.h"

namespace callrecordingctl {

namespace {

class AnalysisCommands : public testing::Test {
  protected:
    /// Five rules: one in front, two that hide a third together, and one that nothing can match.
    AnalysisCommands() {
        dir.WriteRules("");
        for (char const* const rule : {"--to 0* --record-to a", "--to {100-149}", "--to {150-199}",
                                       "--to 1[1-9][0-5]", "--to [0-9,!0]{5,!?}"})
            EXPECT_EQ(0, Run(std::string("add ") + rule).first) << rule;
    }

    /// The exit code, and what is printed, notes included.
    std::pair<int, std::string> Run(std::string const& command) const {
        TempDir const files;
        std::string const line = std::string("set -f; ") + CALLRECORDINGCTL_PATH + " " + command +
                                 " --config-dir " + dir.Path() + " >" + files.Path("out") + " 2>&1";
        int const status = std::system(line.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, files.Read("out")};
    }

    TempDir dir;
};

TEST_F(AnalysisCommands, SayInWordsAndByTheExitCode) {
    std::string const old = dir.Path("old");
    std::string const malformed = dir.Path("malformed");
    std::string const policy = dir.Path("policy");
    std::ofstream(old) << dir.ReadRules();
    std::ofstream(malformed)
        << "{\ncaller_pattern=*\ncalled_pattern=1<2-3-4>\nrecording_rule_state=1\n}\n";
    std::ofstream(dir.Path("empty")) << "# Nothing yet\n";
    std::ofstream(policy) << "# Must hold\n\n --to '1[1-4]?' --by 1 # all\n--to \"0\"* --recorded\n"
                          << "--from-type number2 --to 2* --not-recorded\n";
    struct {
        std::string command;
        int code;
        char const* part; // Of what is printed.
    } const rows[] = {
        {"example 0", 0, "rule 0 decides the call from 0 to 0\n"},
        {"example 3", 1, "rule 3 never decides: rules 1 and 2 before it take all its calls"},
        {"example '#5'", 1, "rule 4 never decides: nothing satisfies its to side"},
        {"example 9", 5, "no rule 9"},
        {"check", 1, "rule 3: can never decide: rules 1 and 2 together take all its calls, and do"},
        {"check", 1, "rule 4: can never decide: nothing satisfies its to side"},
        {"diff " + old, 0, "both decide every call alike"},
        {"diff " + malformed, 1, "to 0"},
        {"diff " + old + "er", 3, "older: there is no such file"},
        {"down 1 --dry-run", 0, "dry run: no call is decided differently\n"},
        {"modify 3 --record-to b --dry-run", 0, "no call is decided differently"},
        {"modify 0 --record-to b --dry-run", 0,
         "the call from 0 to 0\n  is now recorded by rule 0: type 0, to a\n"
         "  would be recorded by rule 0: type 0, to b\n"},
        {"delete 2 --dry-run", 0,
         "the call from 0 to 156\n  is now recorded by rule 2: type 0\n"
         "  would be not recorded"},
        {"prove --to 1[1-4]? --by 1", 1, "the call from 0 to 11a is not recorded"},
        {"prove --to {110-140} --by 1", 1, "the call from 0 to sip 110@0 is not recorded"},
        {"prove --to {110-140} --to-type number --by 1", 0, "proved: rule 1 covers all these"},
        {"prove --to {110-140} --by 1 --calls parties", 0,
         "with --calls typed it is otherwise: false: the call from 0 to sip 110@0 is not"},
        {"prove --to {110-150} --by 1", 1, "the call from 0 to 150 is recorded by rule 2: type 0"},
        {"prove --to 0 --to-type number --record-to a --duration 5", 1,
         "0 is recorded to \"a\" and is recorded with the duration \"5\" (typed calls; the file "
         "is"},
        {"prove --to 0* --to-type number --recording-type 0 --by 0 --recorded", 0, "proved"},
        {"prove --to 2 --recorded --all-gaps", 1, "these calls:\n  from any * to any 2\n"},
        {"prove --to {180-199} --to-type number --recorded --except-to {186-196} --except-to *7", 0,
         "except to {186-196} of any type and to *7 of any type, is recorded"},
        {"prove --to {5,!?} --recorded", 1, "true of no call"},
        {"prove --from-type sip --not-recorded", 1, "from sip 0@0 to 0 is recorded"},
        {"prove --record-to a --not-recorded", 2, " excludes "},
        {"prove --to 2 --to-type number2 --not-recorded", 0, "proved"},
        {"prove --file " + policy, 1, "policy:4: every call to 0* of any type is recorded ("},
        {"prove --file " + policy, 1,
         "policy:5: every call from number2 * to 2* of any type is le"},
        {"prove --file " + dir.Path("empty"), 2, "there is no claim in this file"},
        {"explain 3", 1, "it can never decide: rules 1 and 2 together"},
        {"explain 1", 0, "it decides exactly these calls:\n  from any * to number {100-149}\n"},
        {"check /no/such/file", 2, "there is no such file"},
        {"check {5,!5}", 0, "note: "},
        {"check --quiet --fix --dry-run", 0, "rule 3 can go: rules 1 and 2 do the same"},
        {"prove --file " + policy + " --recorded", 2, "--file"},
        {"prove", 2, "one of --recorded, --not-recorded, --by,"},
        {"prove --to 1-2 --recorded", 1, "malformed"},
        {"prove --by 9", 5, "no rule 9"},
        {"prove --file " + old, 2, "old:1: "},
        {"prove --file " + policy + "2", 3, "cannot be read"},
    };
    for (auto const& [command, code, part] : rows) {
        auto const [found, text] = Run(command);
        EXPECT_EQ(code, found) << command << "\n" << text;
        EXPECT_NE(std::string::npos, text.find(part)) << command << "\n" << text;
    }
    // Of a malformed item list in front nothing is sure.
    std::ofstream(dir.Path("telephony/callrecordingdb"))
        << std::ifstream(malformed).rdbuf() << std::ifstream(old).rdbuf();
    EXPECT_EQ(6, Run("example '#1'").first);
    EXPECT_EQ(6, Run("prove --to 1a? --not-recorded").first);
    EXPECT_NE(
        std::string::npos,
        Run("check --notes").second.find("undecided: it depends on the to pattern of rule 0"));
}

TEST_F(AnalysisCommands, PrintTheJsonThatScriptsReadAgain) {
    Run("add --from ann?@pbx:50{60-62} --to 1* --to-type number2");
    Run("add --to 1*");
    std::ofstream(dir.Path("empty"));
    std::ofstream(dir.Path("policy")) << "--to 1* --to-type number --recorded\n";
    struct {
        std::string command;
        char const* json;
    } const rows[] = {
        {"example 5", R"({"callrecordingrule_id":5,"position":6,"decides":true,"call":{
            "from":{"call_type":1,"address":"ann0@pbx:5060"},
            "to":{"call_type":2,"address":"1"}},"taken_by":[]})"},
        {"example 3", R"({"callrecordingrule_id":3,"position":4,"decides":false,"call":null,
            "taken_by":[1,2]})"},
        {"prove --to {150-199} --to-type number --by 2",
         R"({"proved":true,"true_of_no_call":false,"covered_by":[2],"counterexample":null})"},
        {"prove --to 2 --recorded", R"({"proved":false,"counterexample":{"call":{
            "from":{"call_type":0,"address":"0"},"to":{"call_type":0,"address":"2"}},
            "callrecordingrule_id":null}})"},
        {"prove --to 2? --to-type number --recorded --all-gaps",
         R"({"calls":"typed","other_calls":null,"gaps":{"calls":null,"patterns":[
            {"from":{"pattern":"*","call_type":3,"only_call_type":null},
             "to":{"pattern":"2?","call_type":0,"only_call_type":null}}]}})"},
        {"explain 3 --calls parties", R"({"calls":"parties","decides":{"patterns":[]}})"},
    };
    for (auto const& [command, json] : rows) {
        auto const document = nlohmann::json::parse(Run(command + " --json").second);
        auto const expected = nlohmann::json::parse(json);
        for (auto const& [name, value] : expected.items())
            EXPECT_EQ(value, document[name]) << command;
    }
    auto const policy =
        nlohmann::json::parse(Run("prove --file " + dir.Path("policy") + " --json").second);
    EXPECT_EQ(1, policy[0]["line"]);
    EXPECT_EQ("every call to number 1* is recorded", policy[0]["claim"]["text"]);
    EXPECT_EQ(true, policy[0]["proved"]);
    auto const diff = nlohmann::json::parse(Run("diff " + dir.Path("empty") + " --json").second);
    EXPECT_EQ(false, diff["same"]);
    EXPECT_EQ(5U, diff["differences"].size());
    EXPECT_EQ(0, diff["differences"][0]["here"]);
    EXPECT_TRUE(diff["differences"][0]["there"].is_null());
    std::string kinds;
    auto const findings = nlohmann::json::parse(Run("check --json").second);
    for (auto const& finding : findings)
        kinds += finding["kind"].get<std::string>() + finding["taken_by"].dump() + ' ';
    EXPECT_EQ("droppable[1,2] matches_nothing[] pattern[] could_go[] could_go[] no_party[] "
              "loses_calls[1,2] ",
              kinds);
}

} // namespace
} // namespace callrecordingctl
