// Looks for a call round by round.

#include "analysis/CallFinder.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

namespace CallRecordingUtils {
namespace {

// From this round on calls are preferred that rules for numbers do not take, and all rules are
// avoided that take a call, since one of them may take the rest as well: "*251" behind "50*",
// "60*" and so on.
constexpr std::size_t kFewRounds = 8;
// After so many rounds all rules that may be in the way are looked at together.
constexpr std::size_t kMostRounds = 64;

class Finder {
  public:
    Finder(RuleSpace& space, CallSought const& sought)
        : space_(space), sought_(sought), avoid_(sought.avoid),
          known_(avoid_.begin(), avoid_.end()) {}

    CallAnswer Run() {
        Allowance const begun = space_.BeginQuestion(sought_.importance);
        allowance_ = begun;
        CallAnswer answer = Find();
        space_.EndQuestion(begun, allowance_, sought_.importance);
        return answer;
    }

  private:
    using RuleId = RuleSpace::RuleId;

    CallAnswer Find() {
        for (round_ = 0; round_ < kMostRounds; ++round_)
            if (auto answer = Round())
                return *answer;
        return LookAtAll();
    }

    /// Nothing: there is one more rule to avoid.
    std::optional<CallAnswer> Round() {
        Prefer const prefer = round_ < kFewRounds ? Prefer::Digits : Prefer::OtherSymbols;
        CallFinding const finding = space_.Search(sought_.must, avoid_, allowance_, prefer);
        if (finding.outcome == Outcome::Undecided)
            return Undecided({UndecidedReason::kLongSearch, std::nullopt});
        if (finding.outcome == Outcome::None)
            return NothingLeft();
        Fate const fate = sought_.fateOf(finding.call);
        switch (fate.kind) {
        case Fate::kWanted: return CallAnswer{Outcome::Found, finding.call};
        case Fate::kNotMatched: return Undecided(WhyOf(fate.rule));
        case Fate::kUnclear: return Undecided({UndecidedReason::kLongSearch, std::nullopt});
        case Fate::kTaken: break;
        }
        if (!Avoid(fate.rule))
            return Undecided({UndecidedReason::kLongSearch, std::nullopt});
        if (round_ >= kFewRounds && sought_.allTaking)
            for (RuleId const rule : sought_.allTaking(finding.call))
                Avoid(rule);
        return std::nullopt;
    }

    /// Returns whether rule was not avoided before.
    bool Avoid(RuleId rule) {
        if (!known_.insert(rule).second)
            return false;
        avoid_.push_back(rule);
        takers_.push_back(rule);
        return true;
    }

    /// A rule without an automaton was avoided with more than what it matches.
    CallAnswer NothingLeft() {
        auto const isReadable = [this](RuleId rule) { return space_.IsReadable(rule); };
        auto const odd = std::find_if_not(avoid_.begin(), avoid_.end(), isReadable);
        CallAnswer none{Outcome::None};
        std::copy_if(takers_.begin(), takers_.end(), std::back_inserter(none.takers), isReadable);
        std::sort(none.takers.begin(), none.takers.end());
        if (odd == avoid_.end())
            return none;
        RuleSpace::RuleIds readable;
        std::copy_if(avoid_.begin(), avoid_.end(), std::back_inserter(readable), isReadable);
        if (space_.Search(sought_.must, readable, allowance_).outcome == Outcome::None)
            return none;
        return Undecided(WhyOf(*odd));
    }

    CallAnswer LookAtAll() {
        for (RuleId const rule : sought_.mayBeInTheWay())
            Avoid(rule);
        if (auto answer = Round())
            return *answer;
        return Undecided({UndecidedReason::kLongSearch, std::nullopt});
    }

    CallAnswer Undecided(UndecidedReason const& why) const {
        CallAnswer answer{Outcome::Undecided};
        answer.why = why;
        return answer;
    }

    UndecidedReason WhyOf(RuleId rule) const {
        for (WhichSide const side : {WhichSide::Caller, WhichSide::Called})
            if (auto const problem = space_.ProblemOf(rule, side))
                return {*problem == Unreadable::TooLarge ? UndecidedReason::kLargePattern
                                                         : UndecidedReason::kOddItems,
                        rule, side};
        return {UndecidedReason::kLongSearch, std::nullopt};
    }

    RuleSpace& space_;
    CallSought const& sought_;
    Allowance allowance_{};
    RuleSpace::RuleIds avoid_;
    RuleSpace::RuleIds takers_;
    std::unordered_set<RuleId> known_; // What avoid_ holds.
    std::size_t round_ = 0;
};

} // namespace

CallAnswer FindCall(RuleSpace& space, CallSought const& sought) {
    return Finder(space, sought).Run();
}

} // namespace CallRecordingUtils
