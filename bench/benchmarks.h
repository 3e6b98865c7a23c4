/// @file
/// The measurements. Each function adds its tables to the document, and its targets.

#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "directory.h"
#include "report.h"
#include "rules.h"

namespace bench {

/// What all measurements work with.
struct Bench {
    RuleDirectory const& directory;
    CallRecordingUtils::CCallRecordingAssistant& assistant;
    CallRecordingUtils::CCallRecordingDB& db;
    Targets& targets;
    Document& document;
    bool isQuick;

    /// Loads rules into the library. Throws when it does not load them all.
    void Load(std::vector<Rule> const& rules) const;
};

/// Bytes of the heap in use.
std::size_t LiveBytes();

/// Also writes what the plot shows into decisions.dat.
void MeasureDecisions(Bench const& bench);
void MeasureHostilePatterns(Bench const& bench);
void MeasureFiles(Bench const& bench);
void MeasureMemory(Bench const& bench);
/// Has to be called last: it leaves the database without its index.
void MeasureIndex(Bench const& bench);

} // namespace bench

#endif
