// Puts together what was counted by the rules of several eras.

#include "records/report/ReplayFacts.h"

#include <algorithm>
#include <limits>

namespace CallRecordingUtils {
namespace {

/// All rules of the eras, each form once: those of the last era in their order, then those that
/// only the one before it had, and so on.
class AllRules {
  public:
    AllRules(WholeReport const& whole, Instant begin) : forms_(whole.forms), begin_(begin) {
        rows_.resize(forms_.Rules().size(), kNone);
        lastEras_.resize(forms_.Rules().size());
        for (auto era = whole.eras.rbegin(); era != whole.eras.rend(); ++era)
            for (Form const form : era->forms)
                AddRow(form, era == whole.eras.rbegin());
        EraFacts const* before = nullptr; // Of those whose rules are known.
        for (EraFacts const& era : whole.eras)
            if (era.problem.empty()) {
                for (Form const form : era.forms)
                    Extend(form, era, before);
                before = &era;
            }
    }

    /// Where the rules of an era are.
    std::vector<std::size_t> Places(EraFacts const& era) const {
        std::vector<std::size_t> places;
        for (Form const form : era.forms)
            places.push_back(rows_[form]);
        return places;
    }

    RuleList rules;
    std::vector<RuleSpan> spans;

  private:
    static constexpr auto kNone = static_cast<std::size_t>(-1);

    void AddRow(Form form, bool isInLast) {
        if (rows_[form] != kNone)
            return;
        rows_[form] = rules.size();
        rules.push_back(forms_.Rules()[form]);
        spans.push_back({isInLast, false, std::nullopt, std::nullopt, {}});
    }

    void Extend(Form form, EraFacts const& era, EraFacts const* before) {
        RuleSpan& span = spans[rows_[form]];
        EraFacts const*& last = lastEras_[form];
        if (last == nullptr) {
            span.since = era.from->shown;
            span.isNew = era.from->instant > begin_;
        } else if (last != before) {
            span.breaks.emplace_back(last->to.value_or(*era.from).shown, era.from->shown);
        }
        span.until = era.to ? std::optional(era.to->shown) : std::nullopt;
        last = &era;
    }

    RuleForms const& forms_;
    Instant const begin_;
    std::vector<std::size_t> rows_;         // By forms.
    std::vector<EraFacts const*> lastEras_; // The last ones that have them.
};

void AddAllEras(ReplayState const& state, WholeReport& whole) {
    std::vector<ReplayReport const*> reports;
    for (auto const& [index, era] : state.eras) {
        auto const counted = state.calls.byEra.find(index);
        bool const hasCalls = counted != state.calls.byEra.end();
        if (!hasCalls && !IsWithin(era, state.period))
            continue;
        whole.eras.push_back(era);
        reports.push_back(hasCalls ? &counted->second : nullptr);
        if (!era.problem.empty())
            whole.facts.unknown.push_back(era);
    }
    AllRules all(whole, state.period ? state.period->first.earliest : 0);
    whole.facts.here.rules = std::move(all.rules);
    whole.facts.spans = std::move(all.spans);
    whole.report.byRule.resize(whole.facts.here.rules.size());
    for (std::size_t i = 0; i < reports.size(); ++i)
        if (reports[i] != nullptr) {
            std::vector<std::size_t> const places = all.Places(whole.eras[i]);
            whole.report.Add(*reports[i], &places);
        }
}

/// Keeps the edits that were made in the period, or may have been.
void ChooseEdits(ReplayFacts& facts, std::optional<Period> const& period) {
    std::vector<EditFacts> kept;
    for (EditFacts& edit : facts.edits) {
        Instant const latest = edit.time.instant;
        Instant const earliest = !edit.isOutside ? latest
                                 : edit.earliest ? edit.earliest->instant
                                                 : std::numeric_limits<Instant>::min();
        if (!period || latest < period->first.earliest)
            continue;
        if (earliest > period->last.latest) {
            ++facts.laterEdits;
            continue;
        }
        edit.isCertain = earliest >= period->first.latest && latest <= period->last.earliest;
        kept.push_back(std::move(edit));
    }
    facts.edits = std::move(kept);
}

} // namespace

void Widen(std::optional<Period>& period, std::optional<Period> const& other) {
    if (!period || !other) {
        period = period ? period : other;
        return;
    }
    period->first = {std::min(period->first.earliest, other->first.earliest),
                     std::min(period->first.latest, other->first.latest)};
    period->last = {std::max(period->last.earliest, other->last.earliest),
                    std::max(period->last.latest, other->last.latest)};
}

bool IsWithin(EraFacts const& era, std::optional<Period> const& period) {
    bool const isEmpty = era.from && era.to && era.from->instant == era.to->instant;
    return period && !isEmpty && (!era.from || era.from->instant <= period->last.latest) &&
           (!era.to || era.to->instant > period->first.earliest);
}

WholeReport InOne(ReplayState&& state) {
    WholeReport whole{std::move(state.facts), state.calls.apart, std::move(state.forms), {}};
    if (whole.facts.asked.areOfTheirTime) {
        AddAllEras(state, whole);
    } else {
        for (auto const& entry : state.calls.byEra)
            whole.report.Add(entry.second);
        whole.eras.push_back({std::nullopt, std::nullopt, whole.facts.here.digest, "",
                              whole.forms.Take(whole.facts.here.rules)});
    }
    whole.report.byRule.resize(whole.facts.here.rules.size());
    ChooseEdits(whole.facts, state.period);
    return whole;
}

} // namespace CallRecordingUtils
