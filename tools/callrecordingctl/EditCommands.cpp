/// @file
/// add, modify, delete, up, down, enable, disable: what each does to the rules.

#include "Commands.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "EditPlan.h"
#include "HelpText.h"
#include "RuleText.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

using CallRecordingUtils::CCallRecordingDB;

/// Applies the options of one side. A type alone puts the pattern that the rule has to the test.
void ApplySide(SideFields const& fields, char const* option, std::string& pattern, CallType& type) {
    if (!fields.pattern && !fields.type)
        return;
    std::string const entry = fields.pattern.value_or(ToEntry(pattern, type));
    type = fields.type.value_or(type);
    std::string const culprit = fmt::format("--{}{}", option, fields.pattern ? "" : "-type");
    if (entry.empty())
        throw Failure(EXIT_CODE_NO,
                      culprit + ": an empty pattern never matches; write * for every call");
    StoredPattern const converted = ToStored(entry, type);
    if (converted.problem)
        throw Failure(EXIT_CODE_NO,
                      fmt::format("{}: malformed pattern of call type {}: {}\n{}", culprit,
                                  CallTypeName(type), converted.problem->message,
                                  CaretText(entry, *converted.problem)));
    if (fields.pattern && entry.find('\\') != std::string::npos)
        Say("{}: {}\n", culprit, ESCAPE_NOTE);
    pattern = converted.stored;
}

/// The library stores one line, less than 64 KiB long.
void RequireStorable(char const* option, std::string const& text) {
    constexpr std::size_t MOST = 64 * 1024 - 1;
    if (text.find_first_of("\r\n") != std::string::npos)
        throw Failure(EXIT_CODE_UNSAVED, fmt::format("{}: a line break cannot be stored", option));
    if (text.size() > MOST)
        throw Failure(EXIT_CODE_UNSAVED,
                      fmt::format("{}: {} characters cannot be stored, at most {}", option,
                                  text.size(), MOST));
}

void ApplyText(std::optional<std::string> const& text, char const* option, std::string& field) {
    if (text)
        field = *text;
    RequireStorable(option, field);
}

void Apply(RuleFields const& fields, Rule& rule) {
    ApplySide(fields.from, "from", rule.caller_pattern, rule.caller_call_type);
    ApplySide(fields.to, "to", rule.called_pattern, rule.called_call_type);
    RequireStorable("--from", rule.caller_pattern);
    RequireStorable("--to", rule.called_pattern);
    ApplyText(fields.recordTo, "--record-to", rule.record_to);
    ApplyText(fields.duration, "--duration", rule.recording_duration);
    ApplyText(fields.description, "--description", rule.description);
    rule.call_recording_type = fields.recordingType.value_or(rule.call_recording_type);
    rule.recording_rule_state = fields.state.value_or(rule.recording_rule_state);
}

bool HaveSameSides(Rule const& left, Rule const& right) {
    return left.caller_pattern == right.caller_pattern &&
           left.caller_call_type == right.caller_call_type &&
           left.called_pattern == right.called_pattern &&
           left.called_call_type == right.called_call_type;
}

Rule Mirrored(Rule rule) {
    std::swap(rule.caller_pattern, rule.called_pattern);
    std::swap(rule.caller_call_type, rule.called_call_type);
    return rule;
}

bool MirrorsItself(Rule const& rule) {
    return HaveSameSides(rule, Mirrored(rule));
}

bool IsTwin(Rule const& rule, Rule const& other) {
    return HaveSameSides(Mirrored(rule), other);
}

/// The index of the first rule that mirrors the one at index.
std::size_t FindTwin(RuleList const& rules, std::size_t index) {
    Rule const& rule = rules[index];
    auto const twin = std::find_if(rules.begin(), rules.end(),
                                   [&rule](Rule const& other) { return IsTwin(rule, other); });
    if (MirrorsItself(rule) || twin == rules.end())
        throw Failure(EXIT_CODE_NO_SUCH_RULE,
                      fmt::format("no rule mirrors rule {}; without --twin it is edited alone",
                                  rule.callrecordingrule_id));
    return static_cast<std::size_t>(twin - rules.begin());
}

Plan PlanOf(RuleList const& rules, std::size_t subject) {
    Plan plan;
    plan.subject = subject;
    for (std::size_t i = 0; i < rules.size(); ++i)
        plan.after.push_back({rules[i], i});
    return plan;
}

