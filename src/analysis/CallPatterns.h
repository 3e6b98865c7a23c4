// Sets of calls, written down as patterns where that is possible.

#ifndef ANALYSIS_CALLPATTERNS_H
#define ANALYSIS_CALLPATTERNS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "analysis/AnalysedRules.h"
#include "analysis/PatternWriter.h"

namespace CallRecordingUtils {

struct CallPattern {
    AddressPattern caller;
    AddressPattern called;
};

struct CallPatterns {
    /// Whether patterns are exactly the calls of the set. Otherwise there are none, since it takes
    /// more than was asked for, or other forms than prefixes, or too much time.
    bool areExact;
    std::vector<CallPattern> patterns;
    /// Exact: how many calls there are. Nothing: no end of them, or too many to count.
    std::optional<std::uint64_t> count;
};

/// Says which calls are in a set: those that the rule must matches and of which the first of rules
/// that matches is a member; none of them does: isNoneMember.
struct CallSet {
    RuleSpace::RuleId must;
    RuleSides mustSides; // Borrowed.
    RuleSpace::RuleIds rules;
    std::vector<bool> areMembers; // By rule.
    bool isNoneMember;
};

CallPatterns WriteCalls(RuleSpace& space, CallSet const& set, std::size_t most);

} // namespace CallRecordingUtils

#endif
