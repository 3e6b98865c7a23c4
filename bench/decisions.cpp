/// @file
/// What a decision takes: the library and the other engines over the same rules.

#include <algorithm>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <optional>

#include <fmt/format.h>

#include "benchmarks.h"
#include "engine_race.h"
#include "rules.h"

namespace bench {
namespace {

constexpr std::size_t kSizes[] = {10, 100, 1000, 10000, 100000};
constexpr std::size_t kSummarySizes[] = {10, 1000, 10000};
constexpr char const* kGroups[] = {"early", "late", "never"};
constexpr Mix kMixes[] = {Mix::Numbers, Mix::Sip,   Mix::BothSides, Mix::Prefix,   Mix::Extensions,
                          Mix::Domain,  Mix::Tails, Mix::SetsFirst, Mix::SetsOnly, Mix::Middle};
constexpr Mix kPlottedMixes[] = {Mix::Numbers, Mix::Sip, Mix::BothSides, Mix::Middle};
constexpr char const* kPeers[] = {"RE2::Set", "PCRE2", "RE2", "fnmatch"};
constexpr char const* kCurves[] = {"library", "walk", "RE2::Set", "PCRE2", "RE2", "fnmatch"};

/// Whether every pattern of the mix has literals at fixed places.
bool HasFixedLiterals(Mix mix) {
    return mix < Mix::SetsFirst;
}

/// The library's time over rules without ranges, which fnmatch is compared with, is "shared".
Measured MeasureList(Bench const& bench, Mix mix, std::size_t size) {
    Measured measured = EngineRace(bench, MakeRules(mix, size, true)).Measure();
    GroupTimes plain;
    if (MixHasRanges(mix) && size <= kMostOneByOne)
        plain = EngineRace(bench, MakeRules(mix, size, false)).Measure().warm;
    for (auto& [group, times] : measured.warm) {
        times["shared"] = times.at("library");
        if (plain.empty())
            continue;
        times["shared"] = plain.at(group).at("library");
        times["fnmatch"] = plain.at(group).at("fnmatch");
    }
    return measured;
}

/// Returns how many times the library's time an engine takes; nothing when it was not measured.
std::optional<double> Ratio(Times const& times, std::string const& engine) {
    auto const found = times.find(engine);
    if (found == times.end())
        return std::nullopt;
    return found->second / times.at(engine == "fnmatch" ? "shared" : "library");
}

std::string Cell(Times const& times, char const* engine) {
    auto const found = times.find(engine);
    return found == times.end() ? "-" : Duration(found->second);
}

std::string Head() {
    std::string head =
        fmt::format("{:<15} {:>6} {:<5} {:>8} {:>8}", "rules", "", "calls", "library", "walk");
    for (char const* engine : kPeers)
        head += fmt::format(" {:>9}", engine);
    return head + fmt::format(" | {:>8} {:>8} {:>8}\n", "library", "walk", "RE2::Set");
}

std::string Row(Mix mix, std::size_t size, std::string const& calls, Times const& warm,
                Times const& cold) {
    std::string row = fmt::format("{:<15} {:>6} {:<5} {:>8} {:>8}", NameOf(mix), size, calls,
                                  Cell(warm, "library"), Cell(warm, "walk"));
    for (char const* engine : kPeers) {
        std::optional<double> const ratio = Ratio(warm, engine);
        row += fmt::format(" {:>9}", ratio ? fmt::format("{:.2f}", *ratio) : "-");
    }
    return row + fmt::format(" | {:>8} {:>8} {:>8}\n", Cell(cold, "library"), Cell(cold, "walk"),
                             Cell(cold, "RE2::Set"));
}

Times MeanOf(GroupTimes const& groups) {
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
            for (auto const& [group, times] : measured.warm)
                if (isAsked(mix, size))
                    if (std::optional<double> const one = value(times))
                        least = std::min(least, *one);
    return least;
}

double WorstGrowth(AllMeasured const& all, std::size_t size) {
    double worst = 0;
    for (auto const& [mix, sizes] : all)
        if (HasFixedLiterals(mix) && sizes.count(size) != 0)
            worst = std::max(worst, MeanOf(sizes.at(size).warm).at("library") /
                                        MeanOf(sizes.at(10).warm).at("library"));
    return worst;
}

/// How many times the library's mean an engine takes, over the calls of a mix with fixed literals.
double LeastMeanRatio(AllMeasured const& all, std::size_t size, std::string const& engine) {
    double least = std::numeric_limits<double>::max();
    for (auto const& [mix, sizes] : all)
        if (HasFixedLiterals(mix) && sizes.count(size) != 0)
            if (auto const ratio = Ratio(MeanOf(sizes.at(size).warm), engine))
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
        fmt::format("{:<15} {:>6} {:>9} {:>9}\n", "first calls", "", "library", "RE2::Set");
    for (auto const& [mix, sizes] : all)
        for (auto const& [size, measured] : sizes)
            table += fmt::format("{:<15} {:>6} {:>9} {:>9}\n", NameOf(mix), size,
                                 Cell(measured.firstCalls, "library"),
                                 Cell(measured.firstCalls, "RE2::Set"));
    return table;
}

/// The means over the calls of some lists, for the document.
std::string Summary(AllMeasured const& all) {
    std::string table = Head();
    for (auto const& [mix, sizes] : all)
        for (std::size_t size : kSummarySizes) {
            Measured const& measured = sizes.at(size);
            table += Row(mix, size, "mean", MeanOf(measured.warm), MeanOf(measured.cold));
        }
    return table;
}

/// Writes the means of the warm decisions for plot.gnuplot: a block for each mix, a line for each
/// number of rules, a column for each engine, "?" where an engine was not measured.
void WritePlotData(AllMeasured const& all) {
    std::ofstream file("decisions.dat", std::ios::trunc);
    for (Mix mix : kPlottedMixes) {
        for (auto const& [size, measured] : all.at(mix)) {
            Times const mean = MeanOf(measured.warm);
            file << size;
            for (char const* engine : kCurves)
                file << (mean.count(engine) != 0 ? fmt::format(" {:.1f}", mean.at(engine)) : " ?");
            file << '\n';
        }
        file << "\n\n";
    }
}

} // namespace

void MeasureDecisions(Bench const& bench) {
    AllMeasured all;
    bench.document.Add("decisions",
                       "The columns behind the bar are decisions on emptied caches.\n" + Head());
    for (Mix mix : kMixes)
        for (std::size_t size : kSizes) {
            if (bench.isQuick && size > kMostOneByOne)
                continue;
            Measured const& measured = all[mix][size] = MeasureList(bench, mix, size);
            std::string rows;
            for (char const* group : kGroups)
                rows += Row(mix, size, group, measured.warm.at(group), measured.cold.at(group));
            bench.document.Add("decisions", rows);
        }
    bench.document.Add("first calls", TableOfFirstCalls(all));
    bench.document.Add("summary", Summary(all));
    SetTargets(bench, all);
    WritePlotData(all);
}

} // namespace bench
