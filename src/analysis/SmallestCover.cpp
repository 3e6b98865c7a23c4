// A set of rules covers the calls when it matches every one of them. So the fewest that match each
// of some of the calls are a guess; a call that they leave is one more of these, and when they
// leave none, no fewer do it (the method of implicit hitting sets).

#include "analysis/SmallestCover.h"

#include <algorithm>
#include <utility>

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostCalls = 64;
constexpr std::size_t kMostTries = 20000; // Of sets, in one search for the fewest.
constexpr std::size_t kMostToLeaveOut = 64;

using RuleIds = RuleSpace::RuleIds;

/// Finds the fewest rules of which each set holds one.
class HittingSet {
  public:
    explicit HittingSet(std::vector<RuleIds> const& sets) : sets_(sets) {}

    std::optional<RuleIds> Find() {
        for (std::size_t size = 1; tries_ < kMostTries; ++size) {
            chosen_.clear();
            if (Choose(size))
                return chosen_;
        }
        return std::nullopt;
    }

  private:
    bool IsHit(RuleIds const& set) const {
        return std::any_of(
            chosen_.begin(), chosen_.end(),
            [&set](RuleSpace::RuleId rule) {
                return std::binary_search(set.begin(), set.end(), rule);
            });
    }

    bool Choose(std::size_t left) {
        RuleIds const* smallest = nullptr;
        for (RuleIds const& set : sets_)
            if (!IsHit(set) && (smallest == nullptr || set.size() < smallest->size()))
                smallest = &set;
        if (smallest == nullptr)
            return true;
        if (left == 0 || ++tries_ > kMostTries)
            return false;
        for (RuleSpace::RuleId const rule : *smallest) {
            chosen_.push_back(rule);
            if (Choose(left - 1))
                return true;
            chosen_.pop_back();
        }
        return false;
    }

    std::vector<RuleIds> const& sets_;
    RuleIds chosen_;
    std::size_t tries_ = 0;
};

class CoverSearch {
  public:
    CoverSearch(RuleSpace& space, RuleIds const& must, RuleIds const& avoid)
        : space_(space), must_(must), avoid_(avoid) {}

    std::optional<RuleIds> Fewest(MatchingCandidates const& matching) {
        std::vector<RuleIds> sets; // For each call, the candidates that match it.
        RuleIds guess;
        while (sets.size() < kMostCalls) {
            CallFinding const left = Search(guess);
            if (left.outcome == Outcome::None)
                return guess;
            if (left.outcome == Outcome::Undecided)
                return std::nullopt;
            auto rules = matching(left.call);
            if (!rules || rules->empty())
                return std::nullopt;
            sets.push_back(std::move(*rules));
            auto next = HittingSet(sets).Find();
            if (!next)
                return std::nullopt;
            guess = std::move(*next);
        }
        return std::nullopt;
    }

    RuleIds WithoutNeedless(RuleIds rules) {
        for (std::size_t i = rules.size(); i-- > 0 && rules.size() <= kMostToLeaveOut;) {
            RuleIds fewer = rules;
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
            if (Search(fewer).outcome == Outcome::None)
                rules = std::move(fewer);
        }
        return rules;
    }

  private:
    CallFinding Search(RuleIds const& rules) {
        RuleIds avoid = avoid_;
        avoid.insert(avoid.end(), rules.begin(), rules.end());
        Allowance const begun = space_.BeginQuestion();
        Allowance left = begun;
        CallFinding finding = space_.Search(must_, avoid, left);
        space_.EndQuestion(begun, left);
        return finding;
    }

    RuleSpace& space_;
    RuleIds const& must_;
    RuleIds const& avoid_;
};

} // namespace

Cover FindSmallestCover(RuleSpace& space, RuleIds const& must, RuleIds const& avoid,
                        MatchingCandidates const& matching, RuleIds const& known) {
    if (known.size() == 1)
        return {known, true};
    CoverSearch search(space, must, avoid);
    if (auto fewest = search.Fewest(matching)) {
        std::sort(fewest->begin(), fewest->end());
        return {std::move(*fewest), true};
    }
    return {search.WithoutNeedless(known), false};
}

} // namespace CallRecordingUtils
