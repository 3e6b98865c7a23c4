// The two sides of a rule, and what it means that one rule mirrors another.

#ifndef MODEL_RULESIDES_H
#define MODEL_RULESIDES_H

#include <cstdint>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// One side of a rule, seen apart from the other. It borrows the pattern.
struct RuleSide {
    std::string_view pattern;
    std::int32_t type; // A CallType, or what stands in its place in a file.

    bool operator==(RuleSide const& other) const {
        return type == other.type && pattern == other.pattern;
    }
};

/// Both sides of a rule. They borrow the patterns.
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

/// The sides of the rule that mirrors one with these sides: its twin.
inline RuleSides Crossed(RuleSides const& sides) {
    return {sides.called, sides.caller};
}

inline bool AreTwins(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b) {
    return SidesOf(a) == Crossed(SidesOf(b));
}

inline bool MirrorsItself(CallRecordingRuleParams const& rule) {
    return AreTwins(rule, rule);
}

/// The rule with its sides exchanged; everything else stays.
CallRecordingRuleParams Mirrored(CallRecordingRuleParams rule);

/// Whether type, destination, duration and state are equal: what a rule and its twin share.
bool HaveEqualSettings(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b);

/// Whether all ten fields are equal.
bool AreEqual(CallRecordingRuleParams const& a, CallRecordingRuleParams const& b);

} // namespace CallRecordingUtils

#endif
