/// @file
/// The engines, timed with warm and with emptied caches.

#include "engine_race.h"

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

namespace bench {
namespace {

constexpr char const* kColdEngines[] = {"library", "walk", "RE2::Set"};

/// Nanoseconds on the wall.
template <typename Act>
double TimeOf(Act act) {
    auto const start = std::chrono::steady_clock::now();
    act();
    std::chrono::duration<double, std::nano> const time = std::chrono::steady_clock::now() - start;
    return time.count();
}

/// Fills the caches with other data, as a process does that works between two calls.
void EmptyCaches() {
    constexpr std::size_t kBytes = std::size_t{64} << 20; // Twice a large cache of a processor.
    constexpr std::size_t kLine = 64;
    static std::vector<char> memory(kBytes);
    for (std::size_t at = 0; at < kBytes; at += kLine)
        ++memory[at];
    benchmark::DoNotOptimize(memory.data());
}

double MedianOf(std::vector<double> times) {
    auto const median = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), median, times.end());
    return *median;
}

void RunWarm(benchmark::State& state, Engine& engine, CallGroup const& group) {
    for (Call const& call : group.calls) // Warms the caches; RE2 completes its automata.
        benchmark::DoNotOptimize(engine.IsAllowed(call));
    for (auto _ : state)
        for (Call const& call : group.calls)
            benchmark::DoNotOptimize(engine.IsAllowed(call));
}

} // namespace

EngineRace::EngineRace(Bench const& bench, RuleList list) : bench_(bench), list_(std::move(list)) {
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
    groups_ =
        MakeCalls(list_, [&](Call const& call) { return engines_.at("library")->Decide(call); });
    TimeFirstCalls();
    std::vector<Call> calls = MakeRandomCalls(list_, 1000000 / (list_.rules.size() + 90));
    for (CallGroup const& group : groups_)
        calls.insert(calls.end(), group.calls.begin(), group.calls.end());
    for (Call& call : calls)
        Compare(call);
}

Measured EngineRace::Measure() {
    Measured measured{{}, {}, firstCalls_};
    MeasureWarm(measured.warm);
    MeasureCold(measured.cold);
    return measured;
}

/// Of a mix with ranges there are lists without them, for fnmatch alone.
bool EngineRace::HasOtherEngines() const {
    return list_.hasRanges || !MixHasRanges(list_.mix);
}

void EngineRace::TimeFirstCalls() {
    if (!HasOtherEngines())
        return;
    bench_.Load(list_.rules);
    firstCalls_["library"] = TimeOnce(*engines_.at("library"));
    try {
        engines_["RE2::Set"] = MakeRe2Set(list_.rules);
        firstCalls_["RE2::Set"] = TimeOnce(*engines_.at("RE2::Set"));
    } catch (std::runtime_error const&) {
        engines_.erase("RE2::Set"); // It does not compile lists of every length.
    }
}

double EngineRace::TimeOnce(Engine& engine) const {
    double const time = TimeOf([&] {
        for (CallGroup const& group : groups_)
            for (Call const& call : group.calls)
                benchmark::DoNotOptimize(engine.IsAllowed(call));
    });
    return time / static_cast<double>(groups_.size() * kCallsInGroup);
}

void EngineRace::Compare(Call& call) {
    call.decidedBy = engines_.at("library")->Decide(call);
    for (auto const& [name, engine] : engines_) {
        int const answer = engine->Decide(call);
        if (answer != call.decidedBy)
            throw std::runtime_error(fmt::format(
                "{} decides rule {}, the library rule {} for a call from {}@{}:{} to {}@{}:{}",
                name, answer, call.decidedBy, call.caller.user, call.caller.host, call.caller.port,
                call.called.user, call.called.host, call.called.port));
    }
}

void EngineRace::MeasureWarm(GroupTimes& times) {
    for (auto const& [name, engine] : engines_)
        for (CallGroup const& group : groups_)
            benchmark::RegisterBenchmark((name + group.name).c_str(), [&engine = *engine, &group](
                                                                          benchmark::State& state) {
                RunWarm(state, engine, group);
            })->MinTime(bench_.isQuick ? 0.001 : 0.004);
    Results results;
    results.RunRounds(bench_.isQuick ? 2 : list_.rules.size() <= 1000 ? 7 : 3);
    for (auto const& [name, engine] : engines_)
        for (CallGroup const& group : groups_)
            times[group.name][name] = results.Median(name + group.name) / kCallsInGroup;
}

void EngineRace::MeasureCold(GroupTimes& times) {
    std::size_t const calls = bench_.isQuick ? 5 : 11;
    for (char const* name : kColdEngines)
        for (CallGroup const& group : groups_) {
            auto const engine = engines_.find(name);
            if (engine == engines_.end())
                continue;
            std::vector<double> each;
            for (std::size_t i = 0; i < calls; ++i) {
                EmptyCaches();
                each.push_back(TimeOf(
                    [&] { benchmark::DoNotOptimize(engine->second->IsAllowed(group.calls[i])); }));
            }
            times[group.name][name] = MedianOf(each);
        }
}

} // namespace bench
