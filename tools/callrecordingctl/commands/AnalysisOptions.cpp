// Adds the options that the analysing commands share.

#include "commands/AnalysisOptions.h"

#include <fmt/format.h>

#include "administration/inspection/RuleNames.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {

void AddAnalysis(CLI::App& command, CallKind& calls, std::size_t& memory) {
    AddText(
        command, "--calls", "typed|parties",
        "Calls as the library is asked about them, each\n"
        "side with a type (the default), or as decide\n"
        "and replay read them from addresses",
        [&calls](std::string const& text) {
            if (text != "typed" && text != "parties")
                throw CLI::ValidationError("--calls",
                                           fmt::format("\"{}\" is not typed or parties", text));
            calls = text == "typed" ? CallKind::Typed : CallKind::Parties;
        });
    AddNumber(command, "--memory", "MIB",
              "Memory to use before the answer is \"undecided\"\n(default: 256)", 1,
              [&memory](std::uint32_t mebibytes) { memory = std::size_t{mebibytes} << 20; });
}

void AddRuleQuestion(CLI::App& command, RuleQuestion& question) {
    AddRuleName(command, question.rule);
    AddAnalysis(command, question.analysis);
}

ExitCode CodeOf(RuleReport const& report) {
    if (report.standing == RuleReport::kUndecided)
        return kExitUndecided;
    return report.standing == RuleReport::kDecides ? kExitYes : kExitNo;
}

void NoteMalformed(RuleList const& rules, char const* whose) {
    auto const isMalformed = [](std::string const& pattern, CallType type) {
        return !pattern.empty() && ExplainStored(pattern, type);
    };
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < rules.size(); ++place) {
        Rule const& rule = rules[place];
        if (rule.recording_rule_state == RULE_ENABLED &&
            (isMalformed(rule.caller_pattern, rule.caller_call_type) ||
             isMalformed(rule.called_pattern, rule.called_call_type)))
            places.push_back(place);
    }
    if (!places.empty())
        Say("note: {}{} {} malformed patterns; the answer is about what the matcher makes of them",
            RulesText(rules, places), whose, places.size() == 1 ? "has" : "have");
}

} // namespace callrecordingctl
