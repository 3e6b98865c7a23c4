// A list of rules by value, for code outside of the exported classes.

#ifndef MODEL_RULELIST_H
#define MODEL_RULELIST_H

#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

using Rule = CallRecordingRuleParams;
/// Rules in the order of evaluation. A place is an index into the list; a position is what people
/// see, which is the place plus 1.
using RuleList = std::vector<Rule>;

} // namespace CallRecordingUtils

#endif
