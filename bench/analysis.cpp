/// @file
/// How long it takes to find out what a list of rules does, for growing lists of several kinds and
/// for lists made to be hard: a report about every rule, what changes when two rules are swapped,
/// and whether all calls to one number are recorded. Usage: analysis_bench

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>

#include <fmt/format.h>

#include "analysis/RuleAnalysis.h"
#include "rules.h"
#include "validation/SidePattern.h"

namespace bench {
namespace {

using namespace CallRecordingUtils;

/// Returns the processor time that it takes, since other work of the machine disturbs that less.
double Seconds(std::function<void()> const& what) {
    std::clock_t const begin = std::clock();
    what();
    return static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

struct Tally {
    std::size_t hidden = 0;
    std::size_t undecided = 0;
    std::size_t losing = 0; // Rules before them take some of their calls.
};

Tally ReportAll(RuleParamsList const& rules) {
    Tally tally;
    RuleAnalysis analysis(rules);
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleReport const report = analysis.Report(place, 100);
        tally.hidden += report.standing == RuleReport::kHidden ? 1 : 0;
        tally.undecided += report.standing == RuleReport::kUndecided ? 1 : 0;
        tally.losing += report.standing == RuleReport::kDecides && !report.takenBy.empty() ? 1 : 0;
    }
    return tally;
}

void Measure(char const* kind, RuleParamsList const& rules) {
    Tally tally;
    double const check = Seconds([&] { tally = ReportAll(rules); });
    RuleParamsList swapped = rules;
    std::swap(swapped[rules.size() / 3], swapped[rules.size() / 2]);
    Comparison comparison;
    double const diff = Seconds([&] { comparison = Compare(rules, swapped); });
    Proof proof;
    double const prove = Seconds([&] {
        proof = RuleAnalysis(rules).Prove({{{"*", CALL_TYPE_ANY}, {"112", 0}}, Claim::kRecorded});
    });
    auto const word = [](std::optional<bool> answer, char const* yes, char const* no) {
        return answer ? (*answer ? yes : no) : "undecided";
    };
    fmt::print("{:<20}{:>7}{:>9.3f} s{:>8}{:>8}{:>10}{:>9.3f} s  {:<10}{:>8.3f} s  {}\n", kind,
               rules.size(), check, tally.hidden, tally.losing, tally.undecided, diff,
               word(comparison.same, "same", "differs"), prove, word(proof.proved, "yes", "no"));
    std::fflush(stdout);
}

/// A mixture as in a real list: numbers, SIP addresses, and both sides restricted.
RuleParamsList Mixed(std::size_t size) {
    RuleParamsList rules = MakeRules(Mix::Numbers, size / 2, true).rules;
    for (Mix const mix : {Mix::Sip, Mix::BothSides}) {
        RuleParamsList const more = MakeRules(mix, size / 4, true).rules;
        rules.insert(rules.end(), more.begin(), more.end());
    }
    auto const isMalformed = [](Rule const& rule) {
        return ExplainStored(rule.caller_pattern, rule.caller_call_type) ||
               ExplainStored(rule.called_pattern, rule.called_call_type);
    };
    rules.erase(std::remove_if(rules.begin(), rules.end(), isMalformed), rules.end());
    std::shuffle(rules.begin(), rules.end(), std::mt19937(1));
    return rules;
}

/// Numbers and prefixes, half of them for the calling side.
RuleParamsList NumbersAndPrefixes(std::size_t size) {
    std::mt19937 random(1);
    RuleParamsList rules;
    for (std::size_t place = 0; place < size; ++place) {
        std::string pattern = std::to_string(2 + random() % 8);
        for (std::size_t digits = 3 + random() % 4; digits > 0; --digits)
            pattern += static_cast<char>('0' + random() % 10);
        if (random() % 4 == 0)
            pattern = "00" + pattern + '*';
        Rule rule;
        rule.caller_pattern = rule.called_pattern = "*";
        bool const isCaller = random() % 2 == 0;
        (isCaller ? rule.caller_pattern : rule.called_pattern) = pattern;
        (isCaller ? rule.caller_call_type : rule.called_call_type) = CALL_TYPE_NUMBER;
        rules.push_back(rule);
    }
    return rules;
}

/// *1*2*3* and so on, in different orders, so that each rule multiplies the number of states.
RuleParamsList Hostile(std::size_t size, std::size_t digits) {
    std::mt19937 random(1);
    std::string order = std::string("123456789").substr(0, digits);
    RuleParamsList rules;
    for (std::size_t place = 0; place < size; ++place) {
        std::shuffle(order.begin(), order.end(), random);
        Rule rule;
        rule.caller_pattern = "*";
        rule.called_pattern = "*";
        for (char const digit : order)
            rule.called_pattern += std::string(1, digit) + '*';
        rules.push_back(rule);
    }
    return rules;
}

void Distinguish(RuleParamsList& rules) {
    for (std::size_t place = 0; place < rules.size(); ++place)
        rules[place].record_to = std::to_string(place);
}

void Run() {
    fmt::print("{:<20}{:>7}{:>11}{:>8}{:>8}{:>10}{:>11}  {:<10}{:>10}\n", "list", "rules", "check",
               "hidden", "losing", "undecided", "diff", "", "prove");
    auto const measure = [](char const* kind, RuleParamsList rules) {
        Distinguish(rules);
        Measure(kind, rules);
    };
    for (std::size_t const size : {250, 500, 1000, 2000})
        measure("mixed", Mixed(size));
    for (std::size_t const size : {1000, 2500, 5000, 10000})
        measure("numbers, prefixes", NumbersAndPrefixes(size));
    measure("hostile, 4 digits", Hostile(24, 4));
    measure("hostile, 9 digits", Hostile(40, 9));
}

} // namespace
} // namespace bench

int main() {
    bench::Run();
    return 0;
}
