// The whole client with each of its system calls failed or killed once, SQLite's included: the rule
// file is the old one or the new one, and the next log and undo tell what happened.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "administration/inspection/Digest.h"
#include "support/TempDir.h"

namespace callrecordingctl {

using namespace CallRecordingUtils;
namespace fs = std::filesystem;

namespace {

struct Outcome {
    int code; // -1 when it was killed.
    bool isHit;
    std::string out, err;

    bool Says(char const* part) const { return err.find(part) != std::string::npos; }
};

struct Fault {
    int call = 0;
    char const* kind = "fail";
};

class ClientFaults : public testing::Test {
  protected:
    Outcome Run(std::vector<std::string> words, Fault const& fault = {}) const {
        fs::remove(dir.Path("hit"));
        words.insert(words.begin(), CALLRECORDINGCTL_PATH);
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        pid_t const child = fork();
        if (child == 0) {
            for (int stream : {STDOUT_FILENO, STDERR_FILENO})
                dup2(creat(dir.Path(stream == STDOUT_FILENO ? "out" : "err").c_str(), 0600),
                     stream);
            setenv("QUVA_PATH", (dir.Path("conf") + "/").c_str(), 1);
            setenv("TMPDIR", dir.Path("tmp").c_str(), 1);
            setenv("FAULT_HIT", dir.Path("hit").c_str(), 1);
            setenv("FAULT_CALL", std::to_string(fault.call).c_str(), 1);
            setenv("FAULT_KIND", fault.kind, 1);
            setenv("LD_PRELOAD", CLIENT_FAULTS_PATH, 1);
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, fs::exists(dir.Path("hit")),
                dir.Read("out"), dir.Read("err")};
    }

    std::string Rules() const { return fs::exists(rules) ? dir.Read(kRules) : std::string(); }

    nlohmann::json Log() const {
        Outcome const log = Run({"log", "--json"});
        EXPECT_EQ(log.code, 0) << log.err;
        return log.code == 0 ? nlohmann::json::parse(log.out) : nlohmann::json();
    }

    void Restore(std::string const& from) const {
        fs::remove_all(dir.Path("conf"));
        fs::copy(dir.Path(from), dir.Path("conf"), fs::copy_options::recursive);
    }

    /// One configuration after three edits, and one without any.
    void MakeTemplates() {
        for (char const* const name : {"tmp", "empty", "conf"})
            fs::create_directories(dir.Path(name));
        for (char const* const number : {"1", "2", "3"}) {
            ASSERT_EQ(Run({"add", "--from", number, "--description", "rule"}).code, 0);
            texts.push_back(Rules());
        }
        dir.Write("table", "from,to\n77,*\n78,*\n");
        fs::copy(dir.Path("conf"), dir.Path("three"), fs::copy_options::recursive);
    }

    /// Compares the history with what became of the file.
    void CheckHistory(std::string const& command, Outcome const& outcome, bool isFirst);
    void CheckUndo(std::string const& beforeCommand, bool isRecorded, bool isFirst) const;
    void CheckUndoOfAHandEdit(bool isKilled, std::string const& recorded) const;
    bool Check(std::vector<std::string> const& words, bool isFirst, Fault const& fault);

