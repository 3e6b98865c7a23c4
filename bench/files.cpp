/// @file
/// Loading rules, and editing their file.

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <list>
#include <memory>
#include <stdexcept>
#include <system_error>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <ini.h>
#include <unistd.h>

#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/tokensArray.h>

#include "benchmarks.h"
#include "rules.h"

namespace bench {
namespace {

using namespace CallRecordingUtils;

constexpr std::size_t kRules = 10000;

/// Reads rules with inih, the way its documentation shows.
class IniRules {
  public:
    IniRules(std::string path, std::string const& ruleFileText) : path_(std::move(path)) {
        std::string text; // The same entries, but sections without a last line.
        for (char c : ruleFileText)
            text += c == '{' ? "[rule]" : c == '}' ? "" : std::string(1, c);
        RuleDirectory::Write(path_, text);
    }

    void Load() {
        rules_.clear();
        if (ini_parse(path_.c_str(), TakeEntry, this) != 0)
            throw std::runtime_error("inih does not read the rules");
    }

    bool Holds(std::vector<Rule> const& expected) const {
        auto const isSame = [](std::unique_ptr<Rule> const& rule, Rule const& other) {
            return rule->caller_pattern == other.caller_pattern &&
                   rule->called_pattern == other.called_pattern &&
                   rule->called_call_type == other.called_call_type &&
                   rule->description == other.description &&
                   rule->recording_rule_state == other.recording_rule_state;
        };
        return std::equal(rules_.begin(), rules_.end(), expected.begin(), expected.end(), isSame);
    }

  private:
    static int TakeEntry(void* user, char const* /*section*/, char const* name, char const* value) {
        auto& rules = static_cast<IniRules*>(user)->rules_;
        if (std::strcmp(name, tokensArray[KEY_CALLRECORDINGRULE_ID]) == 0) // First in each section.
            rules.push_back(std::make_unique<Rule>());
        SetField(*rules.back(), name, value);
        return 1;
    }

    static void SetField(Rule& rule, char const* name, char const* value) {
        auto const is = [name](RuleFileKeys key) {
            return std::strcmp(name, tokensArray[key]) == 0;
        };
        auto const number = [value] { return static_cast<int>(std::strtol(value, nullptr, 10)); };
        if (is(KEY_CALLRECORDINGRULE_ID))
            rule.callrecordingrule_id = number();
        else if (is(KEY_CALLER_PATTERN))
            rule.caller_pattern = value;
        else if (is(KEY_CALLER_CALL_TYPE))
            rule.caller_call_type = static_cast<CallType>(number());
        else if (is(KEY_CALLED_PATTERN))
            rule.called_pattern = value;
        else if (is(KEY_CALLED_CALL_TYPE))
            rule.called_call_type = static_cast<CallType>(number());
        else if (is(KEY_CALL_RECORDING_TYPE))
            rule.call_recording_type = static_cast<CallRecordingTypes>(number());
        else if (is(KEY_RECORD_TO))
            rule.record_to = value;
        else if (is(KEY_RECORDING_DURATION))
            rule.recording_duration = value;
        else if (is(KEY_DESCRIPTION))
            rule.description = value;
        else if (is(KEY_RECORDING_RULE_STATE))
            rule.recording_rule_state = *value == '1' ? RULE_ENABLED : RULE_DISABLED;
    }

    std::string path_;
    std::list<std::unique_ptr<Rule>> rules_;
};

void Require(bool succeeded, char const* what) {
    if (!succeeded)
        throw std::system_error(errno, std::generic_category(), what);
}

std::string ReadWhole(std::string const& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    std::string text(static_cast<std::size_t>(file.tellg()), '\0');
    file.seekg(0);
    Require(!!file.read(text.data(), static_cast<std::streamsize>(text.size())), "read");
    return text;
}

/// The least that it takes to write so that neither a crash nor a power cut loses rules.
void WriteDurably(RuleDirectory const& directory, std::string const& text) {
    std::string const path = directory.RuleFile();
    std::string const temporary = path + ".plain";
    int const file = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600);
    Require(file >= 0, "open");
    Require(write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()), "write");
    Require(fsync(file) == 0 && close(file) == 0, "fsync");
    Require(rename(temporary.c_str(), path.c_str()) == 0, "rename");
    int const parent = open(directory.RuleFileDirectory().c_str(), O_RDONLY | O_DIRECTORY);
    Require(parent >= 0 && fsync(parent) == 0 && close(parent) == 0, "fsync of the directory");
}

/// Times edit by the clock on the wall, since waiting for the disk takes no processor time. The
/// original file is restored before each edit, untimed.
void RegisterEdit(char const* name, RuleDirectory const& directory, std::string const& original,
                  std::function<void()> const& edit) {
    auto const run = [&directory, &original, edit](benchmark::State& state) {
        for (auto _ : state) {
            WriteDurably(directory, original);
            auto const start = std::chrono::steady_clock::now();
            edit();
            std::chrono::duration<double> const time = std::chrono::steady_clock::now() - start;
            state.SetIterationTime(time.count());
        }
    };
    benchmark::RegisterBenchmark(name, run)->UseManualTime()->Iterations(4);
}

} // namespace

void MeasureFiles(Bench const& bench) {
    std::vector<Rule> const rules = MakeRules(Mix::Numbers, kRules, true).rules;
    std::string const text = RuleFileText(rules);
    bench.Load(rules);
    IniRules ini(bench.directory.File("rules.ini"), text);
    ini.Load();
    std::vector<Rule> loaded;
    bench.db.VisitRules([&loaded](Rule const& rule) { loaded.push_back(rule); });
    if (!ini.Holds(loaded))
        throw std::runtime_error("inih reads other rules");

    benchmark::RegisterBenchmark(
        "load, library",
        [&](benchmark::State& state) {
            for (auto _ : state)
                bench.assistant.ReloadCallRecordingRules();
        });
    benchmark::RegisterBenchmark("load, inih", [&](benchmark::State& state) {
        for (auto _ : state)
            ini.Load();
    });
    Results results;
    results.RunRounds(bench.isQuick ? 3 : 7);

    Rule rule = rules.front();
    RegisterEdit(
        "AddRule", bench.directory, text,
        [&] {
            if (!bench.db.AddRule(&rule))
                throw std::runtime_error("AddRule fails");
        });
    RegisterEdit("plain read and durable write", bench.directory, text,
                 [&] { WriteDurably(bench.directory, ReadWhole(bench.directory.RuleFile())); });
    results.RunRounds(bench.isQuick ? 5 : 25);

    std::string table = fmt::format("{} rules, {} bytes\n\n", kRules, text.size());
    for (char const* name :
         {"load, library", "load, inih", "AddRule", "plain read and durable write"})
        table += fmt::format("{:<30} {:>9}\n", name, Duration(results.Median(name)));
    bench.document.Add("files", table);
    bench.targets.AtLeast("inih / library, loading 10,000 rules", 1,
                          results.Median("load, inih") / results.Median("load, library"));
    bench.targets.AtMost("AddRule / plain read and durable write, 10,000 rules", 2,
                         results.Median("AddRule") /
                             results.Median("plain read and durable write"));
}

} // namespace bench
