/// @file
/// Collects what Google Benchmark measures, and the tables that are printed and documented.

#ifndef BENCH_REPORT_H
#define BENCH_REPORT_H

#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

/// The nanoseconds of an iteration of each benchmark, by its name: once for every round.
class Results : public benchmark::BenchmarkReporter {
  public:
    /// Runs all registered benchmarks the given number of times, one after the other in each round,
    /// so that a disturbance of the machine spoils one round of many benchmarks and no median. Then
    /// forgets the benchmarks.
    void RunRounds(int rounds);

    bool Has(std::string const& name) const { return times_.count(name) != 0; }
    double Median(std::string const& name) const;

    bool ReportContext(Context const&) override { return true; }
    void ReportRuns(std::vector<Run> const& runs) override;

  private:
    std::map<std::string, std::vector<double>> times_;
};

/// What is to be reached, what was measured, and whether that is enough.
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

/// What a run says, table by table.
class Document {
  public:
    /// Prints text, and keeps it as the table of a name.
    void Add(std::string const& name, std::string const& text);

    /// Writes every table into the file at path, in the place of what stands there between the
    /// fences of the block that follows the line "<!-- name -->". Throws when a block is missing.
    void WriteInto(std::string const& path) const;

  private:
    std::map<std::string, std::string> tables_;
};

/// Nanoseconds with three figures and the unit that fits.
std::string Duration(double nanoseconds);

} // namespace bench

#endif