/// The identifier that the library will give to the next rule.
std::int32_t NextId(Plan const& plan) {
    std::int32_t greatest = -1;
    for (PlannedRule const& planned : plan.after)
        greatest = std::max(greatest, planned.rule.callrecordingrule_id);
    if (greatest == std::numeric_limits<std::int32_t>::max())
        throw Failure(EXIT_CODE_UNSAVED,
                      fmt::format("{}: no identifier is left behind {}", RuleFilePath(), greatest));
    return greatest + 1;
}

/// Appends rule. Returns its index.
std::size_t PlanAdd(Plan& plan, Rule rule) {
    std::size_t const index = plan.after.size();
    rule.callrecordingrule_id = NextId(plan);
    plan.after.push_back({rule, std::nullopt});
    plan.steps.push_back({[rule](CCallRecordingDB& database) {
                              Rule added = rule;
                              return database.AddRule(&added);
                          },
                          index, rule});
    return index;
}

/// The library finds a section by its identifier, so a rule does not move past one whose identifier
/// another rule has too.
void RequireUnique(Plan const& plan, std::int32_t id) {
    auto const hasId = [id](PlannedRule const& planned) {
        return planned.rule.callrecordingrule_id == id;
    };
    if (std::count_if(plan.after.begin(), plan.after.end(), hasId) > 1)
        FailAmbiguous(id);
}

/// Moves the rule at index one place: the contents change places, the identifiers stay.
void PlanStep(Plan& plan, std::size_t index, bool up) {
    std::size_t const neighbour = up ? index - 1 : index + 1;
    PlannedRule& from = plan.after[index];
    PlannedRule& to = plan.after[neighbour];
    std::int32_t const id = from.rule.callrecordingrule_id;
    RequireUnique(plan, to.rule.callrecordingrule_id);
    std::swap(from, to);
    std::swap(from.rule.callrecordingrule_id, to.rule.callrecordingrule_id);
    plan.steps.push_back({[id, up](CCallRecordingDB& database) {
                              return database.ReOrderRule(std::to_string(id), up);
                          },
                          neighbour, to.rule});
}

void PlanMove(Plan& plan, std::size_t index, std::size_t target) {
    for (; index > target; --index)
        PlanStep(plan, index, true);
    for (; index < target; ++index)
        PlanStep(plan, index, false);
}

void PlanModify(Plan& plan, std::size_t index, Rule const& rule, bool updateTwin) {
    plan.after[index].rule = rule;
    plan.steps.push_back({[rule, updateTwin](CCallRecordingDB& database) {
                              return database.ModifyRule(&rule, updateTwin);
                          },
                          index, rule});
}

/// Where the library finds the twin: the rule's own settings go there, and its sides when they
/// change.
void PlanTwin(Plan& plan, RuleList const& rules, std::size_t index) {
    std::size_t const twin = FindTwin(rules, index);
    RequireUnique(plan, rules[twin].callrecordingrule_id);
    Rule const& rule = plan.after[index].rule;
    Rule mirrored = Mirrored(rule);
    mirrored.callrecordingrule_id = rules[twin].callrecordingrule_id;
    mirrored.description = rules[twin].description;
    if (HaveSameSides(rule, rules[index]))
        plan.after[twin].rule = mirrored;
    else
        PlanModify(plan, twin, mirrored, false);
}

/// The rules that CCallRecordingDB::DeleteRule deletes with the one at index: every twin before it,
/// and if there is none the first behind it.
std::vector<std::size_t> TwinsToDelete(RuleList const& rules, std::size_t index) {
    std::vector<std::size_t> twins;
    FindTwin(rules, index);
    for (std::size_t i = 0; i < rules.size() && (i < index || twins.empty()); ++i)
        if (i != index && IsTwin(rules[index], rules[i]))
            twins.push_back(i);
    return twins;
}

