// One side of a call, as the rules see it.

#ifndef MATCHING_CALLSIDE_H
#define MATCHING_CALLSIDE_H

#include <string>
#include <string_view>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/PatternMatcher.h"

namespace CallRecordingUtils {

/// The user, host and port of a SIP address, or of a pattern for one. The views live as long as the
/// text that was split.
struct SipAddress {
    std::string_view user;
    std::string_view host;
};

/// Splits address at its last "@". Returns false, and leaves the output alone, when there is none.
bool SplitSipAddress(std::string_view address, SipAddress& parts);

/// Splits off the port behind the last ":" (empty when there is none) and returns the text before
/// it.
std::string_view SplitPort(std::string_view address, std::string_view& port);

/// Tests one side of a call against the sides of any number of rules. What the tests need of the
/// call is put together once.
class CallSide {
  public:
    /// params must outlive the object.
    CallSide(CallParams const& params, CallType type);

    /// A test that costs next to nothing: false only when Satisfies would be false as well. Most
    /// rules of a long list end here, by their call type or by the literals that their pattern
    /// begins with.
    bool MaySatisfy(std::string_view pattern, CallType ruleType) const {
        if (ruleType == CALL_TYPE_ANY)
            return MayMatch(pattern, addressForAny_);
        return ruleType == type_ && MayMatch(pattern, address_);
    }

    /// Returns whether this side satisfies a rule side. See CCallRecordingAssistant::IsSideMatched.
    /// REQUIRES: MaySatisfy is true for the same rule side.
    bool Satisfies(std::string_view pattern, CallType ruleType) const;

  private:
    bool SatisfiesSip(std::string_view pattern) const;

    CallType const type_;
    std::string sipAddress_;
    std::string_view addressForAny_; // What rule sides of any call type compare,
    std::string_view address_;       // and what those of the call's own type do.
};

} // namespace CallRecordingUtils

#endif
