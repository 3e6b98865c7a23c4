// Draws the chart. The bars stretch to the width of the page; the labels around them are text of
// the page, so that they stay readable on a telephone.

#include "records/page/Chart.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "records/page/Cells.h"
#include "records/page/Html.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostBars = 100;
constexpr std::size_t kNamed = 6; // Rules with a colour of their own.

/// What is drawn in one colour.
struct Series {
    std::string name;
    std::string style; // Its class.
};

/// The colours, and which one each decision has.
class Legend {
  public:
    Legend(Timeline const& timeline, RuleList const& rules) {
        std::vector<std::pair<std::uint64_t, Decision>> byCalls;
        for (auto const& [decision, calls] : timeline.Totals())
            if (decision != kNoRule)
                byCalls.emplace_back(calls, decision);
        std::sort(byCalls.begin(), byCalls.end(), [](auto const& left, auto const& right) {
            return left.first != right.first ? left.first > right.first
                                             : left.second < right.second;
        });
        for (std::size_t i = 0; i < byCalls.size() && i < kNamed; ++i)
            named_.push_back(byCalls[i].second);
        std::sort(named_.begin(), named_.end()); // As in the table of rules.
        for (Decision const decision : named_)
            series_.push_back({RuleHtml(rules[decision]), fmt::format("s{}", series_.size())});
        series_.push_back({"other rules", "others"});
        series_.push_back({"taken by no rule", "none"});
        hasOthers_ = byCalls.size() > kNamed;
        hasNone_ = timeline.Totals().count(kNoRule) != 0;
    }

    std::size_t Of(Decision decision) const {
        auto const at = std::find(named_.begin(), named_.end(), decision);
        return static_cast<std::size_t>(at - named_.begin()) + (decision == kNoRule ? 1 : 0);
    }

    std::vector<Series> const& All() const { return series_; }

    std::string Html() const {
        std::string html = "<ul class=\"legend\">";
        for (std::size_t const i : Shown())
            html +=
                fmt::format("<li><i class=\"{}\"></i>{}</li>", series_[i].style, series_[i].name);
        return html + "</ul>";
    }

    /// The series that have calls.
    std::vector<std::size_t> Shown() const {
        std::vector<std::size_t> shown;
        for (std::size_t i = 0; i < series_.size(); ++i)
            if (i < named_.size() || (i == named_.size() ? hasOthers_ : hasNone_))
                shown.push_back(i);
        return shown;
    }

  private:
    std::vector<Decision> named_;
    std::vector<Series> series_;
    bool hasOthers_ = false;
    bool hasNone_ = false;
};

std::string StretchName(CallTime width) {
    CallTime const hours = width / 3600;
    return hours == 1                   ? "an hour"
           : hours == 24                ? "a day"
           : hours == CallTime{7} * 24  ? "a week"
           : hours == CallTime{28} * 24 ? "four weeks"
                                        : "52 weeks";
}

std::string LabelOf(CallTime begin, CallTime width) {
    return TimeText(begin).substr(0, width < CallTime{24} * 3600 ? 16 : 10);
}

/// The least of 2, 4, 6, 8 and 10 times a power of ten that is at least most: the number at the top
/// of the chart, whose half is a whole number too.
std::uint64_t RoundTop(std::uint64_t most) {
    for (std::uint64_t power = 1;; power *= 10)
        for (std::uint64_t const step : {2, 4, 6, 8, 10})
            if (step * power >= most)
                return step * power;
}

class Chart {
  public:
    Chart(Timeline const& timeline, RuleList const& rules)
        : timeline_(timeline), legend_(timeline, rules) {
        for (auto const& [begin, counts] : timeline.Stretches()) {
            std::uint64_t sum = 0;
            for (auto const& entry : counts)
                sum += entry.second;
            most_ = std::max(most_, sum);
        }
        most_ = RoundTop(most_);
        first_ = timeline.Stretches().begin()->first;
        bars_ = (timeline.Stretches().rbegin()->first - first_) / timeline.Width() + 1;
    }

    std::string Html() const {
        return fmt::format("<p>Each bar is {}.</p>{}<div class=\"chart\"><div class=\"scale\">"
                           "<span>{}</span><span>{}</span><span>0</span></div>{}<div "
                           "class=\"times\">{}</div></div>\n{}",
                           StretchName(timeline_.Width()), legend_.Html(), Grouped(most_),
                           Grouped(most_ / 2), Svg(), Times(),
                           Details("The numbers of the chart", Numbers(), false));
    }

