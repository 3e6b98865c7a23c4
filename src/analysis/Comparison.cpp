// Compares two lists of rules: for each pair of rules that say different things, is there a call
// that the one decides here and the other there?

#include <algorithm>
#include <limits>

#include "analysis/RuleAnalysis.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

/// The enabled rules of one of the lists. A place among them that is their number means no rule.
struct Enabled {
    RuleParamsList const& rules;
    std::vector<std::size_t> places{};
    std::vector<RuleSpace::RuleId> ids{};

    std::size_t Count() const { return ids.size(); }
    CallRecordingRuleParams const* Rule(std::size_t at) const {
        return at < Count() ? &rules[places[at]] : nullptr;
    }
    std::optional<std::size_t> Place(std::size_t at) const {
        return at < Count() ? std::optional(places[at]) : std::nullopt;
    }
};

bool AreAlike(CallRecordingRuleParams const* a, CallRecordingRuleParams const* b) {
    if (a == nullptr || b == nullptr)
        return a == b;
    return a->call_recording_type == b->call_recording_type && a->record_to == b->record_to &&
           a->recording_duration == b->recording_duration;
}

class Comparer {
  public:
    Comparer(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory)
        : space_(memory), here_{here}, there_{there} {
        Add(here_);
        Add(there_);
        copyInThere_ = FirstCopies(here_, there_);
        copyInHere_ = FirstCopies(there_, here_);
    }

    Comparison Run() {
        for (std::size_t a = 0; a <= here_.Count(); ++a)
            for (std::size_t b = 0; b <= there_.Count(); ++b)
                if (!AreAlike(here_.Rule(a), there_.Rule(b)) && MayBothDecide(a, b))
                    Search(a, b);
        if (!result_.differences.empty())
            result_.same = false;
        else if (!isUndecided_)
            result_.same = true;
        return result_;
    }

  private:
    void Add(Enabled& list) {
        for (std::size_t place = 0; place < list.rules.size(); ++place) {
            if (list.rules[place].recording_rule_state != RULE_ENABLED)
                continue;
            list.places.push_back(place);
            list.ids.push_back(space_.Add(SidesOf(list.rules[place])));
        }
    }

    /// For each rule of from, the first one of in that has its sides.
    std::vector<std::size_t> FirstCopies(Enabled const& from, Enabled const& in) const {
        std::map<SidePairKey, std::size_t> first;
        for (std::size_t at = 0; at < in.Count(); ++at)
            first.emplace(KeyOf(in.ids[at]), at);
        std::vector<std::size_t> copies;
        for (RuleSpace::RuleId const id : from.ids) {
            auto const found = first.find(KeyOf(id));
            copies.push_back(found != first.end() ? found->second : kNowhere);
        }
        return copies;
    }

    using SidePairKey = std::pair<SideId, SideId>;
    SidePairKey KeyOf(RuleSpace::RuleId id) const {
        return {space_.SidesIn(id).caller, space_.SidesIn(id).called};
    }

    /// Quick, and often true when they do not. A rule whose copy in the other list comes before b
    /// leaves b nothing of its calls.
    bool MayBothDecide(std::size_t a, std::size_t b) const {
        if (a < here_.Count() && copyInThere_[a] < b)
            return false;
        if (b < there_.Count() && copyInHere_[b] < a)
            return false;
        return a == here_.Count() || b == there_.Count() ||
               space_.MayMeet(here_.ids[a], there_.ids[b]);
    }

    void Search(std::size_t a, std::size_t b) {
        std::vector<RuleSpace::RuleId> must;
        if (a < here_.Count())
            must.push_back(here_.ids[a]);
        if (b < there_.Count())
            must.push_back(there_.ids[b]);
        RuleSpace::Answer const answer = space_.Find(must, {{here_.ids, a}, {there_.ids, b}});
        if (answer.outcome == Outcome::None)
            return;
        auto const here = here_.Place(a);
        auto const there = there_.Place(b);
        // Where patterns without automata stand in the way, the matcher can still vouch for a call.
        if (answer.call && DecidingPlace(here_.rules, *answer.call) == here &&
            DecidingPlace(there_.rules, *answer.call) == there)
            result_.differences.push_back({*answer.call, here, there});
        else
            isUndecided_ = true;
    }

    RuleSpace space_;
    Enabled here_;
    Enabled there_;
    std::vector<std::size_t> copyInThere_; // By place among the enabled rules here,
    std::vector<std::size_t> copyInHere_;  // and there.
    bool isUndecided_ = false;
    Comparison result_;
};

} // namespace

Comparison Compare(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory) {
    return Comparer(here, there, memory).Run();
}

} // namespace CallRecordingUtils
