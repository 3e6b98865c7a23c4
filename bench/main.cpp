/// @file
/// Measures, prints the tables, and says which targets are met. With --write the summary is written
/// into a document.
/// Usage: callrecording_bench [--quick] [--write FILE]

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <gnu/libc-version.h>
#include <sys/utsname.h>

#include "benchmarks.h"
#include "engines.h"

namespace bench {
namespace {

using CallRecordingUtils::CCallRecordingDB;

/// Returns the name of the processor, or nothing.
std::string Processor() {
    std::ifstream in("/proc/cpuinfo");
    for (std::string line; std::getline(in, line);)
        if (line.rfind("model name", 0) == 0)
            return line.substr(line.find(':') + 2);
    return "";
}

std::string Machine() {
    utsname system{};
    uname(&system);
    return fmt::format("{} x {}, {} {}, g++ {}, release mode\n"
                       "PCRE2 {}.{}, glibc {}\n",
                       std::thread::hardware_concurrency(), Processor(), system.sysname,
                       system.release, __VERSION__, PCRE2_MAJOR, PCRE2_MINOR,
                       gnu_get_libc_version());
}

/// Measures everything. The summary is written into the document at path unless that is null.
void Run(bool isQuick, char const* path) {
    RuleDirectory const rules;
    CallRecordingUtils::CCallRecordingAssistant assistant(false);
    auto const closeDb = [](CCallRecordingDB*) { CCallRecordingDB::CloseInstance(); };
    std::unique_ptr<CCallRecordingDB, decltype(closeDb)> const db(
        CCallRecordingDB::GetInstance(true, false), closeDb);
    Targets targets;
    Document document;
    Bench const bench{rules, assistant, *db, targets, document, isQuick};
    document.Add("machine", Machine());
    MeasureDecisions(bench);
    MeasureHostilePatterns(bench);
    MeasureFiles(bench);
    MeasureMemory(bench);
    MeasureIndex(bench);
    document.Add("targets", targets.Table());
    if (path != nullptr)
        document.WriteInto(path, {"machine", "summary"});
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
    bool isQuick = false;
    char const* path = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            isQuick = true;
        } else if (std::strcmp(argv[i], "--write") == 0 && i + 1 < argc) {
            path = argv[++i];
        } else {
            fmt::print(stderr, "Usage: callrecording_bench [--quick] [--write FILE]\n");
            return 2;
        }
    }
    try {
        bench::Run(isQuick, path);
        return 0;
    } catch (std::exception const& failure) {
        fmt::print(stderr, "{}\n", failure.what());
        return 1;
    }
}
