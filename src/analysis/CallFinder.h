// Finds a call of a certain fate among those that some rules match, where nobody knows beforehand
// which of many rules are in the way.

#ifndef ANALYSIS_CALLFINDER_H
#define ANALYSIS_CALLFINDER_H

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "analysis/ExampleCall.h"
#include "analysis/RuleSpace.h"

namespace CallRecordingUtils {

/// Why a question has no answer.
struct UndecidedReason {
    enum Reason {
        kOddItems,     ///< The pattern of a rule has a group whose items have no proper form.
        kLargePattern, ///< The pattern of a rule needs more memory than one may take.
        kLongSearch    ///< The search needs more memory or time than it may take.
    };
    Reason reason;
    std::optional<RuleSpace::RuleId> rule; ///< Not for kLongSearch.
    WhichSide side = WhichSide::Caller;    ///< Whose pattern.
};

/// What the rules make of a call that was found.
struct Fate {
    enum Kind {
        kWanted,     ///< It is one that is looked for.
        kTaken,      ///< It is not, and neither is any other one that rule matches.
        kNotMatched, ///< rule, one of those that must match it, has no automaton and does not.
        kUnclear     ///< None of these.
    };
    Kind kind;
    RuleSpace::RuleId rule = 0;
};

struct CallSought {
    RuleSpace::RuleIds must;  ///< All of these match it.
    RuleSpace::RuleIds avoid; ///< None of these does.
    /// Asks the matcher, whose answer counts also where a rule has no automaton.
    std::function<Fate(FoundCall const&)> fateOf;
    /// All rules that take a call of fate kTaken, or some, for when the first ones of several calls
    /// did not settle it. It may be empty.
    std::function<RuleSpace::RuleIds(FoundCall const&)> allTaking{};
    /// Rules that may be in the way, for when too many were met one after the other.
    std::function<RuleSpace::RuleIds()> mayBeInTheWay;
    RuleSpace::Importance importance = RuleSpace::kMain;
};

struct CallAnswer {
    Outcome outcome;
    FoundCall call{}; ///< Found.
    /// None: the rules that had to be avoided. Together with the rules avoided from the start they
    /// match all calls that must be matched.
    RuleSpace::RuleIds takers{};
    std::optional<UndecidedReason> why{}; ///< Undecided.
};

/// A call that all of must match is looked for, the rule that takes it is avoided from then on, and
/// so on: mostly the first few of many rules give the answer.
CallAnswer FindCall(RuleSpace& space, CallSought const& sought);

} // namespace CallRecordingUtils

#endif
