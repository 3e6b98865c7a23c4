/// @file
/// Patterns made to cost time, against the length of the address.

#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "benchmarks.h"
#include "engines.h"

namespace bench {
namespace {

constexpr std::array<std::size_t, 7> kLengths{64, 128, 256, 512, 1024, 2048, 4096};
constexpr std::size_t kFirstFitted = 3; // For shorter ones constant costs hide the growth.
constexpr char const* kEngines[] = {"decision", "with counts", "PCRE2", "RE2"};

std::string Repeat(std::string const& text, std::size_t times) {
    std::string repeated;
    while (times-- > 0)
        repeated += text;
    return repeated;
}

struct Family {
    char const* name;
    std::string piece;
    std::size_t count;
    std::string start;
    std::string end;
    char taken;   // A character that the piece can take,
    char refused; // and one that it cannot.

    std::string Title() const { return fmt::format("{} x {}", name, count); }
    std::string Pattern() const { return start + Repeat(piece, count) + end; }

    /// Three addresses: nothing but what the pieces take; the same with the right end in the
    /// middle; and again and again one character less than the pieces need, with the right end at
    /// the end, so that its last character does not give it away.
    std::array<std::string, 3> Addresses(std::size_t length) const {
        std::string const run(length, taken);
        std::string middle = run;
        middle[length / 2] = 'b';
        return {run, middle, Scarce(length)};
    }

  private:
    std::string Scarce(std::size_t length) const {
        std::string address(length, refused);
        for (std::size_t i = 0; i < length; ++i) {
            // The "a" can be anywhere, the texts of range expressions have to be side by side.
            bool const takes = piece == "*a" ? i + 1 < count : i % count != 0;
            if (takes)
                address[i] = taken;
        }
        address.back() = 'b';
        return address;
    }
};

// Items between ends of the same width accept digits only, in every engine.
constexpr char const* kRange = "<1-9,10-99,100-999>";

std::vector<Family> Families() {
    std::vector<Family> families;
    for (std::size_t count : {10, 20, 40})
        families.push_back({"\"*a\"", "*a", count, "", "*b", 'a', 'x'});
    for (std::size_t count : {10, 20, 30})
        families.push_back({"range expression", kRange, count, "*", "*b", '1', 'x'});
    return families;
}

using Matcher = std::function<int(std::string const&)>; // Yes 1, no 0; less when it gave up.

Matcher MakeMatcher(std::string const& engine, std::string const& pattern, Bench const& bench) {
    auto const& assistant = bench.assistant;
    if (engine == "decision")
        return [&assistant, pattern](std::string const& address) {
            CallParams const params{address, {}, "", ""};
            return assistant.IsSideMatched(params, CALL_TYPE_NUMBER, pattern, CALL_TYPE_NUMBER);
        };
    if (engine == "with counts")
        return [&assistant, pattern](std::string const& address) {
            CallRecordingUtils::wild_card_counts counts;
            return assistant.IsMatching(address, pattern, counts);
        };
    if (engine == "RE2")
        return [regex = std::make_shared<Re2Pattern>(pattern)](std::string const& address) {
            return regex->Matches(address);
        };
    return [regex = std::make_shared<Pcre2Pattern>(pattern)](std::string const& address) {
        int const result = regex->Run(address);
        return result >= 0 ? 1 : result == PCRE2_ERROR_NOMATCH ? 0 : -1;
    };
}

/// Returns whether the engine has an answer for every address. Throws when one is wrong.
bool Answers(Family const& family, std::size_t length, Matcher const& matcher,
             Matcher const& library) {
    for (std::string const& address : family.Addresses(length)) {
        int const answer = matcher(address);
        if (answer < 0)
            return false;
        if (answer != library(address))
            throw std::runtime_error("engines differ over " + family.Pattern());
    }
    return true;
}

std::string Name(char const* engine, Family const& family, std::size_t length) {
    return fmt::format("{} {} {}", engine, family.Title(), length);
}

void Register(Bench const& bench, Family const& family, char const* engine, std::size_t length) {
    auto const run = [matcher = MakeMatcher(engine, family.Pattern(), bench),
                      addresses = family.Addresses(length)](benchmark::State& state) {
        for (auto _ : state)
            for (std::string const& address : addresses)
                benchmark::DoNotOptimize(matcher(address));
    };
    benchmark::RegisterBenchmark(Name(engine, family, length).c_str(), run)
        ->MinTime(bench.isQuick ? 0.0005 : 0.002);
}

/// Returns the exponent of the growth: the slope of the straight line through the logarithms that
/// least squares give.
double Growth(std::vector<double> const& times) {
    double sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
    std::size_t const count = kLengths.size() - kFirstFitted;
    for (std::size_t i = kFirstFitted; i < kLengths.size(); ++i) {
        double const x = std::log(static_cast<double>(kLengths[i]));
        double const y = std::log(times[i]);
        sumX += x, sumY += y, sumXX += x * x, sumXY += x * y;
    }
    double const n = static_cast<double>(count);
    return (n * sumXY - sumX * sumY) / (n * sumXX - sumX * sumX);
}

std::string Head() {
    std::string head = fmt::format("{:<21} {:<11}", "", "");
    for (std::size_t length : kLengths)
        head += fmt::format(" {:>9}", length);
    return head + fmt::format(" {:>7}\n", "growth");
}

/// Adds a row to table, and returns the growth.
double AddRow(std::string& table, Results const& results, std::set<std::string> const& givenUp,
              Family const& family, char const* engine) {
    table += fmt::format("{:<21} {:<11}", family.Title(), engine);
    std::vector<double> times;
    bool hasAnswers = true;
    for (std::size_t length : kLengths) {
        std::string const name = Name(engine, family, length);
        bool const isAnswer = givenUp.count(name) == 0;
        times.push_back(results.Median(name));
        std::string const time = Duration(times.back());
        table += fmt::format(" {:>9}", isAnswer ? time : "(" + time + ")");
        hasAnswers = hasAnswers && isAnswer;
    }
    double const growth = Growth(times);
    table += fmt::format(" {:>7}\n", hasAnswers ? fmt::format("{:.2f}", growth) : "-");
    return growth;
}

} // namespace

void MeasureHostilePatterns(Bench const& bench) {
    Results results;
    std::set<std::string> givenUp;
    for (Family const& family : Families()) {
        Matcher const library = MakeMatcher("with counts", family.Pattern(), bench);
        for (char const* engine : kEngines) {
            Matcher const matcher = MakeMatcher(engine, family.Pattern(), bench);
            for (std::size_t length : kLengths) {
                if (!Answers(family, length, matcher, library))
                    givenUp.insert(Name(engine, family, length));
                Register(bench, family, engine, length);
            }
        }
    }
    results.RunRounds(bench.isQuick ? 3 : 7);

    std::string table = Head();
    for (Family const& family : Families()) {
        for (char const* engine : kEngines) {
            double const growth = AddRow(table, results, givenUp, family, engine);
            if (engine == kEngines[0] || engine == kEngines[1])
                bench.targets.AtMost(fmt::format("growth of {}, {}", family.Title(), engine), 2,
                                     growth, "");
        }
    }
    bench.document.Add("hostile", table);
}

} // namespace bench
