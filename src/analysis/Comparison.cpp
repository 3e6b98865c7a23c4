// Compares two lists of rules: for each pair of rules that say different things, is there a call
// that the one decides here and the other there?

#include "analysis/Comparison.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "analysis/ComparedRules.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

RuleSpace::RuleIds Both(RuleSpace::RuleIds rules, RuleSpace::RuleIds const& others) {
    rules.insert(rules.end(), others.begin(), others.end());
    return rules;
}

class Comparer {
  public:
    Comparer(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory,
             CallKind calls, std::size_t mostPairsOfRule)
        : most_(mostPairsOfRule), space_(calls, memory), here_(here, space_), there_(there, space_),
          copyInThere_(CopiesIn(there_, here_)), copyInHere_(CopiesIn(here_, there_)) {
        FindStaying();
    }

    /// Two rules that both lists have in the same order never decide the same call: in both lists
    /// the first of them takes it. So one of a pair has moved, or it is in one list only, or the
    /// two are the same rule and say different things.
    Comparison Run() {
        for (std::size_t a = 0; a < here_.Count(); ++a) {
            takers_.clear();
            if (isStayingHere_[a])
                Look(a, copyInThere_[a]);
            else
                LookAtAllThere(a);
            Look(a, there_.Count());
        }
        for (std::size_t b = 0; b < there_.Count(); ++b) {
            takers_.clear();
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
    std::vector<std::size_t> CopiesIn(ComparedRules const& in, ComparedRules const& from) const {
        std::vector<std::size_t> copies;
        for (RuleSpace::RuleId const id : from.ids)
            copies.push_back(in.IndexOf(space_.SidesIn(id)).value_or(kNowhere));
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
        if (Decides(here_, a))
            LookAtEach(
                there_.MayMeet(here_.ids[a]), [&](std::size_t b) { Look(a, b); });
    }

    void LookAtStayingHere(std::size_t b) {
        auto const look = [&](std::size_t a) {
            if (isStayingHere_[a])
                Look(a, b);
        };
        if (Decides(there_, b))
            LookAtEach(here_.MayMeet(there_.ids[b]), look);
    }

    /// Whether the rule decides any call in its list, or that is undecided.
    bool Decides(ComparedRules& list, std::size_t at) {
        CallSought sought;
        sought.must = {list.ids[at]};
        sought.fateOf = [&](FoundCall const& call) {
            auto const place = list.decider.PlaceFor(call);
            return place && *place < list.places[at] ? TakenBy(list, *place) : Fate{Fate::kWanted};
        };
        sought.mayBeInTheWay = [&] { return list.Before(at); };
        sought.importance = RuleSpace::kFurther;
        return FindCall(space_, sought).outcome != Outcome::None;
    }

    /// Looks at the pairs of a rule with its partners, which are ascending.
    template <typename Looking>
    void LookAtEach(std::vector<std::size_t> const& partners, Looking const& look) {
        std::size_t const before = result_.differences.size();
        for (std::size_t const partner : partners) {
            if (result_.differences.size() - before >= most_) {
                result_.areAllLookedFor = false;
                return;
            }
            look(partner);
        }
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
        sought.allTaking = [&](FoundCall const& call) {
            return Both(here_.Taking(call, a), there_.Taking(call, b));
        };
        sought.mayBeInTheWay = [&] { return Both(here_.Before(a), there_.Before(b)); };
        CallAnswer const answer = FindCallFast(sought);
        if (answer.outcome == Outcome::Found) {
            result_.differences.push_back(
                {ExampleOf(answer.call, space_.Calls()), here_.Place(a), there_.Place(b)});
            space_.Reserve(sizeof(Difference));
        } else if (answer.outcome == Outcome::Undecided)
            AddUndecided(a, b, *answer.why);
    }

    /// Mostly what took calls from the rule before takes these, too. Where that makes the search
    /// too long, it is one without.
    CallAnswer FindCallFast(CallSought& sought) {
        if (!takers_.empty()) {
            sought.avoid = takers_;
            sought.importance = RuleSpace::kFurther;
            CallAnswer const answer = FindCall(space_, sought);
            if (answer.outcome != Outcome::Undecided)
                return answer;
            sought.avoid.clear();
            sought.importance = RuleSpace::kMain;
        }
        return FindCall(space_, sought);
    }

    Fate FateOf(std::size_t a, std::size_t b, RuleSpace::RuleIds const& must,
                FoundCall const& found) {
        ExampleCall const call = ExampleOf(found, space_.Calls());
        auto const here = here_.decider.PlaceFor(call);
        auto const there = there_.decider.PlaceFor(call);
        if (here && here_.IndexOf(*here) < a)
            return TakenBy(here_, *here);
        if (there && there_.IndexOf(*there) < b)
            return TakenBy(there_, *there);
        if (here == here_.Place(a) && there == there_.Place(b))
            return {Fate::kWanted};
        for (RuleSpace::RuleId const rule : must)
            if (!space_.IsReadable(rule))
                return {Fate::kNotMatched, rule};
        return {Fate::kUnclear};
    }

    /// What takes a call from one pair of a rule takes it from later ones, too: they come in the
    /// order of the lists.
    Fate TakenBy(ComparedRules const& list, std::size_t place) {
        constexpr std::size_t kMost = 16;
        RuleSpace::RuleId const rule = list.ids[list.IndexOf(place)];
        if (takers_.size() < kMost && space_.IsReadable(rule))
            takers_.push_back(rule);
        return {Fate::kTaken, rule};
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

    std::size_t const most_;
    RuleSpace space_;
    ComparedRules here_;
    ComparedRules there_;
    std::vector<std::size_t> copyInThere_; // By index among the enabled rules here,
    std::vector<std::size_t> copyInHere_;  // and there.
    std::vector<bool> isStayingHere_;
    std::vector<bool> isStayingThere_;
    RuleSpace::RuleIds takers_; // Of calls of the rule whose pairs are looked at.
    Comparison result_;
};

} // namespace

Comparison Compare(RuleParamsList const& here, RuleParamsList const& there, std::size_t memory,
                   CallKind calls, std::size_t mostPairsOfRule) {
    return Comparer(here, there, memory, calls, mostPairsOfRule).Run();
}

} // namespace CallRecordingUtils
