/// @file
/// Draws curves as an SVG.

#include "plot.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>

#include <fmt/format.h>

#include "report.h"

namespace bench {
namespace {

// Of a panel; the frame of its curves lies within.
constexpr double kWidth = 460;
constexpr double kHeight = 340;
constexpr double kLeft = 64;
constexpr double kTop = 40;
constexpr double kRight = 110;
constexpr double kBottom = 44;

// The decades that the axes show.
constexpr double kFewestRules = 1, kMostRules = 5;
constexpr double kShortestTime = 1, kLongestTime = 8;

double X(double rules) {
    double const part = (std::log10(rules) - kFewestRules) / (kMostRules - kFewestRules);
    return kLeft + part * (kWidth - kLeft - kRight);
}

double Y(double nanoseconds) {
    double const part = (std::log10(nanoseconds) - kShortestTime) / (kLongestTime - kShortestTime);
    return kHeight - kBottom - part * (kHeight - kTop - kBottom);
}

std::string Line(double x1, double y1, double x2, double y2) {
    return fmt::format("<path d='M{:.1f} {:.1f}L{:.1f} {:.1f}' stroke='#ccc'/>\n", x1, y1, x2, y2);
}

std::string Text(double x, double y, char const* anchor, std::string const& color,
                 std::string const& text) {
    return fmt::format("<text x='{:.1f}' y='{:.1f}' text-anchor='{}' fill='{}'>{}</text>\n", x, y,
                       anchor, color, text);
}

std::string DrawAxes(std::string const& title) {
    std::string svg = Text(kLeft, kTop - 16, "start", "#000", title);
    for (double decade = kFewestRules; decade <= kMostRules; ++decade) {
        double const rules = std::pow(10, decade);
        svg += Line(X(rules), kTop, X(rules), kHeight - kBottom);
        svg +=
            Text(X(rules), kHeight - kBottom + 18, "middle", "#444", fmt::format("{:.0f}", rules));
    }
    for (double decade = kShortestTime; decade <= kLongestTime; ++decade) {
        double const time = std::pow(10, decade);
        svg += Line(kLeft, Y(time), X(std::pow(10, kMostRules)), Y(time));
        svg += Text(kLeft - 6, Y(time) + 4, "end", "#444", Duration(time));
    }
    return svg + Text(X(1000), kHeight - 8, "middle", "#444", "rules");
}

/// Names stand behind the ends of their curves, each in a line of its own.
std::string DrawCurves(std::vector<Curve> const& curves,
                       std::map<std::string, std::string> const& colors) {
    std::string svg;
    std::vector<Curve const*> byEnd;
    for (Curve const& curve : curves) {
        std::string path;
        for (auto const& [rules, time] : curve.points)
            path += fmt::format("{}{:.1f} {:.1f}", path.empty() ? 'M' : 'L', X(rules), Y(time));
        svg += fmt::format("<path d='{}' fill='none' stroke='{}' stroke-width='2'/>\n", path,
                           colors.at(curve.name));
        byEnd.push_back(&curve);
    }
    std::sort(byEnd.begin(), byEnd.end(), [](Curve const* a, Curve const* b) {
        return a->points.back().second < b->points.back().second;
    });
    double lowest = kHeight;
    for (Curve const* curve : byEnd) {
        auto const& [rules, time] = curve->points.back();
        lowest = std::min(lowest - 14, Y(time) + 4);
        svg += Text(X(rules) + 6, lowest, "start", colors.at(curve->name), curve->name);
    }
    return svg;
}

} // namespace

std::string DrawPlot(std::vector<Panel> const& panels) {
    static char const* const palette[] = {"#d62728", "#8c8c8c", "#1f77b4",
                                          "#2ca02c", "#9467bd", "#ff7f0e"};
    std::map<std::string, std::string> colors;
    std::string body;
    for (std::size_t i = 0; i < panels.size(); ++i) {
        for (Curve const& curve : panels[i].curves)
            colors.emplace(curve.name, palette[colors.size() % std::size(palette)]);
        body +=
            fmt::format("<g transform='translate({},{})'>\n{}{}</g>\n",
                        kWidth * static_cast<double>(i % 2), kHeight * static_cast<double>(i / 2),
                        DrawAxes(panels[i].title), DrawCurves(panels[i].curves, colors));
    }
    return fmt::format("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 {} {}' "
                       "font-family='sans-serif' font-size='12'>\n"
                       "<rect width='100%' height='100%' fill='#fff'/>\n{}</svg>\n",
                       2 * kWidth, kHeight * static_cast<double>((panels.size() + 1) / 2), body);
}

} // namespace bench
