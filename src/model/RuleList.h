// A list of rules by value, for whatever works on rules outside of the exported classes.

#ifndef MODEL_RULELIST_H
#define MODEL_RULELIST_H

#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

using Rule = CallRecordingRuleParams;
/// The rules in the order of evaluation. A place is an index into it; a position, as people see it,
/// is the place plus 1.
using RuleList = std::vector<Rule>;

} // namespace CallRecordingUtils

#endif
