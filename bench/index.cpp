/// @file
/// Table 5: what the index costs. Loads without it are those of an instance that has lent its list;
/// it stays lent, so this is measured last.

#include <algorithm>
#include <chrono>
#include <map>
#include <vector>

#include <fmt/format.h>

#include "benchmarks.h"
#include "rules.h"

namespace bench {
namespace {

constexpr std::size_t kRules = 10000;
constexpr Mix kMixes[] = {Mix::Numbers, Mix::Sip, Mix::BothSides, Mix::SetsOnly, Mix::Middle};

struct Load {
    double nanoseconds;
    double bytes; // Of the heap, for each rule.
};

/// The median of some loads.
Load MeasureLoad(Bench const& bench, Mix mix) {
    bench.Load({});
    std::size_t const before = LiveBytes();
    bench.Load(MakeRules(mix, kRules, true).rules);
    std::size_t const after = LiveBytes();
    std::vector<double> times;
    for (int i = 0; i < 15; ++i) {
        auto const start = std::chrono::steady_clock::now();
        bench.assistant.ReloadCallRecordingRules();
        std::chrono::duration<double, std::nano> const time =
            std::chrono::steady_clock::now() - start;
        times.push_back(time.count());
    }
    std::nth_element(times.begin(), times.begin() + 7, times.end());
    return {times[7], static_cast<double>(after - before) / kRules};
}

} // namespace

void MeasureIndex(Bench const& bench) {
    std::map<Mix, Load> with;
    for (Mix mix : kMixes)
        with[mix] = MeasureLoad(bench, mix);
    bench.db.GetCallRecordingRules();
    std::string table =
        fmt::format("{:<15} {:>10} {:>10} {:>6} {:>19} {:>19}\n", "10,000 rules", "load", "without",
                    "ratio", "bytes a rule", "of them the index");
    double ratio = 0;
    double bytes = 0;
    for (Mix mix : kMixes) {
        Load const without = MeasureLoad(bench, mix);
        Load const& full = with.at(mix);
        table += fmt::format("{:<15} {:>10} {:>10} {:>6.2f} {:>19.0f} {:>19.0f}\n", NameOf(mix),
                             Duration(full.nanoseconds), Duration(without.nanoseconds),
                             full.nanoseconds / without.nanoseconds, full.bytes,
                             full.bytes - without.bytes);
        ratio = std::max(ratio, full.nanoseconds / without.nanoseconds);
        bytes = std::max(bytes, full.bytes - without.bytes);
    }
    bench.document.Add("index", table);
    bench.targets.AtMost("load with index / without, 10,000 rules, worst mix", 1.4, ratio);
    bench.targets.AtMost("bytes of the index for each rule, worst mix", 64, bytes, "");
}

} // namespace bench
