/// @file
/// How long it takes to say what a list of rules does: for growing lists of several kinds, and for
/// lists made to be hard. Each is asked for a report of every rule, what ten edits change, whether
/// all calls to one number are recorded, and which rules can go.
/// Usage: analysis_bench [LARGEST NUMBER OF RULES]

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <string>

#include <fmt/format.h>

#include "analysis/RuleAnalysis.h"
#include "rules.h"

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

Tally ReportAll(RuleParamsList const& rules, CallKind calls) {
    Tally tally;
    RuleAnalysis analysis(rules, kAnalysisMemory, calls);
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleReport const report = analysis.Report(place, 100);
        tally.hidden += report.standing == RuleReport::kHidden ? 1 : 0;
        tally.undecided += report.standing == RuleReport::kUndecided ? 1 : 0;
        tally.losing += report.standing == RuleReport::kDecides && !report.takenBy.empty() ? 1 : 0;
    }
    return tally;
}

/// Ten edits of the kinds that people make, spread over the list.
RuleParamsList Edited(RuleParamsList rules) {
    for (std::size_t edit = 0; edit < 10; ++edit) {
        std::size_t const place = (edit + 1) * (rules.size() - 1) / 11;
        auto const rule = rules.begin() + static_cast<std::ptrdiff_t>(place);
        switch (edit % 5) {
        case 0: std::swap(rules[place], rules[place / 2]); break;
        case 1: rule->record_to = "elsewhere"; break;
        case 2: rules.erase(rule); break;
        case 3: rules.insert(rule, rules[rules.size() / 2]); break;
        default: rule->called_pattern += '?'; break;
        }
    }
    return rules;
}

void Measure(char const* kind, RuleParamsList const& rules, CallKind calls) {
    Tally tally;
    double const check = Seconds([&] { tally = ReportAll(rules, calls); });
    Comparison comparison;
    RuleParamsList const edited = Edited(rules);
    double const diff =
        Seconds([&] { comparison = Compare(rules, edited, kAnalysisMemory, calls); });
    Proof proof;
    double const prove = Seconds([&] {
        Claim claim{};
        claim.calls = {{"*", CALL_TYPE_ANY}, {"112", CALL_TYPE_NUMBER}};
        claim.isRecorded = true;
        proof = RuleAnalysis(rules, kAnalysisMemory, calls).Prove(claim);
    });
    std::vector<NeedlessRule> needless;
    double const fix =
        Seconds([&] { needless = RuleAnalysis(rules, kAnalysisMemory, calls).FindNeedless(); });
    fmt::print("{:<20}{:>7}{:>9.3f} s{:>8}{:>8}{:>10}{:>9.3f} s{:>6}{:>6}{:>9.3f} s  "
               "{:<10}{:>8.3f} s{:>6}\n",
               kind, rules.size(), check, tally.hidden, tally.losing, tally.undecided, diff,
               comparison.differences.size(), comparison.undecided.size(), prove,
               proof.proved ? (*proof.proved ? "yes" : "no") : "undecided", fix, needless.size());
    std::fflush(stdout);
}

/// A mixture as in a real list: numbers, SIP addresses, and both sides restricted.
RuleParamsList Mixed(std::size_t size) {
    RuleParamsList rules = MakeRules(Mix::Numbers, size / 2, true).rules;
    for (Mix const mix : {Mix::Sip, Mix::BothSides}) {
        RuleParamsList const more = MakeRules(mix, size / 4, true).rules;
        rules.insert(rules.end(), more.begin(), more.end());
    }
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

/// *1????????? and the like: each new one doubles the ways to be in the middle of the others.
RuleParamsList Doubling(std::size_t size) {
    RuleParamsList rules;
    for (std::size_t place = 0; place < size; ++place) {
        Rule rule;
        rule.caller_pattern = "*";
        rule.called_pattern = '*' + std::to_string(place % 10) + "?????????";
        rule.called_pattern += std::string(place / 10, '?');
        rules.push_back(rule);
    }
    return rules;
}

void Run(std::size_t largest) {
    fmt::print("{:<20}{:>7}{:>11}{:>8}{:>8}{:>10}{:>11}{:>6}{:>6}{:>11}  {:<10}{:>10}\n", "list",
               "rules", "check", "hidden", "losing", "undecided", "diff", "pairs", "und.", "prove",
               "", "can go");
    auto const measure = [largest](char const* kind, RuleParamsList rules,
                                   CallKind calls = CallKind::Typed) {
        Distinguish(rules);
        if (rules.size() <= largest)
            Measure(kind, rules, calls);
    };
    for (std::size_t const size : {1000, 10000, 100000}) {
        measure("mixed", Mixed(size));
        measure("mixed, parties", Mixed(size), CallKind::Parties);
        measure("numbers, prefixes", NumbersAndPrefixes(size));
    }
    measure("hostile, 4 digits", Hostile(24, 4));
    measure("hostile, 9 digits", Hostile(40, 9));
    measure("hostile, doubling", Doubling(40));
}

} // namespace
} // namespace bench

int main(int count, char** arguments) {
    bench::Run(count > 1 ? std::stoul(arguments[1]) : 10000);
    return 0;
}
