/// @file
/// Collects what Google Benchmark measures, and the tables that are printed.

#ifndef BENCH_REPORT_H
#define BENCH_REPORT_H

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

/// For each benchmark, by its name, the nanoseconds of an iteration: one value a round.
class Results : public benchmark::BenchmarkReporter {
  public:
    /// Runs all registered benchmarks, once each in a round, so that a disturbance of the machine
    /// spoils one round of many benchmarks and no median. Then forgets the benchmarks.
    void RunRounds(int rounds);

    bool Has(std::string const& name) const { return times_.count(name) != 0; }
    double Median(std::string const& name) const;

    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override;

  private:
    std::map<std::string, std::vector<double>> times_;
};

/// The targets: what is to be reached, what was measured, and whether that meets it.
class Targets {
  public:
    void AtLeast(std::string const& what, double bound, double measured, char const* unit = "x");
    void AtMost(std::string const& what, double bound, double measured, char const* unit = "x");
    std::string Table() const;

  private:
    void Add(std::string const& what, std::string const& bound, double measured, char const* unit,
             bool isMet);

    std::string lines_;
};

/// The tables of a run.
class Document {
  public:
    /// Prints text, and appends it to the table with this name.
    void Add(std::string const& name, std::string const& text);

    /// Writes some tables into the file at path, each into the fenced block after the line
    /// "<!-- name -->", whose old text it replaces. Throws when there is no such block.
    void WriteInto(std::string const& path, std::vector<std::string> const& names) const;

  private:
    std::map<std::string, std::string> tables_;
};

/// Nanoseconds with three figures and the unit that fits.
std::string Duration(double nanoseconds);

} // namespace bench

#endif
