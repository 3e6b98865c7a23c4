/// @file
/// The four tables. Each function measures, prints its table and adds its targets.

#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "directory.h"
#include "report.h"
#include "rules.h"

namespace bench {

/// What all of them work with.
struct Bench {
    RuleDirectory const& directory;
    CallRecordingUtils::CCallRecordingAssistant& assistant;
    CallRecordingUtils::CCallRecordingDB& db;
    Targets& targets;
    bool isQuick;

    /// Makes rules the library's. Throws when it does not load them all.
    void Load(std::vector<Rule> const& rules) const;
};

void MeasureDecisions(Bench const& bench);
void MeasureHostilePatterns(Bench const& bench);
void MeasureFiles(Bench const& bench);
void MeasureMemory(Bench const& bench);

} // namespace bench

#endif
