/// @file
/// Medians, the table of targets, and the document.

#include "report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fmt/format.h>

namespace bench {

void Results::RunRounds(int rounds) {
    for (int round = 0; round < rounds; ++round)
        benchmark::RunSpecifiedBenchmarks(this);
    benchmark::ClearRegisteredBenchmarks();
}

void Results::ReportRuns(std::vector<Run> const& runs) {
    for (Run const& run : runs) {
        // Processor time, which other processes disturb least, unless a benchmark takes its own
        // time.
        bool const isTimed = !run.run_name.time_type.empty();
        times_[run.run_name.function_name].push_back(isTimed ? run.GetAdjustedRealTime()
                                                             : run.GetAdjustedCPUTime());
    }
}

double Results::Median(std::string const& name) const {
    std::vector<double> times = times_.at(name);
    auto const middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

void Targets::AtLeast(std::string const& what, double bound, double measured, char const* unit) {
    Add(what, fmt::format(">= {:g}{}", bound, unit), measured, unit, measured >= bound);
}

void Targets::AtMost(std::string const& what, double bound, double measured, char const* unit) {
    Add(what, fmt::format("<= {:g}{}", bound, unit), measured, unit, measured <= bound);
}

void Targets::Add(std::string const& what, std::string const& bound, double measured,
                  char const* unit, bool isMet) {
    lines_ += fmt::format("{:<60} {:>9} {:>9.2f}{:<3} {}\n", what, bound, measured, unit,
                          isMet ? "yes" : "NO");
}

std::string Targets::Table() const {
    return fmt::format("{:<60} {:>9} {:>12} {}\n{}", "Targets", "target", "measured   ", "met",
                       lines_);
}

void Document::Add(std::string const& name, std::string const& text) {
    fmt::print("\n{}", text);
    std::fflush(stdout);
    tables_[name] += text;
}

void Document::WriteInto(std::string const& path, std::vector<std::string> const& names) const {
    std::ifstream in(path);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (std::string const& name : names) {
        std::string const mark = fmt::format("<!-- {} -->\n```\n", name);
        std::size_t const begin = text.find(mark);
        std::size_t const end = text.find("```", begin + mark.size());
        if (begin == std::string::npos || end == std::string::npos)
            throw std::runtime_error(fmt::format("{}: no block for {}", path, name));
        text.replace(begin + mark.size(), end - begin - mark.size(), tables_.at(name));
    }
    std::ofstream out(path, std::ios::trunc);
    if (!out.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
        throw std::runtime_error(path + ": cannot be written");
}

std::string Duration(double nanoseconds) {
    static char const* const units[] = {"ns", "us", "ms", "s"};
    int unit = 0;
    while (nanoseconds >= 999.5 && unit < 3) {
        nanoseconds /= 1000;
        ++unit;
    }
    int const decimals = nanoseconds < 9.995 ? 2 : nanoseconds < 99.95 ? 1 : 0;
    return fmt::format("{:.{}f} {}", nanoseconds, decimals, units[unit]);
}

} // namespace bench
