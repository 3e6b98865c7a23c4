// Writes and reads states: what was counted, and the rules and edits that it is about.

#include "records/report/ReplayState.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

#include "common/Error.h"
#include "records/report/RuleValues.h"
#include "records/report/StateValues.h"
#include "text/Input.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

/// Changes with everything that a state holds: one version does not read the states of another.
constexpr int kVersion = 4;

json Put(RuleFileFacts const& file) {
    return {ToUtf8(file.path), file.digest, PutRules(file.rules)};
}

RuleFileFacts GetRuleFile(json const& state) {
    return {GetText(state.at(0)), state.at(1), GetRules(state.at(2))};
}

json Put(EditFacts const& edit) {
    return {
        edit.number,          Put(edit.time),        edit.earliest ? Put(*edit.earliest) : json(),
        edit.isOutside,       ToUtf8(edit.user),     ToUtf8(edit.command),
        ToUtf8(edit.message), PutTexts(edit.changes)};
}

EditFacts GetEdit(json const& state) {
    EditFacts edit;
    edit.number = state.at(0);
    edit.time = GetMoment(state.at(1));
    if (!state.at(2).is_null())
        edit.earliest = GetMoment(state.at(2));
    edit.isOutside = state.at(3);
    edit.user = GetText(state.at(4));
    edit.command = GetText(state.at(5));
    edit.message = GetText(state.at(6));
    edit.changes = GetTexts(state.at(7));
    return edit;
}

json Put(std::optional<Period> const& period) {
    if (!period)
        return nullptr;
    return {period->first.earliest, period->first.latest, period->last.earliest,
            period->last.latest};
}

std::optional<Period> GetPeriod(json const& state) {
    if (state.is_null())
        return std::nullopt;
    return Period{{state.at(0), state.at(1)}, {state.at(2), state.at(3)}};
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

void GetReports(json const& puts, ReplayState& state) {
    std::size_t const others = state.facts.there ? state.facts.there->rules.size() : 0;
    for (json const& put : puts) {
        std::size_t const era = put.at(0);
        if (state.facts.asked.areOfTheirTime && state.eras.count(era) == 0)
            throw std::runtime_error("it counts calls of a state that it does not have");
        ReplayReport& report = state.calls.byEra[era] = GetReport(put.at(1));
        RequireRules(report,
                     state.facts.asked.areOfTheirTime ? state.eras.at(era).forms.size()
                                                      : state.facts.here.rules.size(),
                     others);
    }
}

ReplayState GetState(json const& state) {
    if (state.at("callrecording_replay_state") != kVersion)
        throw std::runtime_error("it was written by another version of this program");
    ReplayState read;
    read.facts = GetFacts(state.at("facts"));
    read.period = GetPeriod(state.at("period"));
    read.calls.apart = GetReport(state.at("apart"));
    RequireRules(read.calls.apart, 0, 0);
    RuleList const forms = GetRules(state.at("forms"));
    read.forms.Take(forms); // They get the numbers that they had.
    read.eras = GetEras(state.at("states"), forms.size());
    GetReports(state.at("reports"), read);
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
        return std::tuple(left.number == 0, left.number, left.time.instant) <
               std::tuple(right.number == 0, right.number, right.time.instant);
    };
    for (EditFacts const& edit : others) {
        auto const at = std::lower_bound(edits.begin(), edits.end(), edit, isBefore);
        if (at == edits.end() || isBefore(edit, *at))
            edits.insert(at, edit);
    }
}

/// Adds the states that other has. Returns whether those that both have are the same ones. Between
/// the parts the last one may have ended, and rules may have been dropped from the history.
bool AddEras(ReplayState& to, ReplayState const& other) {
    bool areAlike = true;
    for (auto const& [index, era] : other.eras) {
        auto const [known, isNew] = to.eras.try_emplace(index, era);
        areAlike &= known->second.digest == era.digest &&
                    known->second.from->instant == era.from->instant &&
                    known->second.from->shown == era.from->shown;
        if (isNew || (!known->second.problem.empty() && era.problem.empty())) {
            known->second.problem = era.problem;
            known->second.forms = to.forms.Take(other.forms.ListOf(era.forms));
        }
        if (era.to)
            known->second.to = era.to;
    }
    return areAlike;
}

} // namespace

std::string StateLine(ReplayState const& state) {
    json reports = json::array();
    for (auto const& [era, report] : state.calls.byEra)
        reports.push_back({era, Put(report)});
    json const line{{"callrecording_replay_state", kVersion},
                    {"facts", Put(state.facts)},
                    {"period", Put(state.period)},
                    {"apart", Put(state.calls.apart)},
                    {"forms", PutRules(state.forms.Rules())},
                    {"states", PutEras(state.eras)},
                    {"reports", reports}};
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
    if (!AddEras(to, state))
        throw Error(Error::Kind::Unreadable,
                    name + ": counted by another history than the parts before it");
    AddEdits(to.facts.edits, state.facts.edits);
    Widen(to.period, state.period);
    state.calls.MoveBehind(to.calls.apart.files.size());
    to.calls.Add(state.calls);
}

} // namespace CallRecordingUtils
