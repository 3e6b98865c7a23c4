/// @file
/// list and show: the rules as they are.

#include "Commands.h"

#include <algorithm>

#include <fmt/format.h>

#include "RuleText.h"
#include "Table.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

void PrintList(RuleList const& rules) {
    Table table(ListHeaders(), 6, 3);
    for (std::size_t i = 0; i < rules.size(); ++i)
        table.Add(ListRow(rules[i], i + 1),
                  rules[i].recording_rule_state != CallRecordingUtils::RULE_ENABLED);
    table.Print();
}

nlohmann::ordered_json ListToJson(RuleList const& rules) {
    auto document = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i)
        document.push_back(ToJson(rules[i], i + 1));
    return document;
}

void ExplainBasicView(RuleList const& rules, bool hasAdvancedRules) {
    auto const isMarked = [](Rule const& rule) {
        return rule.recording_rule_state == CallRecordingUtils::RULE_NOT_SHOWABLE;
    };
    if (std::any_of(rules.begin(), rules.end(), isMarked))
        Say("\"adv\" marks rules that the basic view cannot show in full.\n");
    if (hasAdvancedRules)
        Say("The file has rules that the basic view leaves out or cannot show in full; "
            "\"list\" without --basic shows them all.\n");
}

void ExplainPattern(char const* side, std::string const& stored, CallType type) {
    if (auto const problem = ExplainStored(stored, type))
        Say("{}: malformed: {}\n", side, problem->message);
    else if (stored.empty())
        Say("{}: an empty pattern never matches\n", side);
}

} // namespace

ExitCode List(bool basicView, bool json) {
    RuleStore store;
    RuleList const rules = store.Load(basicView);
    if (json)
        PrintJson(ListToJson(rules));
    else if (!rules.empty())
        PrintList(rules);
    else if (HasRuleFile())
        Say("{}: there are no rules\n", RuleFilePath());
    ExplainBasicView(rules, store.Database().mHasAdvancedRules);
    return EXIT_CODE_YES;
}

ExitCode Show(std::int32_t id, bool json) {
    RuleList const rules = RuleStore().Load();
    std::size_t const index = FindRule(rules, id);
    Rule const& rule = rules[index];
    if (json) {
        PrintJson(ToJson(rule, index + 1));
        return EXIT_CODE_YES;
    }
    std::vector<std::string> names = ListHeaders();
    std::vector<std::string> values = ListRow(rule, index + 1);
    names.insert(names.end(), {"FROM, STORED", "TO, STORED"});
    values.insert(values.end(), {rule.caller_pattern, rule.called_pattern});
    for (std::size_t i = 0; i < names.size(); ++i)
        fmt::print("{:<12}{}{}\n", names[i], values[i].empty() ? "" : "  ", Printable(values[i]));
    ExplainPattern("from", rule.caller_pattern, rule.caller_call_type);
    ExplainPattern("to", rule.called_pattern, rule.called_call_type);
    return EXIT_CODE_YES;
}

} // namespace callrecordingctl
