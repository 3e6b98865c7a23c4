// Puts the page together, section by section.

#include "StatusPage.h"

#include <algorithm>
#include <ctime>
#include <numeric>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "administration/inspection/StoredRules.h"
#include "calls/RuleFit.h"
#include "model/CallTypeNames.h"
#include "records/page/Html.h"
#include "records/page/PageStyle.h"
#include "validation/SidePattern.h"

namespace callrecordingd {

using namespace CallRecordingUtils;

namespace {

constexpr char kFormStyle[] = R"(
form { display: flex; flex-wrap: wrap; gap: .6rem 1rem; align-items: end; margin: .6rem 0; }
label { display: grid; gap: .15rem; color: var(--dim); font-size: .85rem; flex: 1 1 14rem; }
input, button { font: inherit; padding: .35rem .6rem; color: var(--text); background: var(--back);
  border: 1px solid var(--dim); border-radius: .3rem; min-width: 0; }
#answer { border-left: 4px solid var(--bar); padding: .3rem .8rem; }
)";

std::string TimeText(std::int64_t seconds) {
    if (seconds == 0)
        return "never";
    return fmt::format("{:%Y-%m-%d %H:%M:%S %z}",
                       fmt::localtime(static_cast<std::time_t>(seconds)));
}

std::string NameHtml(CallRecordingRuleParams const& rule) {
    std::string name = fmt::format("rule {}", rule.callrecordingrule_id);
    return rule.description.empty() ? name : name + ", " + Escaped(rule.description);
}

std::string OutcomeText(CallRecordingRuleParams const& rule) {
    if (ForbidsRecording(rule))
        return "not to be recorded";
    return rule.record_to.empty() ? "recorded" : "recorded to " + Escaped(rule.record_to);
}

std::string SideHtml(std::string const& pattern, CallType type) {
    return fmt::format("{} {}", CallTypeName(type), Escaped(ToEntry(pattern, type)));
}

class Page {
  public:
    Page(LiveRules const& rules, AnswerCounts::Counts counts)
        : rules_(rules), now_(rules.Now()), counts_(std::move(counts)) {}

    void Begin(std::int64_t started) {
        html_ =
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<title>Which calls are recorded</title>\n<link rel=\"icon\" href=\"data:,\">\n<style>";
        html_ += kPageStyle;
        html_ += kFormStyle;
        html_ += "</style>\n</head>\n<body>\n<h1>Which calls are recorded</h1>\n<dl>\n";
        LoadHistory const history = rules_.History();
        Fact("Rule file", Escaped(rules_.Path()));
        Fact("State", now_ == nullptr ? "no rules were read yet: every call is undecided"
                                      : fmt::format("<code>{}</code>, {} rules", now_->state,
                                                    Grouped(now_->texts.size())));
        Fact("Loaded", TimeText(history.lastTime));
        Fact("Loads",
             fmt::format("{}, {} failed", Grouped(history.loads), Grouped(history.failedLoads)));
        Fact("Service", "started " + TimeText(started));
        Add("</dl>");
        if (!history.lastFailure.empty())
            Add(fmt::format("<p class=\"warning\">The rule file cannot be read, so {}: {}</p>",
                            now_ != nullptr ? "older rules decide" : "no call is decided",
                            Escaped(history.lastFailure)));
    }

    void Figures() {
        std::uint64_t recorded = 0;
        std::uint64_t forbidden = 0;
        for (auto const& [id, byRule] : counts_.byRule) {
            recorded += byRule.recorded;
            forbidden += byRule.forbidden;
        }
        Add("<ul class=\"figures\">");
        Figure("calls", counts_.All(), "calls asked about since the start");
        Figure("recorded", recorded, "to be recorded");
        Figure("not-recorded", counts_.notRecorded, "that no rule records");
        Figure("forbidden", forbidden, "that a rule forbids to record");
        Figure("undecided", counts_.undecided, "undecided, because no rules had been read");
        Add("</ul>");
    }

    void Form(std::optional<Question> const& tried) {
        Add("<h2>Try a call</h2>");
        Add(fmt::format(
            "<form><label>From<input name=\"from\" value=\"{}\"></label><label>To<input "
            "name=\"to\" value=\"{}\"></label><button>Ask</button></form>",
            tried ? Escaped(tried->from.address) : "", tried ? Escaped(tried->to.address) : ""));
        if (tried)
            Try(*tried);
    }

    void Rules() {
        if (now_ == nullptr)
            return;
        Add("<h2>The rules, in order</h2>\n<table "
            "id=\"rules\"><thead><tr><th>#</th><th>Rule</th><th "
            "class=\"number\">Calls</th><th></th></tr></thead><tbody>");
        std::uint64_t most = 0;
        for (auto const& [id, byRule] : counts_.byRule)
            most = std::max(most, byRule.recorded + byRule.forbidden);
        std::size_t position = 0;
        for (CallRecordingRuleParams const& rule : now_->loaded->rules.Rules())
            AddRule(++position, rule, most);
        Add("</tbody></table>");
    }

    void Loads() {
        Add("<h2>The last loads</h2>\n<ul id=\"loads\">");
        for (LoadAttempt const& load : rules_.History().latest)
            Add(fmt::format("<li{}>{}: {}</li>", load.hasFailed ? " class=\"warning\"" : "",
                            TimeText(load.time), Escaped(load.notice)));
        Add("</ul>");
    }