    static constexpr char kRules[] = "conf/telephony/callrecordingdb";
    TempDir dir;
    std::string const rules = dir.Path(kRules);
    std::vector<std::string> texts; // After each of the three edits.
    std::string before, after;      // The command that is tried.
};

void ClientFaults::CheckHistory(std::string const& command, Outcome const& outcome, bool isFirst) {
    nlohmann::json const log = Log();
    bool const isSaved = before != after && Rules() == after;
    bool const isMissing = outcome.Says("missing in the history");
    EXPECT_TRUE(!isMissing || isSaved) << outcome.err;
    std::size_t const entries = isFirst ? 0 : 3;
    // A change that came before anything was recorded is not told.
    ASSERT_EQ(log.size(), entries + (isSaved && !(isMissing && isFirst) ? 1 : 0)) << log;
    if (log.size() == entries)
        return;
    EXPECT_EQ(log.at(0).at("outside"), isMissing) << outcome.err;
    EXPECT_EQ(log.at(0).at("command"), isMissing ? "" : command);
    EXPECT_EQ(log.at(0).at("digest_before"), DigestOf(before));
    EXPECT_EQ(log.at(0).at("digest_after"), DigestOf(after));
    EXPECT_NE(log.at(0).at("state"), "unknown");
}

/// beforeCommand is where undo goes if the command was saved and recorded.
void ClientFaults::CheckUndo(std::string const& beforeCommand, bool isRecorded,
                             bool isFirst) const {
    bool const isSaved = before != after && Rules() == after;
    std::string const text = Rules();
    Outcome const undo = Run({"undo"});
    bool const canUndo = isSaved ? isRecorded : !isFirst;
    EXPECT_EQ(undo.code, canUndo ? 0 : 1) << undo.err;
    EXPECT_EQ(Rules(), !canUndo ? text : isSaved ? beforeCommand : texts[1]);
}

/// recorded is the last text that the history knows.
void ClientFaults::CheckUndoOfAHandEdit(bool isKilled, std::string const& recorded) const {
    std::string const text = Rules();
    dir.Write(kRules, text + "# by hand\n");
    EXPECT_EQ(Run({"undo"}).code, 1);
    EXPECT_EQ(Rules(), text + "# by hand\n");
    Outcome const undo = Run({"undo", "--also-outside"});
    if (isKilled && undo.Says("not known whether")) {
        EXPECT_EQ(undo.code, 1);
        EXPECT_EQ(Log().at(1).at("state"), "unknown");
        EXPECT_EQ(Rules(), text + "# by hand\n");
    } else {
        EXPECT_EQ(undo.code, 0) << undo.err;
        EXPECT_EQ(Rules(), recorded);
    }
}

/// Returns whether the command makes that call at all.
bool ClientFaults::Check(std::vector<std::string> const& words, bool isFirst, Fault const& fault) {
    Restore(isFirst ? "empty" : "three");
    Outcome const outcome = Run(words, fault);
    bool const isKilled = outcome.code == -1;
    EXPECT_TRUE(Rules() == before || Rules() == after) << Rules();
    EXPECT_TRUE(outcome.code != 0 || Rules() == after) << outcome.err;
    EXPECT_TRUE(outcome.code <= 0 || Rules() == before || outcome.Says("may not survive"))
        << outcome.err;
    bool const hasHistory = fs::exists(rules + ".history");
    std::string command = "callrecordingctl";
    for (std::string const& word : words)
        command += " " + word;
    if (fs::exists(fs::path(rules).parent_path()))
        CheckHistory(command, outcome, isFirst);
    if (fault.call % 2 == 0 && fs::exists(fs::path(rules).parent_path()))
        CheckUndo(command == "callrecordingctl undo" ? texts[0] : before, // It goes further back.
                  !outcome.Says("missing in the history"), isFirst);
    else if (hasHistory && !isFirst)
        CheckUndoOfAHandEdit(isKilled, outcome.Says("missing in the history") ? before : Rules());
    return outcome.isHit;
}

TEST_F(ClientFaults, TheNextLogAndUndoTellWhatHappened) {
    MakeTemplates();
    struct {
        std::vector<std::string> words;
        bool isFirst;
    } const rows[] = {
        {{"add", "--from", "9"}, true},
        {{"import", dir.Path("table")}, true},
        {{"add", "--from", "9"}, false},
        {{"delete", "0"}, false},
        {{"move", "0", "--to", "3"}, false},
        {{"modify", "1", "--description", "two"}, false},
        {{"import", dir.Path("table")}, false},
        {{"import", dir.Path("table"), "--replace"}, false},
        {{"undo"}, false},
        {{"undo", "--to", "1"}, false},
        {{"log"}, false},
        {{"log", "--keep", "1"}, false},
    };
    bool const takesAll = std::getenv("CLIENT_FAULTS") != nullptr;
    int const step = takesAll ? 1 : 37;
    int runs = 0;
    for (auto const& [words, isFirst] : rows) {
        Restore(isFirst ? "empty" : "three");
        before = Rules();
        ASSERT_EQ(Run(words).code, 0);
        after = Rules();
        for (char const* const kind : {"fail", "kill"}) {
            int call = takesAll ? 1 : 1 + runs % step;
            for (bool isHit = true; isHit && !HasFailure(); call += step) {
                SCOPED_TRACE(words[0] + (isFirst ? ", the first" : "") + ": " + kind + " call " +
                             std::to_string(call));
                isHit = Check(words, isFirst, {call, kind});
                ++runs;
            }
            EXPECT_GT(call, 40);
        }
    }
    RecordProperty("runs", runs);
}

} // namespace
} // namespace callrecordingctl
