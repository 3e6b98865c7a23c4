/// @file
/// Tables 1 and 2: decisions of the library and of the other engines over the same rules, over and
/// over and for the first time.

#include <algorithm>
#include <chrono>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "benchmarks.h"
#include "engines.h"
#include "plot.h"
#include "rules.h"

namespace bench {
namespace {

constexpr std::size_t kSizes[] = {10, 100, 1000, 10000, 100000};
constexpr std::size_t kMostOneByOne = 10000; // For engines that try rule by rule.
constexpr char const* kGroups[] = {"early", "late", "never"};
constexpr Mix kMixes[] = {Mix::Numbers, Mix::Sip,   Mix::BothSides, Mix::Prefix,   Mix::Extensions,
                          Mix::Domain,  Mix::Tails, Mix::SetsFirst, Mix::SetsOnly, Mix::Middle};
constexpr char const* kPeers[] = {"RE2::Set", "PCRE2", "RE2", "fnmatch"};

/// Mixes in which every pattern has literals at fixed places.
bool HasFixedLiterals(Mix mix) {
    return mix < Mix::SetsFirst;
}

/// Nanoseconds of a decision by engine; "shared" is the library over the rules that fnmatch has.
using Times = std::map<std::string, double>;

struct Measured {
    std::map<std::string, Times> groups;
    Times first; // Of calls that the engine has not met before.
};

/// One rule list, its calls, and the engines that can work on it.
class Contest {
  public:
    /// Chooses the calls, and compares the answers of all engines over them and over others. Throws
    /// at the first difference.
    Contest(Bench const& bench, RuleList list) : bench_(bench), list_(std::move(list)) {
        bench_.Load(list_.rules);
        engines_["library"] = MakeLibrary(bench_.assistant);
        if (HasOtherEngines()) {
            engines_["walk"] = MakeWalk(list_.rules);
            if (list_.rules.size() <= kMostOneByOne) {
                engines_["PCRE2"] = MakePcre2(list_.rules);
                engines_["RE2"] = MakeRe2(list_.rules);
            }
        }
        if (!list_.hasRanges && list_.rules.size() <= kMostOneByOne)
            engines_["fnmatch"] = MakeFnmatch(list_.rules);
        groups_ = MakeCalls(list_,
                            [&](Call const& call) { return engines_.at("library")->Decide(call); });
        MeetFirstCalls();
        std::vector<Call> calls = MakeRandomCalls(list_, 1000000 / (list_.rules.size() + 90));
        for (CallGroup const& group : groups_)
            calls.insert(calls.end(), group.calls.begin(), group.calls.end());
        for (Call& call : calls)
            Compare(call);
    }

    Measured Measure(int rounds, double seconds) {
        for (auto const& [name, engine] : engines_)
            for (CallGroup const& group : groups_)
                benchmark::RegisterBenchmark((name + group.name).c_str(),
                                             [&engine = *engine, &group](benchmark::State& state) {
                                                 Run(state, engine, group);
                                             })
                    ->MinTime(seconds);
        Results results;
        results.RunRounds(rounds);
        Measured measured{{}, first_};
        for (auto const& [name, engine] : engines_)
            for (CallGroup const& group : groups_)
                measured.groups[group.name][name] =
                    results.Median(name + group.name) / kCallsInGroup;
        return measured;
    }

  private:
    /// The lists without ranges of a mix that has some are there for fnmatch alone.
    bool HasOtherEngines() const { return list_.hasRanges || !MixHasRanges(list_.mix); }

    void MeetFirstCalls() {
        if (!HasOtherEngines())
            return;
        bench_.Load(list_.rules);
        first_["library"] = TimeOnce(*engines_.at("library"));
        try {
            engines_["RE2::Set"] = MakeRe2Set(list_.rules);
            first_["RE2::Set"] = TimeOnce(*engines_.at("RE2::Set"));
        } catch (std::runtime_error const&) {
            engines_.erase("RE2::Set"); // It does not compile lists of every length.
        }
    }

