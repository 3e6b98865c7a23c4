/// @file
/// Table 1: decisions of the library and of the other engines over the same rules.

#include <algorithm>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "benchmarks.h"
#include "engines.h"
#include "rules.h"

namespace bench {
namespace {

constexpr std::size_t kSizes[] = {10, 100, 1000, 10000};
constexpr char const* kGroups[] = {"early", "late", "never"};

struct MixName {
    Mix mix;
    char const* name;
};
constexpr MixName kMixes[] = {
    {Mix::Numbers, "(a) numbers"}, {Mix::Sip, "(b) SIP"}, {Mix::BothSides, "(c) both sides"}};

std::string Name(std::string const& engine, Mix mix, bool hasRanges, std::size_t size,
                 char const* group) {
    return fmt::format("{} {} {} {} {}", engine, static_cast<int>(mix), hasRanges, size, group);
}

/// One rule list, its calls, and the engines that can work on it. The engines are there only while
/// the contest is open: one at a time is, for the library holds one list, as in the processes that
/// use it.
class Contest {
  public:
    /// Chooses the calls, and compares the answers of all engines over them and over others. Throws
    /// at the first difference.
    Contest(Bench const& bench, RuleList list) : bench_(bench), list_(std::move(list)) {
        Open();
        groups_ = MakeCalls(list_,
                            [&](Call const& call) { return engines_.at("library")->Decide(call); });
        std::vector<Call> calls = MakeRandomCalls(list_, 1000000 / (list_.rules.size() + 90));
        for (CallGroup const& group : groups_)
            calls.insert(calls.end(), group.calls.begin(), group.calls.end());
        for (Call& call : calls)
            Compare(call);
    }

    void Register(double seconds) {
        Open(); // Shows which engines there are.
        for (auto const& [name, engine] : engines_) {
            for (CallGroup const& group : groups_) {
                auto const run = [this, engineName = name, &group](benchmark::State& state) {
                    Run(state, engineName, group);
                };
                auto const title =
                    Name(name, list_.mix, list_.hasRanges, list_.rules.size(), group.name);
                benchmark::RegisterBenchmark(title.c_str(), run)->MinTime(seconds);
            }
        }
    }

  private:
    void Open() {
        if (open == this)
            return;
        if (open != nullptr)
            open->engines_.clear();
        open = this;
        bench_.Load(list_.rules);
        engines_["library"] = MakeLibrary(bench_.assistant);
        engines_["floor"] = MakeFloor(bench_.db.GetCallRecordingRules());
        if (list_.hasRanges || list_.mix == Mix::Sip) {
            engines_["PCRE2"] = MakePcre2(list_.rules);
            engines_["RE2"] = MakeRe2(list_.rules);
        }
        if (!list_.hasRanges)
            engines_["fnmatch"] = MakeFnmatch(list_.rules);
    }

    void Compare(Call& call) {
        call.decidedBy = engines_.at("library")->Decide(call);
        for (auto const& [name, engine] : engines_) {
            int const answer = engine->Decide(call);
            if (answer != call.decidedBy)
                throw std::runtime_error(fmt::format(
                    "{} decides rule {}, the library rule {} for a call from {}@{}:{} to {}@{}:{}",
                    name, answer, call.decidedBy, call.caller.user, call.caller.host,
                    call.caller.port, call.called.user, call.called.host, call.called.port));
        }
    }

    void Run(benchmark::State& state, std::string const& name, CallGroup const& group) {
        Open();
        Engine& engine = *engines_.at(name);
        for (Call const& call : group.calls) // Warms the caches; RE2 completes its automata.
            benchmark::DoNotOptimize(engine.IsAllowed(call));
        for (auto _ : state)
            for (Call const& call : group.calls)
                benchmark::DoNotOptimize(engine.IsAllowed(call));
    }

    static inline Contest* open = nullptr;

