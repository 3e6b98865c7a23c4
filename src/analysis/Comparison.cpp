// Compares two lists of rules: for each pair of rules that say different things, is there a call
// that the one decides here and the other there?

#include "analysis/Comparison.h"

#include <algorithm>
#include <limits>
#include <map>
#include <set>
#include <utility>

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();
using Key = std::pair<SideId, SideId>;

/// The enabled rules of one of the lists, without those that have the sides of one before. The
/// index that is their number means no rule.
struct Enabled {
    Enabled(RuleParamsList const& list, RuleSpace& space)
        : rules(list), decider(list, space.Calls()) {
        std::set<Key> known;
        for (std::size_t place = 0; place < rules.size(); ++place) {
            if (rules[place].recording_rule_state != RULE_ENABLED)
                continue;
            RuleSpace::RuleId const id = space.Add(SidesOf(rules[place]));
            SidePair const& sides = space.SidesIn(id);
            if (!known.insert({sides.caller, sides.called}).second)
                continue;
            indexOf[{sides.caller, sides.called}] = ids.size();
            places.push_back(place);
            ids.push_back(id);
            index.Add(static_cast<std::uint32_t>(ids.size() - 1),
                      space.Pool().OutlineOf(sides.called));
        }
        space.Reserve(rules.size() * CallDecider::kBytesForRule + index.Bytes());
    }

    std::size_t Count() const { return ids.size(); }
    CallRecordingRuleParams const* Rule(std::size_t at) const {
        return at < Count() ? &rules[places[at]] : nullptr;
    }
    std::optional<std::size_t> Place(std::size_t at) const {
        return at < Count() ? std::optional(places[at]) : std::nullopt;
    }
    std::size_t IndexOf(std::size_t place) const {
        auto const at = std::lower_bound(places.begin(), places.end(), place);
        return static_cast<std::size_t>(at - places.begin());
    }

    RuleParamsList const& rules;
    CallDecider decider;
    std::vector<std::size_t> places{};
    RuleSpace::RuleIds ids{};
    std::map<Key, std::size_t> indexOf{};
    MeetIndex index{}; // By called side.
};

class Comparer {
  public:
    Comparer(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory,
             CallKind calls)
        : space_(calls, memory), here_(here, space_), there_(there, space_),
          copyInThere_(CopiesIn(there_, here_)), copyInHere_(CopiesIn(here_, there_)) {
        FindStaying();
    }

    /// Two rules that both lists have in the same order never decide the same call: in both lists
    /// the first of them takes it. So one of a pair has moved, or it is in one list only, or the
    /// two are the same rule and say different things.
    Comparison Run() {
        for (std::size_t a = 0; a < here_.Count(); ++a) {
            if (isStayingHere_[a])
                Look(a, copyInThere_[a]);
            else
                LookAtAllThere(a);
            Look(a, there_.Count());
        }
        for (std::size_t b = 0; b < there_.Count(); ++b) {
            if (!isStayingThere_[b])
                LookAtStayingHere(b);
            Look(here_.Count(), b);
        }
        if (!result_.differences.empty())
            result_.same = false;
        else if (result_.undecided.empty())
            result_.same = true;
        auto const isBefore = [](auto const& x, auto const& y) {
            auto const number = [](std::optional<std::size_t> const& place) {
                return place.value_or(kNowhere);
            };
            return std::pair(number(x.here), number(x.there)) <
                   std::pair(number(y.here), number(y.there));
        };
        std::sort(result_.differences.begin(), result_.differences.end(), isBefore);
        std::sort(result_.undecided.begin(), result_.undecided.end(), isBefore);
        return std::move(result_);
    }

  private:
    /// For each rule of from, the one of in that has its sides.
    std::vector<std::size_t> CopiesIn(Enabled const& in, Enabled const& from) const {
        std::vector<std::size_t> copies;
        for (RuleSpace::RuleId const id : from.ids) {
            SidePair const& sides = space_.SidesIn(id);
            auto const found = in.indexOf.find({sides.caller, sides.called});
            copies.push_back(found != in.indexOf.end() ? found->second : kNowhere);
        }
        return copies;
    }

    /// The longest row of rules that both lists have in the same order stays; others have moved.
    void FindStaying() {
        isStayingHere_.resize(here_.Count());
        isStayingThere_.resize(there_.Count());
        std::vector<std::size_t> lasts; // Of the rows of each length, the one that ends first.
        std::vector<std::size_t> before(here_.Count(), kNowhere);
        auto const isBefore = [this](std::size_t at, std::size_t copy) {
            return copyInThere_[at] < copy;
        };
        for (std::size_t at = 0; at < here_.Count(); ++at) {
            if (copyInThere_[at] == kNowhere)
                continue;
            auto const place =
                std::lower_bound(lasts.begin(), lasts.end(), copyInThere_[at], isBefore);
            if (place != lasts.begin())
                before[at] = *(place - 1);
            if (place == lasts.end())
                lasts.push_back(at);
            else
                *place = at;
        }
        for (std::size_t at = lasts.empty() ? kNowhere : lasts.back(); at != kNowhere;
             at = before[at])
            isStayingHere_[at] = isStayingThere_[copyInThere_[at]] = true;
    }

