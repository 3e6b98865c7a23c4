// The search for a call: one side inside the other.

#include "analysis/CallSearch.h"

#include <algorithm>
#include <unordered_map>

namespace CallRecordingUtils {
namespace {

using Sides = std::vector<SideId>;

void MakeSet(Sides& sides) {
    std::sort(sides.begin(), sides.end());
    sides.erase(std::unique(sides.begin(), sides.end()), sides.end());
}

bool Meet(Sides const& a, Sides const& b) {
    return std::any_of(
        a.begin(), a.end(),
        [&b](SideId side) { return std::binary_search(b.begin(), b.end(), side); });
}

/// Takes the first address that none of the others accepts.
class InnerJudge final : public AddressSearch::Judge {
  public:
    bool IsHopeless(Sides const&) override { return true; }
    Outcome Try(Sides const& accepted, Address const& address) override {
        if (!accepted.empty())
            return Outcome::None;
        found = address;
        return Outcome::Found;
    }

    Address found{};
};

/// Tries the other side for every address whose accepting sides are not known to be hopeless.
class OuterJudge final : public AddressSearch::Judge {
  public:
    OuterJudge(AutomatonPool& pool, Sides const& must, Allowance& allowance, Prefer prefer)
        : pool_(pool), must_(must), allowance_(allowance), prefer_(prefer) {}

    void Avoid(SideId outerSide, SideId innerSide) { innerOf_[outerSide].push_back(innerSide); }

    bool IsHopeless(Sides const& certain) override {
        allowance_.steps -= std::min<std::uint64_t>(allowance_.steps, failed_.size());
        return std::any_of(failed_.begin(), failed_.end(), [&certain](Sides const& failed) {
            return std::includes(certain.begin(), certain.end(), failed.begin(), failed.end());
        });
    }

    Outcome Try(Sides const& accepted, Address const& address) override {
        if (IsHopeless(accepted))
            return Outcome::None;
        Sides avoid;
        for (SideId const side : accepted) {
            Sides const& sides = innerOf_[side];
            avoid.insert(avoid.end(), sides.begin(), sides.end());
        }
        MakeSet(avoid);
        Outcome const outcome = Search(avoid);
        if (outcome == Outcome::None)
            failed_.push_back(accepted);
        outer = address;
        return outcome;
    }

    Address outer{};
    Address inner{};

  private:
    Outcome Search(Sides const& avoid) {
        if (Meet(must_, avoid))
            return Outcome::None;
        InnerJudge judge;
        Outcome const outcome =
            AddressSearch(pool_, must_, avoid, judge, allowance_, prefer_).Run();
        inner = judge.found;
        return outcome;
    }

    AutomatonPool& pool_;
    Sides const& must_;
    Allowance& allowance_;
    Prefer const prefer_;
    std::unordered_map<SideId, Sides> innerOf_;
    std::vector<Sides> failed_;
};

/// The cheapest call that all of must match, if none of avoid does: for long lists the usual case,
/// and there is nothing cheaper.
CallFinding TryCheapest(AutomatonPool& pool, Sides const (&mustBe)[2],
                        std::vector<SidePair> const& avoid, CheapestAddresses& cheapest,
                        Allowance& allowance) {
    Address found[2];
    for (int side = 0; side < 2; ++side) {
        Outcome const outcome = cheapest.Find(mustBe[side], allowance, found[side]);
        if (outcome != Outcome::Found)
            return {outcome, {}};
    }
    allowance.steps -= std::min<std::uint64_t>(allowance.steps, avoid.size());
    auto const isTaken = [&](SidePair const& rule) {
        return pool.Accepts(rule.called, found[1]) && pool.Accepts(rule.caller, found[0]);
    };
    bool const isFree = std::none_of(avoid.begin(), avoid.end(), isTaken);
    return {isFree ? Outcome::Found : Outcome::Undecided, {found[0], found[1]}};
}

/// Leaves out of sides, all of which must accept, those that accept everything.
void LeaveOutEvery(AutomatonPool& pool, Sides& sides) {
    auto const isEvery = [&pool](SideId side) { return pool.AcceptsEverything(side); };
    sides.erase(std::remove_if(sides.begin() + 1, sides.end(), isEvery), sides.end());
    if (sides.size() > 1 && isEvery(sides.front()))
        sides.erase(sides.begin());
}

} // namespace

Outcome CheapestAddresses::Find(Sides const& sides, Allowance& allowance, Address& found) {
    bool const isSingle = sides.size() == 1;
    if (isSingle && sides[0] < known_.size() && known_[sides[0]]) {
        found = *known_[sides[0]];
        return Outcome::Found;
    }
    InnerJudge judge;
    Outcome const outcome = AddressSearch(pool_, sides, {}, judge, allowance).Run();
    if (outcome != Outcome::Found)
        return outcome;
    found = judge.found;
    if (isSingle) {
        known_.resize(std::max<std::size_t>(known_.size(), sides[0] + std::size_t{1}));
        known_[sides[0]] = found;
        bytesOfTexts_ += BytesOf(found);
    }
    return outcome;
}

CallFinding SearchCall(AutomatonPool& pool, std::vector<SidePair> const& must,
                       std::vector<SidePair> const& avoid, CheapestAddresses& cheapest,
                       Allowance& allowance, Prefer prefer) {
    Sides mustBe[2];
    Sides others[2];
    for (SidePair const& rule : must) {
        mustBe[0].push_back(rule.caller);
        mustBe[1].push_back(rule.called);
    }
    for (SidePair const& rule : avoid) {
        others[0].push_back(rule.caller);
        others[1].push_back(rule.called);
    }
    for (int side = 0; side < 2; ++side) {
        MakeSet(mustBe[side]);
        MakeSet(others[side]);
        LeaveOutEvery(pool, mustBe[side]);
    }
    if (prefer == Prefer::Digits) {
        CallFinding const first = TryCheapest(pool, mustBe, avoid, cheapest, allowance);
        if (first.outcome != Outcome::Undecided || allowance.steps == 0)
            return first;
    }
    int const outer = others[0].size() <= others[1].size() ? 0 : 1;
    OuterJudge judge(pool, mustBe[1 - outer], allowance, prefer);
    for (SidePair const& rule : avoid)
        judge.Avoid(outer == 0 ? rule.caller : rule.called, outer == 0 ? rule.called : rule.caller);
    // A side that must accept does so in any case.
    Outcome const outcome =
        AddressSearch(pool, mustBe[outer], others[outer], judge, allowance, prefer).Run();
    if (outer == 0)
        return {outcome, {judge.outer, judge.inner}};
    return {outcome, {judge.inner, judge.outer}};
}

} // namespace CallRecordingUtils
