// Puts together what was counted by the rules of several eras.

#include "records/report/ReplayFacts.h"

#include <algorithm>
#include <tuple>

namespace CallRecordingUtils {
namespace {

/// Rules that are equal in this are the same rule, in different eras or twice in one.
auto Identity(Rule const& rule) {
    return std::tie(rule.callrecordingrule_id, rule.caller_pattern, rule.caller_call_type,
                    rule.called_pattern, rule.called_call_type, rule.call_recording_type,
                    rule.record_to, rule.recording_duration, rule.description,
                    rule.recording_rule_state);
}

struct IdentityLess {
    bool operator()(Rule const* left, Rule const* right) const {
        return Identity(*left) < Identity(*right);
    }
};

/// All rules of the eras, each once: those of the last era in their order, then those that only the
/// one before it had, and so on.
class AllRules {
  public:
    void Add(EraFacts const& era, bool isLast) {
        std::vector<std::size_t>& places = places_.emplace_back();
        std::map<Rule const*, std::size_t, IdentityLess> seen; // In this era, how often.
        for (Rule const& rule : era.rules) {
            std::vector<std::size_t>& known = known_[&rule];
            std::size_t const nth = seen[&rule]++;
            if (nth == known.size()) {
                known.push_back(rules.size());
                rules.push_back(rule);
                spans.push_back({isLast, era.from, era.to});
            }
            spans[known[nth]].since = era.from; // Eras come from the last one to the first.
            places.push_back(known[nth]);
        }
    }
    /// Where the rules of the era that was added at this turn are.
    std::vector<std::size_t> const& Places(std::size_t turn) const { return places_[turn]; }

    RuleList rules;
    std::vector<RuleSpan> spans;

  private:
    std::map<Rule const*, std::vector<std::size_t>, IdentityLess> known_; // Rules of the eras.
    std::vector<std::vector<std::size_t>> places_;
};

void AddAllEras(ReplayState const& state, WholeReport& whole) {
    AllRules all;
    for (auto era = state.eras.rbegin(); era != state.eras.rend(); ++era)
        all.Add(era->second, era == state.eras.rbegin());
    whole.facts.here.rules = all.rules;
    whole.facts.spans = all.spans;
    whole.report.byRule.resize(all.rules.size());
    std::size_t turn = 0;
    for (auto era = state.eras.rbegin(); era != state.eras.rend(); ++era, ++turn) {
        auto const counted = state.calls.byEra.find(era->first);
        if (counted != state.calls.byEra.end())
            whole.report.Add(counted->second, &all.Places(turn));
    }
}

} // namespace

WholeReport InOne(ReplayState&& state) {
    WholeReport whole{std::move(state.facts), state.calls.apart, {}};
    if (whole.facts.asked.areOfTheirTime) {
        AddAllEras(state, whole);
        for (auto& entry : state.eras)
            whole.eras.push_back(std::move(entry.second));
    } else {
        for (auto const& entry : state.calls.byEra)
            whole.report.Add(entry.second);
        whole.eras.push_back(
            {std::nullopt, std::nullopt, whole.facts.here.digest, whole.facts.here.rules});
    }
    whole.report.byRule.resize(whole.facts.here.rules.size());
    Tally const& all = whole.report.all;
    std::vector<EditFacts>& edits = whole.facts.edits;
    whole.facts.laterEdits = static_cast<std::size_t>(std::count_if(
        edits.begin(), edits.end(),
        [&all](EditFacts const& edit) {
            return all.last && edit.earliest.value_or(edit.time) > *all.last;
        }));
    edits.erase(std::remove_if(edits.begin(), edits.end(),
                               [&all](EditFacts const& edit) {
                                   return !all.first || edit.time < *all.first ||
                                          edit.earliest.value_or(edit.time) > *all.last;
                               }),
                edits.end());
    return whole;
}

} // namespace CallRecordingUtils