  private:
    std::string Svg() const {
        std::string svg = fmt::format(
            "<svg role=\"img\" aria-label=\"Calls over time by rule\" viewBox=\"0 0 {} 100\" "
            "preserveAspectRatio=\"none\"><path class=\"grid\" d=\"M0 0H{}M0 50H{}M0 100H{}\"/>",
            bars_, bars_, bars_, bars_);
        for (auto const& [begin, counts] : timeline_.Stretches())
            AddBar(svg, begin, counts);
        return svg + "</svg>";
    }

    void AddBar(std::string& svg, CallTime begin, Timeline::Counts const& counts) const {
        std::vector<std::uint64_t> const bySeries = BySeries(counts);
        double top = 100;
        for (std::size_t i = 0; i < bySeries.size(); ++i) {
            if (bySeries[i] == 0)
                continue;
            double const height =
                100 * static_cast<double>(bySeries[i]) / static_cast<double>(most_);
            top -= height;
            svg += fmt::format("<rect class=\"{}\" x=\"{}.1\" y=\"{:.3f}\" width=\".8\" "
                               "height=\"{:.3f}\"><title>{}: {}, {} calls</title></rect>",
                               legend_.All()[i].style, (begin - first_) / timeline_.Width(), top,
                               height, LabelOf(begin, timeline_.Width()), legend_.All()[i].name,
                               Grouped(bySeries[i]));
        }
    }

    std::string Numbers() const {
        std::vector<std::string> headings{"From"};
        for (std::size_t const series : legend_.Shown())
            headings.push_back("#" + legend_.All()[series].name);
        HtmlTable table("over-time", "Calls over time, by what decided them", headings);
        for (auto const& [begin, counts] : timeline_.Stretches()) {
            std::vector<std::uint64_t> const calls = BySeries(counts);
            std::string cells = Cell(LabelOf(begin, timeline_.Width()));
            for (std::size_t const series : legend_.Shown())
                cells += fmt::format("<td class=\"number\" data-name=\"{}\">{}</td>",
                                     legend_.All()[series].name, Grouped(calls[series]));
            table.Add(cells);
        }
        return table.Html();
    }

    std::vector<std::uint64_t> BySeries(Timeline::Counts const& counts) const {
        std::vector<std::uint64_t> bySeries(legend_.All().size());
        for (auto const& [decision, calls] : counts)
            bySeries[legend_.Of(decision)] += calls;
        return bySeries;
    }

    /// Up to five labels, evenly spaced; a narrow page shows the first, the middle and the last.
    std::string Times() const {
        std::string html;
        CallTime const steps = std::min<CallTime>(4, bars_ - 1);
        for (CallTime i = 0; i <= steps; ++i) {
            CallTime const bar = steps > 0 ? (bars_ - 1) * i / steps : 0;
            html += fmt::format("<span style=\"left:{:.2f}%\">{}</span>",
                                100 * (static_cast<double>(bar) + .5) / static_cast<double>(bars_),
                                LabelOf(first_ + bar * timeline_.Width(), timeline_.Width()));
        }
        return html;
    }

    Timeline const& timeline_;
    Legend legend_;
    std::uint64_t most_ = 1;
    CallTime first_ = 0;
    CallTime bars_ = 1;
};

} // namespace

std::string RuleHtml(Rule const& rule) {
    std::string const name = fmt::format("rule {}", rule.callrecordingrule_id);
    return rule.description.empty() ? name : name + ", " + Escaped(rule.description);
}

std::string ChartOf(ReplayReport const& report, RuleList const& rules) {
    Timeline timeline = report.timeline;
    std::uint64_t const stragglers = timeline.LeaveOutStragglers();
    timeline.WidenTo(kMostBars);
    if (timeline.Stretches().empty())
        return "";
    std::string html = Chart(timeline, rules).Html();
    std::uint64_t drawn = 0;
    for (auto const& entry : timeline.Totals())
        drawn += entry.second;
    std::pair<std::uint64_t, char const*> const leftOut[] = {
        {stragglers, "far before or after all others"},
        {timeline.Outside(), "before 1990 or after 2089"},
        {report.WithoutRules(), "that were not decided"},
        {report.all.calls - drawn - stragglers - timeline.Outside() - report.WithoutRules(),
         "without a time"}};
    for (auto const& [calls, what] : leftOut)
        if (calls > 0)
            html += fmt::format("<p>Not drawn: {} calls {}.</p>\n", Grouped(calls), what);
    return html;
}

} // namespace CallRecordingUtils
