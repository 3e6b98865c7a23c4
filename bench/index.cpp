/// @file
/// What the index costs: for usual rules, and for files made to be slow. Loads without it are those
/// of an instance that has lent its list; it stays lent, so this is measured last.

#include <algorithm>
#include <ctime>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

#include "benchmarks.h"
#include "rules.h"

namespace bench {
namespace {

constexpr std::size_t kRules = 10000;
constexpr Mix kMixes[] = {Mix::Numbers, Mix::Sip, Mix::BothSides, Mix::SetsOnly, Mix::Middle};
constexpr double kAllowed = 5e6; // Nanoseconds that any load may take more.

std::string Repeat(std::string const& text, std::size_t times) {
    std::string repeated;
    while (times-- > 0)
        repeated += text;
    return repeated;
}

/// A file with one kind of pattern. Its sections hold nothing else, so that loading is as fast as
/// it can be.
struct WorstFile {
    char const* name;
    std::size_t rules;
    std::function<std::string(std::mt19937&)> makePattern;

    std::string Text() const {
        std::mt19937 random(1);
        std::string text;
        for (std::size_t i = 0; i < rules; ++i)
            text += fmt::format("{{\ncaller_pattern={}\ncalled_pattern={}\n}}\n",
                                makePattern(random), makePattern(random));
        return text;
    }
};

std::string Digits(std::mt19937& random, std::size_t count) {
    std::string digits;
    while (count-- > 0)
        digits += static_cast<char>('0' + random() % 10);
    return digits;
}

/// A few wildcards and digits: many rules that differ little.
std::string ShortMixture(std::mt19937& random) {
    std::string pattern;
    for (std::size_t n = 1 + random() % 4; n > 0; --n)
        switch (random() % 6) {
        case 0: pattern += '*'; break;
        case 1: pattern += '?'; break;
        case 2: pattern += "[" + Digits(random, 1) + "-9]"; break;
        default: pattern += Digits(random, 1);
        }
    return pattern;
}

std::string Sets(std::mt19937& random, std::size_t count) {
    std::string sets;
    while (count-- > 0)
        sets += "[" + Digits(random, 1) + "," + Digits(random, 1) + "]";
    return sets;
}

std::vector<WorstFile> WorstFiles() {
    auto const repeat = [](char const* text, std::size_t times) {
        return [=](std::mt19937&) { return Repeat(text, times); };
    };
    auto const digits = [](std::string const& start, std::size_t count, std::string const& end) {
        return [=](std::mt19937& random) { return start + Digits(random, count) + end; };
    };
    return {
        {"an odd set of 124 bytes", 3000,
         [](std::mt19937&) { return "*[!1" + Repeat(",-z", 40) + "]"; }},
        {"a set of 890 bytes", 1000,
         [](std::mt19937&) { return "[" + Repeat("1,2,3-5,!4,", 80) + "7]"; }},
        {"a set of 30 a-z", 3000, [](std::mt19937&) { return "[" + Repeat("a-z,", 30) + "7]"; }},
        {"16 range expressions", 20000, repeat("<1-9>", 16)},
        {"50 sets", 20000, repeat("[1]", 50)},
        {"230 stars", 10000, repeat("*", 230)},
        {"115 of *1", 10000, repeat("*1", 115)},
        {"64 KB of sets", 100, repeat("[1-9]", 13000)},
        {"64 KB of stars", 100, repeat("*", 65000)},
        {"64 KB of ranges", 100, [](std::mt19937&) { return "<" + Repeat("1-9,", 16000) + "1>"; }},
        {"64 KB of digits", 100, repeat("1", 65000)},
        {"equal rules", 50000, repeat("*1*", 1)},
        {"5 digits", 50000, digits("", 5, "")},
        {"250 digits", 10000, digits("", 250, "")},
        {"5 digits in the middle", 50000, digits("*", 5, "*")},
        {"5 sets", 50000, [](std::mt19937& random) { return Sets(random, 5); }},
        {"a short mixture", 50000, ShortMixture},
        {"a long list of the same", 200000, ShortMixture},
    };
}

struct Load {
    double nanoseconds; // Of the processor; the shortest of some loads.
    double bytes;       // Of the heap, for each rule.
};

Load MeasureLoad(Bench const& bench, std::string const& ruleFile, std::size_t rules) {
    bench.Load({});
    std::size_t const before = LiveBytes();
    RuleDirectory::Write(bench.directory.RuleFile(), ruleFile);
    std::clock_t shortest = 0;
    for (int i = 0; i < (bench.isQuick ? 4 : 10); ++i) {
        std::clock_t const start = std::clock();
        if (!bench.assistant.ReloadCallRecordingRules())
            throw std::runtime_error("the library does not load the rules");
        std::clock_t const time = std::clock() - start;
        shortest = i == 0 ? time : std::min(shortest, time);
    }
    return {static_cast<double>(shortest) * 1e9 / CLOCKS_PER_SEC,
            static_cast<double>(LiveBytes() - before) / static_cast<double>(rules)};
}

using Loads = std::map<std::string, Load>;

Loads MeasureLoads(Bench const& bench) {
    Loads loads;
    for (Mix mix : kMixes)
        loads[NameOf(mix)] =
            MeasureLoad(bench, RuleFileText(MakeRules(mix, kRules, true).rules), kRules);
    for (WorstFile const& file : WorstFiles())
        loads[file.name] = MeasureLoad(bench, file.Text(), file.rules);
    return loads;
}

void AddMixes(Bench const& bench, Loads const& with, Loads const& without) {
    std::string table =
        fmt::format("{:<15} {:>10} {:>10} {:>6} {:>19} {:>19}\n", "10,000 rules", "load", "without",
                    "ratio", "bytes a rule", "of them the index");
    double worstRatio = 0;
    double mostBytes = 0;
    for (Mix mix : kMixes) {
        Load const& full = with.at(NameOf(mix));
        Load const& bare = without.at(NameOf(mix));
        double const ratio = full.nanoseconds / bare.nanoseconds;
        double const bytes = full.bytes - bare.bytes;
        table += fmt::format("{:<15} {:>10} {:>10} {:>6.2f} {:>19.0f} {:>19.0f}\n", NameOf(mix),
                             Duration(full.nanoseconds), Duration(bare.nanoseconds), ratio,
                             full.bytes, bytes);
        worstRatio = std::max(worstRatio, ratio);
        mostBytes = std::max(mostBytes, bytes);
    }
    bench.document.Add("index", table);
    bench.targets.AtMost("load with index / without, 10,000 rules, worst mix", 1.4, worstRatio);
    bench.targets.AtMost("bytes of the index for each rule, worst mix", 64, mostBytes, "");
}

/// The time that is allowed is twice that of a load without the index, and 5 ms.
void AddWorstFiles(Bench const& bench, Loads const& with, Loads const& without) {
    std::string table = fmt::format("{:<24} {:>6} {:>10} {:>10} {:>6} {:>16}\n", "worst files",
                                    "rules", "load", "without", "ratio", "of what is allowed");
    double worst = 0;
    for (WorstFile const& file : WorstFiles()) {
        double const full = with.at(file.name).nanoseconds;
        double const bare = without.at(file.name).nanoseconds;
        double const part = full / (2 * bare + kAllowed);
        table += fmt::format("{:<24} {:>6} {:>10} {:>10} {:>6.2f} {:>16.2f}\n", file.name,
                             file.rules, Duration(full), Duration(bare), full / bare, part);
        worst = std::max(worst, part);
    }
    bench.document.Add("worst files", table);
    bench.targets.AtMost("load with index / (2 x without + 5 ms), worst file", 1, worst);
}

} // namespace

void MeasureIndex(Bench const& bench) {
    Loads const with = MeasureLoads(bench);
    bench.db.GetCallRecordingRules();
    Loads const without = MeasureLoads(bench);
    AddMixes(bench, with, without);
    AddWorstFiles(bench, with, without);
}

} // namespace bench
