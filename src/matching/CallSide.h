// One side of a call, as the rules see it.

#ifndef MATCHING_CALLSIDE_H
#define MATCHING_CALLSIDE_H

#include <string>
#include <string_view>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

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

/// Tests one side of a call against the sides of any number of rules. What a test needs of the call
/// is put together once and kept for the following rules. Not for several threads at once.
class CallSide {
  public:
    /// params must outlive the object.
    CallSide(CallParams const& params, CallType type) : params_(params), type_(type) {}

    /// Returns whether this side satisfies a rule side. See CCallRecordingAssistant::IsSideMatched.
    bool Satisfies(std::string_view pattern, CallType ruleType);

  private:
    std::string_view Address(CallType ruleType);
    std::string_view SipPattern(std::string_view stored);

    CallParams const& params_;
    CallType const type_;
    std::string sipAddress_;
    std::string sipPattern_;
};

} // namespace CallRecordingUtils

#endif
