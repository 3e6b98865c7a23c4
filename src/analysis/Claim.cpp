// Proves or refutes claims.

#include "analysis/Claim.h"

#include <algorithm>

#include "analysis/SmallestCover.h"

namespace CallRecordingUtils {
namespace {

constexpr RuleSide kAnySide{"*", CALL_TYPE_ANY};

class Prover {
  public:
    Prover(AnalysedRules& rules, Claim const& claim) : rules_(rules), claim_(claim) {
        RuleSpace& space = rules.Space();
        calls_ = space.Add(claim.calls);
        for (RuleSide const& side : claim.exceptCallers)
            exceptions_.push_back(space.Add({side, kAnySide}));
        for (RuleSide const& side : claim.exceptCalled)
            exceptions_.push_back(space.Add({kAnySide, side}));
    }

    Proof Run() {
        if (!claim_.Wants(rules_, std::nullopt) && !ProveCovered())
            return proof_;
        if (!ProveOthers())
            return proof_;
        proof_.proved = true;
        proof_.isOfNoCall = !HasCalls();
        return proof_;
    }

    Gaps FindGaps(std::size_t mostPatterns, std::size_t mostExamples) {
        CallSet set{calls_, claim_.calls, exceptions_, {}, !claim_.Wants(rules_, std::nullopt)};
        set.areMembers.resize(exceptions_.size(), false);
        for (std::size_t const place : rules_.MayMeet(calls_, 0, rules_.Rules().size())) {
            set.rules.push_back(place);
            set.areMembers.push_back(!claim_.Wants(rules_, place));
        }
        Gaps gaps{WriteCalls(rules_.Space(), set, mostPatterns), {}, true};
        if (!gaps.calls.areExact)
            AddExamples(gaps, mostExamples);
        return gaps;
    }

  private:
    using RuleIds = RuleSpace::RuleIds;

    void AddExamples(Gaps& gaps, std::size_t most) {
        auto const add = [&](CallAnswer const& answer) {
            if (answer.outcome == Outcome::Found)
                gaps.examples.push_back(rules_.Shown(answer.call));
            gaps.areExamplesComplete =
                gaps.areExamplesComplete && answer.outcome != Outcome::Undecided;
        };
        if (!claim_.Wants(rules_, std::nullopt))
            add(Find({calls_}));
        for (std::size_t const other : rules_.MayMeet(calls_, 0, rules_.Rules().size())) {
            if (claim_.Wants(rules_, other))
                continue;
            if (gaps.examples.size() >= most) {
                gaps.areExamplesComplete = false;
                return;
            }
            add(FindDecidedBy(other));
        }
    }

    /// A call of the claim that the rule at place decides.
    CallAnswer FindDecidedBy(std::size_t place) {
        CallSought sought;
        sought.must = {calls_, place};
        sought.avoid = exceptions_;
        sought.importance = RuleSpace::kFurther;
        sought.fateOf = [&](FoundCall const& found) -> Fate {
            auto const decider = rules_.Deciding().PlaceFor(found);
            if (decider && *decider < place)
                return {Fate::kTaken, *decider};
            return decider == place ? FateOf(sought.must, found) : Fate{Fate::kUnclear};
        };
        sought.mayBeInTheWay = [&] { return rules_.MayMeet(place, 0, place); };
        return FindCall(rules_.Space(), sought);
    }

    /// Every call is matched by rules that are wanted.
    bool ProveCovered() {
        CallAnswer const escaping = Find({calls_});
        if (escaping.outcome != Outcome::None)
            return Refute(escaping);
        proof_.covering = Covering({calls_}, escaping.takers);
        return true;
    }

    /// No call is decided by a rule that is not wanted.
    bool ProveOthers() {
        std::size_t const end = claim_.Wants(rules_, std::nullopt) ? rules_.Rules().size()
                                : proof_.covering.empty()          ? 0
                                                                   : proof_.covering.back();
        for (std::size_t const other : rules_.MayMeet(calls_, 0, end)) {
            if (claim_.Wants(rules_, other))
                continue;
            CallAnswer const decided = Find({calls_, other});
            if (decided.outcome != Outcome::None)
                return Refute(decided);
            auto const covering = Covering({calls_, other}, decided.takers);
            if (!covering.empty())
                proof_.others.push_back({other, covering});
        }
        return true;
    }

