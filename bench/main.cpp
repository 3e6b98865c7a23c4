/// @file
/// Measures, prints four tables, and says which targets are met.
/// Usage: callrecording_bench [--quick]

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include "benchmarks.h"

namespace bench {
namespace {

using CallRecordingUtils::CCallRecordingDB;

void Run(bool isQuick) {
    RuleDirectory const directory;
    CallRecordingUtils::CCallRecordingAssistant assistant(false);
    auto const closeDb = [](CCallRecordingDB*) { CCallRecordingDB::CloseInstance(); };
    std::unique_ptr<CCallRecordingDB, decltype(closeDb)> const db(
        CCallRecordingDB::GetInstance(true, false), closeDb);
    Targets targets;
    Bench const bench{directory, assistant, *db, targets, isQuick};
    MeasureDecisions(bench);
    MeasureHostilePatterns(bench);
    MeasureFiles(bench);
    MeasureMemory(bench);
    targets.Print();
}

} // namespace

void Bench::Load(std::vector<Rule> const& rules) const {
    RuleDirectory::Write(directory.RuleFile(), RuleFileText(rules));
    std::size_t loaded = 0;
    bool const isLoaded = assistant.ReloadCallRecordingRules();
    db.VisitRules([&loaded](Rule const&) { ++loaded; });
    if (!isLoaded || loaded != rules.size())
        throw std::runtime_error("the library does not load the rules");
}

} // namespace bench

int main(int argc, char** argv) {
    bool const isQuick = argc == 2 && std::strcmp(argv[1], "--quick") == 0;
    if (argc > 1 && !isQuick) {
        fmt::print(stderr, "Usage: callrecording_bench [--quick]\n");
        return 2;
    }
    try {
        bench::Run(isQuick);
        return 0;
    } catch (std::exception const& failure) {
        fmt::print(stderr, "{}\n", failure.what());
        return 1;
    }
}