    double TimeOnce(Engine& engine) const {
        auto const start = std::chrono::steady_clock::now();
        for (CallGroup const& group : groups_)
            for (Call const& call : group.calls)
                benchmark::DoNotOptimize(engine.IsAllowed(call));
        std::chrono::duration<double, std::nano> const time =
            std::chrono::steady_clock::now() - start;
        return time.count() / static_cast<double>(groups_.size() * kCallsInGroup);
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

    static void Run(benchmark::State& state, Engine& engine, CallGroup const& group) {
        for (Call const& call : group.calls) // Warms the caches; RE2 completes its automata.
            benchmark::DoNotOptimize(engine.IsAllowed(call));
        for (auto _ : state)
            for (Call const& call : group.calls)
                benchmark::DoNotOptimize(engine.IsAllowed(call));
    }

    Bench const& bench_;
    RuleList const list_;
    std::vector<CallGroup> groups_;
    std::map<std::string, std::unique_ptr<Engine>> engines_;
    Times first_;
};

Measured MeasureList(Bench const& bench, Mix mix, std::size_t size) {
    int const rounds = bench.isQuick ? 2 : size <= 1000 ? 7 : 3;
    double const seconds = bench.isQuick ? 0.001 : 0.004;
    Measured measured = Contest(bench, MakeRules(mix, size, true)).Measure(rounds, seconds);
    Measured plain;
    if (MixHasRanges(mix) && size <= kMostOneByOne)
        plain = Contest(bench, MakeRules(mix, size, false)).Measure(rounds, seconds);
    for (auto& [group, times] : measured.groups) {
        times["shared"] = times.at("library");
        if (plain.groups.empty())
            continue;
        times["shared"] = plain.groups.at(group).at("library");
        times["fnmatch"] = plain.groups.at(group).at("fnmatch");
    }
    return measured;
}

/// How many times the library's time an engine takes; nothing when it was not measured.
std::optional<double> Ratio(Times const& times, std::string const& engine) {
    auto const found = times.find(engine);
    if (found == times.end())
        return std::nullopt;
    return found->second / times.at(engine == "fnmatch" ? "shared" : "library");
}

std::string Row(Mix mix, std::size_t size, std::string const& calls, Times const& times) {
    std::string row = fmt::format("{:<15} {:>6} {:<5} {:>8} {:>8}", NameOf(mix), size, calls,
                                  Duration(times.at("library")), Duration(times.at("walk")));
    for (char const* engine : kPeers) {
        std::optional<double> const ratio = Ratio(times, engine);
        row += fmt::format(" {:>9}", ratio ? fmt::format("{:.2f}", *ratio) : "-");
    }
    return row + "\n";
}

Times MeanOf(std::map<std::string, Times> const& groups) {
    Times mean;
    for (auto const& [group, times] : groups)
        for (auto const& [engine, time] : times)
            mean[engine] += time / static_cast<double>(groups.size());
    return mean;
}

using AllMeasured = std::map<Mix, std::map<std::size_t, Measured>>;

/// The smallest value of all rows, of the mixes and sizes that are asked for.
template <typename Value>
double Least(AllMeasured const& all, std::function<bool(Mix, std::size_t)> const& isAsked,
             Value value) {
    double least = std::numeric_limits<double>::max();
    for (auto const& [mix, sizes] : all)
        for (auto const& [size, measured] : sizes)
            for (auto const& [group, times] : measured.groups)
                if (isAsked(mix, size))
                    if (std::optional<double> const one = value(times))
                        least = std::min(least, *one);
    return least;
}

double WorstGrowth(AllMeasured const& all, std::size_t size) {
    double worst = 0;
    for (auto const& [mix, sizes] : all)
        if (HasFixedLiterals(mix) && sizes.count(size) != 0)
            worst = std::max(worst, MeanOf(sizes.at(size).groups).at("library") /
                                        MeanOf(sizes.at(10).groups).at("library"));
    return worst;
}

/// How many times the library's mean an engine takes, over the calls of a mix with fixed literals.
double LeastMeanRatio(AllMeasured const& all, std::size_t size, std::string const& engine) {
    double least = std::numeric_limits<double>::max();
    for (auto const& [mix, sizes] : all)
        if (HasFixedLiterals(mix) && sizes.count(size) != 0)
            if (auto const ratio = Ratio(MeanOf(sizes.at(size).groups), engine))
                least = std::min(least, *ratio);
    return least;
}

void SetTargets(Bench const& bench, AllMeasured const& all) {
    auto const isFixed = [](Mix mix, std::size_t) { return HasFixedLiterals(mix); };
    auto const isOther = [](Mix mix, std::size_t) { return !HasFixedLiterals(mix); };
    auto const isAny = [](Mix, std::size_t) { return true; };
    auto const ratioOf = [](char const* engine) {
        return [engine](Times const& times) { return Ratio(times, engine); };
    };
    Targets& targets = bench.targets;
    targets.AtMost("(a)-(g): 10,000 rules / 10 rules, means", 3, WorstGrowth(all, 10000));
    if (!bench.isQuick)
        targets.AtMost("(a)-(g): 100,000 rules / 10 rules, means", 5, WorstGrowth(all, 100000));
    targets.AtLeast("(a)-(g): RE2::Set / library, worst row", 1,
                    Least(all, isFixed, ratioOf("RE2::Set")));
    targets.AtLeast("(h)-(j): RE2::Set / library, worst row", 1,
                    Least(all, isOther, ratioOf("RE2::Set")));
    targets.AtLeast("(a)-(g): PCRE2 / library, 10,000 rules, means", 100,
                    LeastMeanRatio(all, 10000, "PCRE2"));
    targets.AtLeast(
        "(a)-(g): PCRE2 / library, 10,000 rules, worst row", 100,
        Least(
            all, [](Mix mix, std::size_t size) { return HasFixedLiterals(mix) && size == 10000; },
            ratioOf("PCRE2")));
    for (char const* engine : {"PCRE2", "RE2", "fnmatch"})
        targets.AtLeast(fmt::format("{} / library, worst row", engine), 1,
                        Least(all, isAny, ratioOf(engine)));
    targets.AtLeast(
        "(h)-(j): walk / library, 10,000 rules, worst row", 20,
        Least(
            all, [](Mix mix, std::size_t size) { return !HasFixedLiterals(mix) && size == 10000; },
            ratioOf("walk")));
    targets.AtMost("library / walk, worst row", 1.1, 1 / Least(all, isAny, ratioOf("walk")));
}

std::string TableOfFirstCalls(AllMeasured const& all) {
    std::string table =
        fmt::format("{:<15} {:>6} {:>9} {:>9}\n", "rules", "", "library", "RE2::Set");
    for (auto const& [mix, sizes] : all)
        for (auto const& [size, measured] : sizes) {
            auto const set = measured.first.find("RE2::Set");
            table +=
                fmt::format("{:<15} {:>6} {:>9} {:>9}\n", NameOf(mix), size,
                            Duration(measured.first.at("library")),
                            set == measured.first.end() ? std::string("-") : Duration(set->second));
        }
    return table;
}

/// The means of the mixes' calls against the number of rules.
std::string PlotOf(AllMeasured const& all) {
    std::vector<Panel> panels;
    for (Mix mix : {Mix::Numbers, Mix::Sip, Mix::BothSides, Mix::Middle}) {
        Panel panel{NameOf(mix), {}};
        for (char const* engine : {"library", "walk", "RE2::Set", "PCRE2", "RE2", "fnmatch"}) {
            Curve curve{engine, {}};
            for (auto const& [size, measured] : all.at(mix)) {
                Times const mean = MeanOf(measured.groups);
                if (mean.count(engine) != 0)
                    curve.points.emplace_back(static_cast<double>(size), mean.at(engine));
            }
            panel.curves.push_back(curve);
        }
        panels.push_back(panel);
    }
    return DrawPlot(panels);
}

} // namespace

std::string MeasureDecisions(Bench const& bench) {
    AllMeasured all;
    std::string table =
        fmt::format("{:<15} {:>6} {:<5} {:>8} {:>8}", "rules", "", "calls", "library", "walk");
    for (char const* engine : kPeers)
        table += fmt::format(" {:>9}", engine);
    bench.document.Add("decisions", table + "\n");
    for (Mix mix : kMixes)
        for (std::size_t size : kSizes) {
            if (bench.isQuick && size > kMostOneByOne)
                continue;
            Measured const& measured = all[mix][size] = MeasureList(bench, mix, size);
            std::string rows;
            for (char const* group : kGroups)
                rows += Row(mix, size, group, measured.groups.at(group));
            bench.document.Add("decisions", rows);
        }
    bench.document.Add("first calls", TableOfFirstCalls(all));
    SetTargets(bench, all);
    return PlotOf(all);
}

} // namespace bench
