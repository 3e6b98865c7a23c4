// Writes and reads states: what was counted, and the rules and edits that it is about.

#include "records/report/ReplayState.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

#include "common/Error.h"
#include "records/report/StateValues.h"
#include "text/Input.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

/// Changes with everything that a state holds: one version does not read the states of another.
constexpr int kVersion = 3;

json Put(Rule const& rule) {
    return {rule.callrecordingrule_id,   ToUtf8(rule.caller_pattern),     rule.caller_call_type,
            ToUtf8(rule.called_pattern), rule.called_call_type,           rule.call_recording_type,
            ToUtf8(rule.record_to),      ToUtf8(rule.recording_duration), ToUtf8(rule.description),
            rule.recording_rule_state};
}

Rule GetRule(json const& state) {
    Rule rule;
    rule.callrecordingrule_id = state.at(0);
    rule.caller_pattern = GetText(state.at(1));
    rule.caller_call_type = state.at(2);
    rule.called_pattern = GetText(state.at(3));
    rule.called_call_type = state.at(4);
    rule.call_recording_type = state.at(5);
    rule.record_to = GetText(state.at(6));
    rule.recording_duration = GetText(state.at(7));
    rule.description = GetText(state.at(8));
    rule.recording_rule_state = state.at(9);
    return rule;
}

json PutRules(RuleList const& rules) {
    json state = json::array();
    for (Rule const& rule : rules)
        state.push_back(Put(rule));
    return state;
}

RuleList GetRules(json const& state) {
    RuleList rules;
    for (json const& rule : state)
        rules.push_back(GetRule(rule));
    return rules;
}

json Put(RuleFileFacts const& file) {
    return {ToUtf8(file.path), file.digest, PutRules(file.rules)};
}

RuleFileFacts GetRuleFile(json const& state) {
    return {GetText(state.at(0)), state.at(1), GetRules(state.at(2))};
}

json Put(EditFacts const& edit) {
    return {edit.number,
            edit.time,
            PutOptional(edit.earliest),
            edit.isOutside,
            ToUtf8(edit.user),
            ToUtf8(edit.command),
            ToUtf8(edit.message),
            PutTexts(edit.changes)};
}

EditFacts GetEdit(json const& state) {
    return {state.at(0),          state.at(1),          GetTime(state.at(2)),
            state.at(3),          GetText(state.at(4)), GetText(state.at(5)),
            GetText(state.at(6)), GetTexts(state.at(7))};
}

json Put(ReplayFacts const& facts) {
    json edits = json::array();
    for (EditFacts const& edit : facts.edits)
        edits.push_back(Put(edit));
    return {{"rule_file", Put(facts.here)},
            {"against", facts.there ? Put(*facts.there) : json()},
            {"of_their_time", facts.asked.areOfTheirTime},
            {"as_of", facts.asked.asOf},
            {"edits", edits},
            {"options", PutTexts(facts.options)}};
}

ReplayFacts GetFacts(json const& state) {
    ReplayFacts facts;
    facts.here = GetRuleFile(state.at("rule_file"));
    if (json const& there = state.at("against"); !there.is_null())
        facts.there = GetRuleFile(there);
    facts.asked = {state.at("of_their_time"), state.at("as_of")};
    for (json const& edit : state.at("edits"))
        facts.edits.push_back(GetEdit(edit));
    facts.options = GetTexts(state.at("options"));
    return facts;
}

/// What was counted in one era, with its rules where it has some of its own.
json PutEra(std::size_t era, ReplayState const& state) {
    json put{{"era", era}, {"report", Put(state.calls.byEra.at(era))}, {"rules", nullptr}};
    if (auto const facts = state.eras.find(era); facts != state.eras.end())
        put["rules"] = {PutOptional(facts->second.from), PutOptional(facts->second.to),
                        facts->second.digest, PutRules(facts->second.rules)};
    return put;
}

/// Throws unless all decisions are about rules that there are.
void RequireRules(ReplayReport const& report, std::size_t rules, std::size_t others) {
    auto const isAbout = [](Decision decision, std::size_t count) {
        return !IsRule(decision) || decision < count;
    };
    bool isWhole = report.byRule.size() <= rules;
    for (auto const& entry : report.timeline.Totals())
        isWhole &= isAbout(entry.first, rules);
    for (std::size_t i = 0; i < Reconciliation::kOutcomeCount; ++i)
        for (auto const& entry : report.reconciliation.Of(Reconciliation::Outcome(i)))
            isWhole &= isAbout(entry.first, rules);
    for (auto const& entry : report.differences)
        isWhole &= isAbout(entry.first.first, rules) && isAbout(entry.first.second, others);
    if (!isWhole)
        throw std::runtime_error("it counts calls of rules that it does not have");
}