    Bench const& bench_;
    RuleList const list_;
    std::vector<CallGroup> groups_;
    std::map<std::string, std::unique_ptr<Engine>> engines_;
};

/// Nanoseconds of a decision by engine; "shared" is the library over the rules that fnmatch has.
using Times = std::map<std::string, double>;

Times ReadTimes(Results const& results, Mix mix, std::size_t size, char const* group) {
    bool const hasRanges = mix != Mix::Sip;
    auto const time = [&](char const* engine, bool withRanges) {
        return results.Median(Name(engine, mix, withRanges, size, group)) / CALLS_IN_GROUP;
    };
    Times times;
    for (char const* engine : {"library", "floor", "PCRE2", "RE2"})
        times[engine] = time(engine, hasRanges);
    times["fnmatch"] = time("fnmatch", false);
    times["shared"] = time("library", false);
    return times;
}

double Ratio(Times const& times, char const* engine) {
    bool const isFnmatch = std::string_view(engine) == "fnmatch";
    return times.at(engine) / times.at(isFnmatch ? "shared" : "library");
}

void PrintRow(MixName const& mix, std::size_t size, char const* calls, Times const& times) {
    fmt::print("{:<15} {:>6} {:<6} {:>9} {:>9} {:>8.2f} {:>8.2f} {:>8.2f} {:>14.2f}\n", mix.name,
               size, calls, Duration(times.at("library")), Duration(times.at("floor")),
               Ratio(times, "PCRE2"), Ratio(times, "RE2"), Ratio(times, "fnmatch"),
               1 / Ratio(times, "floor"));
}

/// Prints the rows of a list and returns the mean over its calls.
Times PrintList(Results const& results, MixName const& mix, std::size_t size) {
    Times mean;
    for (char const* group : kGroups) {
        Times const times = ReadTimes(results, mix.mix, size, group);
        PrintRow(mix, size, group, times);
        for (auto const& [engine, time] : times)
            mean[engine] += time / double{std::size(kGroups)};
    }
    PrintRow(mix, size, "mean", mean);
    return mean;
}

} // namespace

void MeasureDecisions(Bench const& bench) {
    std::list<Contest> contests;
    for (std::size_t size : kSizes) {
        for (MixName const& mix : kMixes) {
            contests.emplace_back(bench, MakeRules(mix.mix, size, mix.mix != Mix::Sip));
            if (mix.mix != Mix::Sip)
                contests.emplace_back(bench, MakeRules(mix.mix, size, false));
        }
    }
    for (Contest& contest : contests)
        contest.Register(bench.isQuick ? 0.001 : 0.005);
    Results results;
    results.RunRounds(bench.isQuick ? 3 : 9);

    fmt::print(
        "1. Decisions: time of one, and how many times the library's time each engine takes.\n"
        "fnmatch has no range expressions: its column compares over lists without them, which the\n"
        "library decides as well. The floor is the bare walk of the rule list.\n\n"
        "{:<15} {:>6} {:<6} {:>9} {:>9} {:>8} {:>8} {:>8} {:>14}\n",
        "rules", "", "calls", "library", "floor", "PCRE2", "RE2", "fnmatch", "library/floor");
    std::map<std::string, double> few, many;
    for (char const* engine : {"PCRE2", "RE2", "fnmatch"})
        few[engine] = many[engine] = std::numeric_limits<double>::max();
    double walks = 0;
    for (MixName const& mix : kMixes) {
        for (std::size_t size : kSizes) {
            Times const mean = PrintList(results, mix, size);
            for (auto& [engine, lowest] : size == 10 ? few : many)
                lowest = std::min(lowest, Ratio(mean, engine.c_str()));
            if (mix.mix == Mix::Numbers && size == 1000)
                walks = 1 / Ratio(mean, "floor");
        }
    }
    // Judged is the mean over the calls of a list, and of all lists the one that comes off worst.
    bench.targets.AtLeast("PCRE2-JIT / library, lists of 100 to 10,000 rules", 3, many["PCRE2"]);
    bench.targets.AtLeast("RE2 / library, lists of 100 to 10,000 rules", 5, many["RE2"]);
    bench.targets.AtLeast("fnmatch / library, lists of 100 to 10,000 rules", 1.3, many["fnmatch"]);
    bench.targets.AtLeast("PCRE2-JIT / library, lists of 10 rules", 1, few["PCRE2"]);
    bench.targets.AtLeast("RE2 / library, lists of 10 rules", 1, few["RE2"]);
    bench.targets.AtLeast("fnmatch / library, lists of 10 rules", 1, few["fnmatch"]);
    bench.targets.AtMost("library / bare walk, 1,000 rules of mix (a)", 3, walks);
}

} // namespace bench
