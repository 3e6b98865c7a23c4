// One side of a call, as the rules see it.

#ifndef MATCHING_CALLSIDE_H
#define MATCHING_CALLSIDE_H

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "language/Elements.h"

namespace CallRecordingUtils {

/// Tests one side of a call against the sides of any number of rules. What the tests need of the
/// call is put together once.
class CallSide {
  public:
    /// params must outlive the object.
    CallSide(CallParams const& params, CallType type);

    CallSide(CallSide const&) = delete;
    CallSide& operator=(CallSide const&) = delete;

    /// A test that costs next to nothing, where most rules of a long list end: by their call type,
    /// or by the literals that their pattern begins with. When it returns false, the side is not
    /// satisfied. (A SIP pattern is judged as it is stored: with the port that it lacks it only
    /// becomes longer.)
    bool MaySatisfy(std::string_view pattern, CallType ruleType) const {
        if (ruleType == CALL_TYPE_ANY)
            return BeginsWithLiteralsOf(pattern, addressForAny_);
        return ruleType == type_ && BeginsWithLiteralsOf(pattern, address_);
    }

    /// Returns whether this side satisfies a rule side. See CCallRecordingAssistant::IsSideMatched.
    bool Satisfies(std::string_view pattern, CallType ruleType) const;

    CallType Type() const { return type_; }

    /// What rule sides of the call's own type compare with their pattern. For a SIP call it is
    /// longer than what those of any type compare, User(), and begins with that.
    std::string_view Address() const { return address_; }
    std::string_view User() const { return addressForAny_; }

  private:
    void PutSipAddressTogether(CallParams const& params);
    bool SatisfiesSip(std::string_view pattern) const;

    CallType const type_;
    std::string_view addressForAny_; // What rule sides of any call type compare,
    std::string_view address_;       // and what those of the call's own type do.
    // The address of a SIP call stands in the array where it fits, which is nearly always, so that
    // nothing is allocated.
    std::array<char, 128> shortSipAddress_;
    std::string longSipAddress_;
};

} // namespace CallRecordingUtils

#endif