void GetEra(json const& put, ReplayState& state) {
    std::size_t const era = put.at("era");
    bool const hasOwnRules = state.facts.asked.areOfTheirTime;
    if (hasOwnRules) {
        json const& rules = put.at("rules");
        state.eras[era] = {GetTime(rules.at(0)), GetTime(rules.at(1)), rules.at(2),
                           GetRules(rules.at(3))};
    }
    ReplayReport& report = state.calls.byEra[era] = GetReport(put.at("report"));
    RequireRules(report, (hasOwnRules ? state.eras[era].rules : state.facts.here.rules).size(),
                 state.facts.there ? state.facts.there->rules.size() : 0);
}

ReplayState GetState(json const& state) {
    if (state.at("callrecording_replay_state") != kVersion)
        throw std::runtime_error("it was written by another version of this program");
    ReplayState read;
    read.facts = GetFacts(state.at("facts"));
    read.calls.apart = GetReport(state.at("apart"));
    RequireRules(read.calls.apart, 0, 0);
    for (json const& era : state.at("eras"))
        GetEra(era, read);
    return read;
}

/// What must be the same in all parts, in words.
std::string WayOf(ReplayFacts const& facts) {
    auto const file = [](RuleFileFacts const& rules) {
        return fmt::format("{} (SHA-256 {})", rules.path,
                           rules.digest.empty() ? "none" : rules.digest);
    };
    std::string way =
        facts.asked.areOfTheirTime ? "the history of " + facts.here.path : file(facts.here);
    if (facts.there)
        way += " and " + file(*facts.there);
    return way +
           (facts.options.empty() ? "" : fmt::format(", with {}", fmt::join(facts.options, " ")));
}

void AddEdits(std::vector<EditFacts>& edits, std::vector<EditFacts> const& others) {
    auto const isBefore = [](EditFacts const& left, EditFacts const& right) {
        // One that is not in the history yet comes last.
        return std::tuple(left.number == 0, left.number, left.time) <
               std::tuple(right.number == 0, right.number, right.time);
    };
    for (EditFacts const& edit : others) {
        auto const at = std::lower_bound(edits.begin(), edits.end(), edit, isBefore);
        if (at == edits.end() || isBefore(edit, *at))
            edits.insert(at, edit);
    }
}

/// Returns whether the eras that both have are the same ones.
bool AddEras(std::map<std::size_t, EraFacts>& eras, std::map<std::size_t, EraFacts> const& others) {
    bool areAlike = true;
    for (auto const& [era, facts] : others) {
        EraFacts& known = eras.emplace(era, facts).first->second;
        areAlike &= known.digest == facts.digest && known.from == facts.from;
        if (facts.to) // It may have ended between the parts.
            known.to = facts.to;
    }
    return areAlike;
}

} // namespace

std::string StateLine(ReplayState const& state) {
    json eras = json::array();
    for (auto const& entry : state.calls.byEra)
        eras.push_back(PutEra(entry.first, state));
    json const line{{"callrecording_replay_state", kVersion},
                    {"facts", Put(state.facts)},
                    {"apart", Put(state.calls.apart)},
                    {"eras", eras}};
    return line.dump();
}

std::vector<ReplayState> ReadStates(std::string const& path) {
    Input input(path);
    std::string text;
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    for (std::size_t size = 0, count = 1; count > 0; size += count) {
        text.resize(size + kBlock);
        count = input.Read(text.data() + size, kBlock);
        text.resize(size + count);
    }
    std::vector<ReplayState> states;
    std::size_t number = 0;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        ++number;
        try {
            if (end > at)
                states.push_back(
                    GetState(json::parse(text.begin() + static_cast<std::ptrdiff_t>(at),
                                         text.begin() + static_cast<std::ptrdiff_t>(end))));
        } catch (std::exception const& error) {
            throw Error(Error::Kind::Unreadable,
                        fmt::format("{}:{}: no state that \"replay --partial\" printed: {}", path,
                                    number, error.what()));
        }
    }
    if (states.empty())
        throw Error(Error::Kind::Unreadable, path + ": there is no state of a replay in it");
    return states;
}

void AddState(ReplayState& to, ReplayState&& state, std::string const& name) {
    if (WayOf(to.facts) != WayOf(state.facts))
        throw Error(Error::Kind::Unreadable,
                    fmt::format("{}: counted by the rules of {}, and the parts before it by those "
                                "of {}",
                                name, WayOf(state.facts), WayOf(to.facts)));
    if (!AddEras(to.eras, state.eras))
        throw Error(Error::Kind::Unreadable,
                    name + ": counted by another history than the parts before it");
    AddEdits(to.facts.edits, state.facts.edits);
    state.calls.MoveBehind(to.calls.apart.files.size());
    to.calls.Add(state.calls);
}

} // namespace CallRecordingUtils