    template <typename Findings>
    void Check(Findings const& findings) {
        Add("<h2>What a check of the rule file finds</h2>");
        if (!findings.failure.empty())
            return Add(fmt::format("<p>It cannot be checked: {}</p>", Escaped(findings.failure)));
        std::string rows;
        std::size_t notes = 0;
        for (FileFinding const& finding : findings.list)
            if (IsNote(finding))
                ++notes;
            else
                rows += fmt::format("<li>line {}, rule {}: {}</li>\n", finding.line, finding.id,
                                    Escaped(finding.message));
        Add(rows.empty() ? "<p>Nothing.</p>" : "<ul id=\"findings\">" + rows + "</ul>");
        if (notes > 0)
            Add(fmt::format("<p>And {} notes, which <code>callrecordingctl check</code> shows.</p>",
                            notes));
    }

    std::string End() {
        html_ += "</body>\n</html>\n";
        return std::move(html_);
    }

  private:
    void Add(std::string const& html) { html_ += html + "\n"; }

    void Fact(char const* name, std::string const& html) {
        Add(fmt::format("<dt>{}</dt><dd>{}</dd>", name, html));
    }

    void Figure(char const* id, std::uint64_t count, char const* text) {
        Add(fmt::format("<li id=\"{}\">{}{}</li>", id, DataElement(count), text));
    }

    void AddRule(std::size_t position, CallRecordingRuleParams const& rule, std::uint64_t most) {
        auto const counted = counts_.byRule.find(rule.callrecordingrule_id);
        std::uint64_t const calls = counted != counts_.byRule.end()
                                        ? counted->second.recorded + counted->second.forbidden
                                        : 0;
        std::string const bar =
            calls == 0 ? ""
                       : fmt::format("<i style=\"width:{:.2f}%\"></i>",
                                     100 * static_cast<double>(calls) / static_cast<double>(most));
        Add(fmt::format(
            "<tr{}><td>{}</td><td class=\"wide name\"><b>{}</b>{}<br><small>from {} to "
            "{}<br>{}</small>"
            "</td><td class=\"number\" data-name=\"Calls\">{}</td><td class=\"bar\">{}</td></tr>",
            calls == 0 ? " class=\"never\"" : "", position, NameHtml(rule),
            rule.recording_rule_state == RULE_ENABLED ? "" : " (disabled)",
            SideHtml(rule.caller_pattern, rule.caller_call_type),
            SideHtml(rule.called_pattern, rule.called_call_type), OutcomeText(rule),
            DataElement(calls), bar));
    }

    void Try(Question const& question) {
        Answer const answer = Decide(rules_, question);
        CallRecordingRuleParams const* const rule = answer.Rule();
        Add(fmt::format("<p id=\"answer\">{}</p>",
                        answer.verdict == Verdict::Undecided ? "Undecided: no rules were read yet."
                        : rule == nullptr
                            ? "Not recorded: no enabled rule takes the call."
                            : fmt::format("{}: {}.", OutcomeText(*rule), NameHtml(*rule))));
        if (answer.verdict == Verdict::Undecided)
            return;
        AddMisses(question, rule != nullptr ? answer.place : now_->texts.size());
    }

    /// The rules before `end` that the call comes nearest to.
    void AddMisses(Question const& question, std::size_t end) {
        constexpr std::size_t kMost = 5;
        auto const& rules = now_->loaded->rules.Rules();
        PartyCall const call = question.Call();
        std::vector<std::pair<double, std::size_t>> nearest;
        for (std::size_t place = 0; place < std::min(end, rules.size()); ++place)
            nearest.emplace_back(-FitOf(rules[place], call).Nearness(), place);
        std::sort(nearest.begin(), nearest.end());
        nearest.resize(std::min(nearest.size(), kMost));
        if (nearest.empty())
            return;
        Add(end < rules.size() ? "<p>The rules before it that come nearest:</p>"
                               : "<p>The rules that come nearest:</p>");
        Add("<ul id=\"misses\">");
        for (auto const& [nearness, place] : nearest)
            Add(fmt::format("<li>{}: {}</li>", NameHtml(rules[place]),
                            Escaped(FitOf(rules[place], call).Reason())));
        Add("</ul>");
    }

    LiveRules const& rules_;
    std::shared_ptr<Snapshot const> const now_;
    AnswerCounts::Counts const counts_;
    std::string html_;
};

} // namespace

StatusPage::StatusPage(LiveRules const& rules, AnswerCounts const& counts, std::int64_t started)
    : rules_(rules), counts_(counts), started_(started) {}

StatusPage::Findings StatusPage::FindingsOf(std::string const& digest) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (findings_.digest == digest && !digest.empty())
        return findings_;
    constexpr std::size_t kMemory = std::size_t{64} << 20;
    Findings findings{digest, "", {}};
    try {
        findings.list = FindFaults(ReadStoredRules(rules_.Path()), {CallKind::Parties, kMemory});
    } catch (std::exception const& error) {
        findings.failure = error.what();
        findings.digest.clear(); // To be tried again.
    }
    findings_ = findings;
    return findings;
}

std::string StatusPage::Html(std::optional<Question> const& tried) {
    Page page(rules_, counts_.Now());
    page.Begin(started_);
    page.Figures();
    page.Form(tried);
    page.Rules();
    auto const now = rules_.Now();
    bool const isCurrent = now != nullptr && rules_.History().lastFailure.empty();
    page.Check(FindingsOf(isCurrent ? now->loaded->digest : ""));
    page.Loads();
    return page.End();
}

} // namespace callrecordingd
