// The two sides of a rule, and comparisons of rules: twins, equal settings.

#ifndef MODEL_RULESIDES_H
#define MODEL_RULESIDES_H

#include <cstdint>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// One side of a rule. Its pattern is a view of the rule's.
struct RuleSide {
    std::string_view pattern;
    std::int32_t type; // A CallType, or another number from a file.

    bool operator==(RuleSide const& other) const {
        return type == other.type && pattern == other.pattern;
    }
};

/// Both sides of a rule.
struct RuleSides {
    RuleSide caller;
    RuleSide called;

    bool operator==(RuleSides const& other) const {
        return caller == other.caller && called == other.called;
    }
};

inline RuleSides SidesOf(CallRecordingRuleParams const& rule) {
    return {{rule.caller_pattern, rule.caller_call_type},
            {rule.called_pattern, rule.called_call_type}};
}

/// Returns the sides exchanged. The rule that has them is the twin of a rule with sides.
inline RuleSides Crossed(RuleSides const& sides) {
    return {sides.called, sides.caller};
}

inline bool AreTwins(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return SidesOf(a) == Crossed(SidesOf(b));
}

inline bool MirrorsItself(CallRecordingRuleParams const& rule) {
    return AreTwins(rule, rule);
}

/// Returns rule with its sides exchanged and everything else unchanged.
CallRecordingRuleParams Mirrored(CallRecordingRuleParams rule);

/// Returns whether recording type, destination, duration and state are equal, which a rule and its
/// twin share.
bool HaveEqualSettings(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b);

/// Returns whether all fields but the identifier are equal.
bool AreAlike(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b);

/// Returns whether all ten fields are equal.
bool AreEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b);

} // namespace CallRecordingUtils

#endif
