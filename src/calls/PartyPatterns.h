// Patterns that typed questions can match and parties cannot.

#ifndef CALLS_PARTYPATTERNS_H
#define CALLS_PARTYPATTERNS_H

#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// Returns why no party matches a side of a rule with this pattern, in the stored form, as the rest
/// of a sentence about the pattern; null when none of the literals outside groups rules it out.
char const* WhyNoPartyMatches(std::string_view pattern, CallType type);

} // namespace CallRecordingUtils

#endif
