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

/// One side of a call whose texts are already put together. With type any only rule sides of type
/// any see it.
struct TypedText {
    CallType type;
    std::string_view address; // What rule sides of this type compare. It begins with user.
    std::string_view user;    // What rule sides of type any compare.
};

/// Tests one side of a call against sides of rules. The texts that the tests need are put together
/// once, however many rules there are.
class CallSide {
  public:
    /// params must outlive the object.
    CallSide(CallParams const& params, CallType type);
    /// The texts must outlive the object.
    explicit CallSide(TypedText const& text)
        : type_(text.type), addressForAny_(text.user), address_(text.address) {}

    CallSide(CallSide const&) = delete;
    CallSide& operator=(CallSide const&) = delete;

    /// A test that costs next to nothing and refuses most rules of a long list: by their call type,
    /// or by the literals that their pattern begins with. If it returns false, Satisfies does too.
    /// (A SIP pattern is tested as it is stored; adding the port that it lacks only makes it
    /// longer.)
    bool MaySatisfy(std::string_view pattern, CallType ruleType) const {
        if (ruleType == CALL_TYPE_ANY)
            return BeginsWithLiteralsOf(pattern, addressForAny_);
        return ruleType == type_ && BeginsWithLiteralsOf(pattern, address_);
    }

    /// Returns whether this side satisfies a rule side. See CCallRecordingAssistant::IsSideMatched.
    bool Satisfies(std::string_view pattern, CallType ruleType) const;

    CallType Type() const { return type_; }

    /// The text that is compared with patterns for the call's own type, and the text that is
    /// compared with patterns for any call type. The second is the start of the first.
    std::string_view Address() const { return address_; }
    std::string_view User() const { return addressForAny_; }

  private:
    void PutSipAddressTogether(CallParams const& params);
    bool SatisfiesSip(std::string_view pattern) const;

    CallType const type_;
    std::string_view addressForAny_; // For rule sides of call type any,
    std::string_view address_;       // and for those of the call's own type.
    // The address of a SIP call is in the array if it fits, which it nearly always does, so that
    // nothing is allocated.
    std::array<char, 128> shortSipAddress_;
    std::string longSipAddress_;
};

} // namespace CallRecordingUtils

#endif
