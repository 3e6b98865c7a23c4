/// @file
/// A plot of times against numbers of rules.

#ifndef BENCH_PLOT_H
#define BENCH_PLOT_H

#include <string>
#include <utility>
#include <vector>

namespace bench {

struct Curve {
    std::string name;
    std::vector<std::pair<double, double>> points; ///< Rules and nanoseconds.
};

struct Panel {
    std::string title;
    std::vector<Curve> curves;
};

/// Draws the panels side by side, two in a row, with logarithmic axes, as an SVG. Curves of one
/// name have one colour.
std::string DrawPlot(std::vector<Panel> const& panels);

} // namespace bench

#endif