    bool HasCalls() {
        if (!proof_.covering.empty())
            return true;
        CallSought sought;
        sought.must = {calls_};
        sought.avoid = exceptions_;
        sought.fateOf = [](FoundCall const&) { return Fate{Fate::kWanted}; };
        sought.mayBeInTheWay = [] { return RuleIds(); };
        return FindCall(rules_.Space(), sought).outcome != Outcome::None;
    }

    /// A call that all of must match, no exception does, and that is not decided as claimed.
    CallAnswer Find(RuleIds const& must) {
        CallSought sought;
        sought.must = must;
        sought.avoid = exceptions_;
        sought.fateOf = [&](FoundCall const& call) { return FateOf(must, call); };
        sought.mayBeInTheWay = [&] { return Wanted(must, EndFor(must)); };
        return FindCall(rules_.Space(), sought);
    }

    /// The place behind the rules that can take calls that all of must match.
    std::size_t EndFor(RuleIds const& must) const {
        return must.size() == 1 ? rules_.Rules().size() : must.back();
    }

    Fate FateOf(RuleIds const& must, FoundCall const& found) {
        ExampleCall const call = rules_.Shown(found);
        auto const decider = rules_.Deciding().PlaceFor(call);
        if (decider && *decider < EndFor(must) && claim_.Wants(rules_, decider))
            return {Fate::kTaken, *decider};
        CallKind const calls = rules_.Space().Calls();
        if (!Satisfies(call.caller, claim_.calls.caller, calls) ||
            !Satisfies(call.called, claim_.calls.called, calls))
            return {Fate::kNotMatched, calls_};
        for (RuleSpace::RuleId const rule : must)
            if (rule != calls_ && !rules_.Matches(rule, call))
                return {Fate::kNotMatched, rule};
        return {claim_.Wants(rules_, decider) ? Fate::kUnclear : Fate::kWanted};
    }

    /// The rules before end that are wanted and may match calls that all of must match.
    RuleIds Wanted(RuleIds const& must, std::size_t end) const {
        RuleIds wanted;
        for (std::size_t const place : rules_.MayMeet(must.back(), 0, end))
            if (claim_.Wants(rules_, place) && rules_.Space().IsReadable(place))
                wanted.push_back(place);
        return wanted;
    }

    std::vector<std::size_t> Covering(RuleIds const& must, RuleIds const& known) {
        if (known.empty())
            return {};
        auto const isOther = [this](std::size_t rule) { return !claim_.Wants(rules_, rule); };
        auto const matching = [&](FoundCall const& call) {
            auto rules = rules_.Matching(call, EndFor(must));
            if (rules)
                rules->erase(std::remove_if(rules->begin(), rules->end(), isOther), rules->end());
            return rules;
        };
        Cover cover = FindSmallestCover(rules_.Space(), must, exceptions_, matching, known);
        proof_.isSmallest = proof_.isSmallest && cover.isSmallest;
        return cover.rules;
    }

    /// Takes answer, a search for a call that makes the claim false, into the proof.
    bool Refute(CallAnswer const& answer) {
        proof_ = {};
        proof_.why = answer.why;
        if (proof_.why && proof_.why->rule && *proof_.why->rule >= rules_.Rules().size())
            proof_.why->rule.reset(); // It is the claim's own pattern.
        if (answer.outcome != Outcome::Found)
            return false;
        proof_.proved = false;
        proof_.counterexample = rules_.Shown(answer.call);
        proof_.decidedBy = rules_.Deciding().PlaceFor(answer.call);
        return false;
    }

    AnalysedRules& rules_;
    Claim const& claim_;
    RuleSpace::RuleId calls_;
    RuleIds exceptions_;
    Proof proof_{};
};

} // namespace

bool Claim::Wants(AnalysedRules const& rules, std::optional<std::size_t> decider) const {
    CallRecordingRuleParams const* const by = rules.Rule(decider);
    bool const records = Records(by);
    return (!isRecorded || *isRecorded == records) && (!rule || decider == rule) &&
           (!recordTo || (records && by->record_to == *recordTo)) &&
           (!duration || (records && by->recording_duration == *duration)) &&
           (!callRecordingType || (records && by->call_recording_type == *callRecordingType));
}

Proof Prove(AnalysedRules& rules, Claim const& claim) {
    return Prover(rules, claim).Run();
}

Gaps FindGaps(AnalysedRules& rules, Claim const& claim, std::size_t mostPatterns,
              std::size_t mostExamples) {
    return Prover(rules, claim).FindGaps(mostPatterns, mostExamples);
}

} // namespace CallRecordingUtils