Plan PlanDelete(RuleList const& rules, std::size_t index, bool twin) {
    std::vector<std::size_t> deleted{index};
    if (twin) {
        auto const twins = TwinsToDelete(rules, index);
        deleted.insert(deleted.end(), twins.begin(), twins.end());
    }
    Plan plan = PlanOf(rules, rules.size());
    auto const isDeleted = [&deleted](PlannedRule const& planned) {
        return std::find(deleted.begin(), deleted.end(), *planned.origin) != deleted.end();
    };
    plan.after.erase(std::remove_if(plan.after.begin(), plan.after.end(), isDeleted),
                     plan.after.end());
    plan.steps.push_back({[rule = rules[index], twin](CCallRecordingDB& database) {
                              return twin ? database.DeleteRule(&rule)
                                          : database.DeleteRule(
                                                std::to_string(rule.callrecordingrule_id));
                          },
                          std::nullopt,
                          {}});
    return plan;
}

/// A new rule says what it leaves out: every address, and the type that a pattern looks like.
void Complete(SideFields& side) {
    if (!side.pattern)
        side.pattern = side.type == CALL_TYPE_SIP ? "*@*" : "*";
    if (!side.type)
        side.type = side.pattern->find('@') != std::string::npos ? CALL_TYPE_SIP
                    : *side.pattern == "*"                       ? CALL_TYPE_ANY
                                                                 : CALL_TYPE_NUMBER;
}

} // namespace

ExitCode Add(RuleFields fields, std::optional<std::size_t> position, EditOptions const& options) {
    Complete(fields.from);
    Complete(fields.to);
    Rule rule;
    Apply(fields, rule);
    if (options.twin && MirrorsItself(rule))
        throw Failure(EXIT_CODE_USAGE,
                      "--twin: both sides are the same, so the rule mirrors itself");
    return RunEdit(options, [&](RuleList const& rules) {
        std::size_t const target = position.value_or(rules.size() + 1) - 1;
        if (target > rules.size())
            throw Failure(EXIT_CODE_USAGE, fmt::format("--at {}: there are only {} rules",
                                                       target + 1, rules.size()));
        Plan plan = PlanOf(rules, target);
        std::size_t const index = PlanAdd(plan, rule);
        PlanMove(plan, index, target);
        if (options.twin)
            PlanMove(plan, PlanAdd(plan, Mirrored(rule)), target + 1);
        return plan;
    });
}

ExitCode Modify(std::int32_t id, RuleFields const& fields, EditOptions const& options) {
    bool const isGiven = fields.from.pattern || fields.from.type || fields.to.pattern ||
                         fields.to.type || fields.recordTo || fields.duration ||
                         fields.description || fields.recordingType || fields.state;
    if (!isGiven)
        throw Failure(EXIT_CODE_USAGE, "modify: no field to change is given");
    return RunEdit(options, [&](RuleList const& rules) {
        std::size_t const index = FindRule(rules, id);
        Rule rule = rules[index];
        Apply(fields, rule);
        Plan plan = PlanOf(rules, index);
        PlanModify(plan, index, rule, options.twin);
        if (options.twin)
            PlanTwin(plan, rules, index);
        return plan;
    });
}

ExitCode Delete(std::int32_t id, EditOptions const& options) {
    return RunEdit(
        options,
        [&](RuleList const& rules) {
            return PlanDelete(rules, FindRule(rules, id), options.twin);
        });
}

ExitCode Move(std::int32_t id, std::size_t places, bool up, EditOptions const& options) {
    return RunEdit(
        options,
        [&](RuleList const& rules) {
            std::size_t const index = FindRule(rules, id);
            std::size_t const room = up ? index : rules.size() - 1 - index;
            if (room == 0)
                throw Failure(EXIT_CODE_NO,
                              fmt::format("rule {} is the {} already; nothing was changed", id,
                                          up ? "first" : "last"));
            std::size_t const distance = std::min(places, room);
            std::size_t const target = up ? index - distance : index + distance;
            Plan plan = PlanOf(rules, target);
            PlanMove(plan, index, target);
            return plan;
        });
}

ExitCode SetState(std::int32_t id, bool enable, EditOptions const& options) {
    return RunEdit(
        options,
        [&](RuleList const& rules) {
            std::size_t const index = FindRule(rules, id);
            Plan plan = PlanOf(rules, index);
            Rule& rule = plan.after[index].rule;
            rule.recording_rule_state =
                enable ? CallRecordingUtils::RULE_ENABLED : CallRecordingUtils::RULE_DISABLED;
            plan.steps.push_back({[id, enable](CCallRecordingDB& database) {
                                      return database.SetRuleState(std::to_string(id), enable);
                                  },
                                  index, rule});
            return plan;
        });
}

} // namespace callrecordingctl