    void LookAtAllThere(std::size_t a) {
        for (std::size_t const b : MayMeet(here_.ids[a], there_))
            Look(a, b);
    }

    void LookAtStayingHere(std::size_t b) {
        for (std::size_t const a : MayMeet(there_.ids[b], here_))
            if (isStayingHere_[a])
                Look(a, b);
    }

    std::vector<std::size_t> MayMeet(RuleSpace::RuleId id, Enabled const& list) const {
        SideOutline const& called = space_.Pool().OutlineOf(space_.SidesIn(id).called);
        std::vector<std::size_t> meeting;
        for (std::size_t const at :
             list.index.Find(called, 0, static_cast<std::uint32_t>(list.Count())))
            if (space_.MayMeet(id, list.ids[at]))
                meeting.push_back(at);
        return meeting;
    }

    void Look(std::size_t a, std::size_t b) {
        if (MayBothDecide(a, b) && !HaveSameOutcome(here_.Rule(a), there_.Rule(b)))
            Search(a, b);
    }

    /// Quick, and often true when they do not. A rule whose copy in the other list comes before b
    /// leaves b nothing of its calls.
    bool MayBothDecide(std::size_t a, std::size_t b) const {
        if (a < here_.Count() && copyInThere_[a] < b)
            return false;
        return b == there_.Count() || copyInHere_[b] >= a;
    }

    void Search(std::size_t a, std::size_t b) {
        CallSought sought;
        if (a < here_.Count())
            sought.must.push_back(here_.ids[a]);
        if (b < there_.Count())
            sought.must.push_back(there_.ids[b]);
        sought.fateOf = [&](FoundCall const& call) { return FateOf(a, b, sought.must, call); };
        sought.mayBeInTheWay = [&] {
            RuleSpace::RuleIds rules(here_.ids.begin(),
                                     here_.ids.begin() + static_cast<std::ptrdiff_t>(a));
            rules.insert(rules.end(), there_.ids.begin(),
                         there_.ids.begin() + static_cast<std::ptrdiff_t>(b));
            return rules;
        };
        CallAnswer const answer = FindCall(space_, sought);
        if (answer.outcome == Outcome::Found) {
            result_.differences.push_back(
                {ExampleOf(answer.call, space_.Calls()), here_.Place(a), there_.Place(b)});
            space_.Reserve(sizeof(Difference));
        } else if (answer.outcome == Outcome::Undecided)
            AddUndecided(a, b, *answer.why);
    }

    Fate FateOf(std::size_t a, std::size_t b, RuleSpace::RuleIds const& must,
                FoundCall const& found) {
        ExampleCall const call = ExampleOf(found, space_.Calls());
        auto const here = here_.decider.PlaceFor(call);
        auto const there = there_.decider.PlaceFor(call);
        if (here && here_.IndexOf(*here) < a)
            return {Fate::kTaken, here_.ids[here_.IndexOf(*here)]};
        if (there && there_.IndexOf(*there) < b)
            return {Fate::kTaken, there_.ids[there_.IndexOf(*there)]};
        if (here == here_.Place(a) && there == there_.Place(b))
            return {Fate::kWanted};
        for (RuleSpace::RuleId const rule : must)
            if (!space_.IsReadable(rule))
                return {Fate::kNotMatched, rule};
        return {Fate::kUnclear};
    }

    void AddUndecided(std::size_t a, std::size_t b, UndecidedReason why) {
        bool isThere = false;
        if (why.rule) {
            auto const inHere = std::find(here_.ids.begin(), here_.ids.end(), *why.rule);
            auto const inThere = std::find(there_.ids.begin(), there_.ids.end(), *why.rule);
            isThere = inHere == here_.ids.end();
            why.rule = isThere
                           ? there_.places[static_cast<std::size_t>(inThere - there_.ids.begin())]
                           : here_.places[static_cast<std::size_t>(inHere - here_.ids.begin())];
        }
        result_.undecided.push_back({here_.Place(a), there_.Place(b), why, isThere});
    }

    RuleSpace space_;
    Enabled here_;
    Enabled there_;
    std::vector<std::size_t> copyInThere_; // By index among the enabled rules here,
    std::vector<std::size_t> copyInHere_;  // and there.
    std::vector<bool> isStayingHere_;
    std::vector<bool> isStayingThere_;
    Comparison result_;
};

} // namespace

Comparison Compare(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory,
                   CallKind calls) {
    return Comparer(here, there, memory, calls).Run();
}

} // namespace CallRecordingUtils
