// Writes the metrics.

#include "Metrics.h"

#include <iterator>

#include <fmt/format.h>

namespace callrecordingd {
namespace {

class Writer {
  public:
    void Family(char const* name, char const* type, char const* help) {
        name_ = name;
        fmt::format_to(to(), "# HELP {} {}\n# TYPE {} {}\n", name, help, name, type);
    }
    template <typename Value>
    void Sample(std::string const& labels, Value value, char const* suffix = "") {
        fmt::format_to(to(), "{}{}{} {}\n", name_, suffix, labels.empty() ? "" : "{" + labels + "}",
                       value);
    }
    std::string const& Text() const { return text_; }

  private:
    std::back_insert_iterator<std::string> to() { return std::back_inserter(text_); }

    std::string text_;
    char const* name_ = "";
};

void AddAnswers(Writer& writer, AnswerCounts::Counts const& counts) {
    writer.Family("callrecording_answers_total", "counter",
                  "Calls asked about, by the answer and the identifier of the rule that decided; a "
                  "rule with the answer no forbids recording.");
    for (auto const& [id, byRule] : counts.byRule) {
        if (byRule.recorded > 0)
            writer.Sample(fmt::format("answer=\"yes\",rule=\"{}\"", id), byRule.recorded);
        if (byRule.forbidden > 0)
            writer.Sample(fmt::format("answer=\"no\",rule=\"{}\"", id), byRule.forbidden);
    }
    writer.Sample("answer=\"no\",rule=\"\"", counts.notRecorded);
    writer.Sample("answer=\"undecided\",rule=\"\"", counts.undecided);

    writer.Family("callrecording_answer_seconds", "histogram",
                  "Time from a parsed question to its decision.");
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < AnswerCounts::kBounds.size(); ++i) {
        sum += counts.buckets[i];
        writer.Sample(fmt::format("le=\"{}\"", AnswerCounts::kBounds[i]), sum, "_bucket");
    }
    writer.Sample("le=\"+Inf\"", counts.All(), "_bucket");
    writer.Sample("", counts.seconds, "_sum");
    writer.Sample("", counts.All(), "_count");
}

} // namespace

std::string MetricsText(LiveRules const& rules, AnswerCounts const& answers,
                        std::uint64_t lostLines) {
    Writer writer;
    AddAnswers(writer, answers.Now());
    if (auto const now = rules.Now()) {
        writer.Family(
            "callrecording_rules_info", "gauge",
            "Always 1; the labels are the state of the rules that decide, and the SHA-256 "
            "of their file.");
        writer.Sample(fmt::format("state=\"{}\",digest=\"{}\"", now->state, now->loaded->digest),
                      1);
        writer.Family("callrecording_rules_timestamp_seconds", "gauge",
                      "Since when these rules decide, in seconds since 1970.");
        writer.Sample("", static_cast<std::int64_t>(now->loaded->time));
        writer.Family("callrecording_rules", "gauge", "Number of rules, disabled ones included.");
        writer.Sample("", now->texts.size());
    }
    LoadHistory const history = rules.History();
    writer.Family("callrecording_loads_total", "counter",
                  "Loads of the rules, failed ones included.");
    writer.Sample("", history.loads);
    writer.Family("callrecording_failed_loads_total", "counter", "Loads of the rules that failed.");
    writer.Sample("", history.failedLoads);
    writer.Family("callrecording_load_failing", "gauge",
                  "1 while the rule file cannot be read, so that older rules decide, or none.");
    writer.Sample("", history.lastFailure.empty() ? 0 : 1);
    writer.Family("callrecording_last_load_timestamp_seconds", "gauge",
                  "When a load last succeeded, in seconds since 1970; 0 for never.");
    writer.Sample("", history.lastTime);
    writer.Family("callrecording_lost_answer_lines_total", "counter",
                  "Answers that could not be appended to the file of --answers.");
    writer.Sample("", lostLines);
    return writer.Text();
}

} // namespace callrecordingd
