/// @file
/// Times the engines over one rule list.

#ifndef BENCH_ENGINE_RACE_H
#define BENCH_ENGINE_RACE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "benchmarks.h"
#include "engines.h"
#include "rules.h"

namespace bench {

/// Nanoseconds of a decision, by the name of the engine.
using Times = std::map<std::string, double>;

/// For each group of calls the times.
using GroupTimes = std::map<std::string, Times>;

struct Measured {
    GroupTimes warm;  // Decisions that follow each other without a pause.
    GroupTimes cold;  // Decisions on emptied caches.
    Times firstCalls; // Calls that the engine has not seen before.
};

/// Engines that try rule by rule are measured up to this many rules.
constexpr std::size_t kMostOneByOne = 10000;

/// One rule list, its calls, and the engines that can work on it.
class EngineRace {
  public:
    /// Chooses the calls, and compares what all engines decide about them and about others. Throws
    /// at the first difference.
    EngineRace(Bench const& bench, RuleList list);

    Measured Measure();

  private:
    bool HasOtherEngines() const;
    void TimeFirstCalls();
    double TimeOnce(Engine& engine) const;
    void Compare(Call& call);
    void MeasureWarm(GroupTimes& times);
    void MeasureCold(GroupTimes& times);

    Bench const& bench_;
    RuleList const list_;
    std::vector<CallGroup> groups_;
    std::map<std::string, std::unique_ptr<Engine>> engines_;
    Times firstCalls_;
};

} // namespace bench

#endif
