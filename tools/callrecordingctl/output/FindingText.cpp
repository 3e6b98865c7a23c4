// Puts findings into words.

#include "output/FindingText.h"

#include <algorithm>

#include <fmt/format.h>

#include "output/CallText.h"
#include "output/LossText.h"
#include "output/Screen.h"
#include "json/Names.h"

namespace callrecordingctl {

nlohmann::ordered_json FindingToJson(FileFinding const& finding, RuleList const& rules) {
    nlohmann::ordered_json json{{"line", finding.line},
                                {NameOf(RuleMember::Position), finding.position},
                                {NameOf(RuleMember::Id), finding.id},
                                {"kind", finding.kind},
                                {"message", finding.message},
                                {"taken_by", IdsToJson(rules, finding.takenBy)},
                                {"taken_by_complete", finding.isTakenByComplete},
                                {"loses", nullptr}};
    if (finding.loss)
        json["loses"] =
            LossToJson(rules, finding.position - 1, finding.loss->taker, finding.loss->call);
    return json;
}

void PrintFindings(std::vector<FileFinding> const& findings, RuleList const& rules,
                   std::string const& name, bool withNotes) {
    for (FileFinding const& finding : findings) {
        if (IsNote(finding) && !withNotes)
            continue;
        PrintLines("{}:{}: {}rule {}: {}{}\n", name, finding.line, IsNote(finding) ? "note: " : "",
                   finding.id, finding.message, finding.caret);
        if (finding.loss)
            PrintLines("    {}\n", LossText(rules, finding.position - 1, finding.loss->taker,
                                            finding.loss->call));
    }
}

void PrintSummary(std::vector<FileFinding> const& findings, RuleList const& rules, CallKind calls,
                  bool withNotes) {
    auto const notes =
        static_cast<std::size_t>(std::count_if(findings.begin(), findings.end(), IsNote));
    auto const others = static_cast<std::size_t>(std::count_if(
        findings.begin(), findings.end(), [](auto const& f) { return f.kind == kOtherCalls; }));
    PrintLines("{} {}, ", rules.size(), rules.size() == 1 ? "rule" : "rules");
    if (notes == findings.size())
        PrintLines("nothing found");
    else
        PrintLines("{} found", findings.size() - notes);
    if (notes > 0)
        PrintLines(", {} {}{}", notes, notes == 1 ? "note" : "notes",
                   withNotes ? "" : " (--notes shows them)");
    PrintLines("\n");
    if (others > 0)
        PrintLines("with --calls {} it is otherwise for {} {}\n", CallsName(OtherThan(calls)),
                   others, others == 1 ? "rule" : "rules");
}

} // namespace callrecordingctl
