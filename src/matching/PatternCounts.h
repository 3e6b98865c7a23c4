// The count of a pattern's constructs.

#ifndef MATCHING_PATTERNCOUNTS_H
#define MATCHING_PATTERNCOUNTS_H

#include <string_view>

#include <callrecordingutils/CCallRecordingAssistant.h>

namespace CallRecordingUtils {

/// Adds the constructs of pattern to the ungrouped counters of counts. A group counts as one,
/// whatever is in it. After a group that is not closed nothing is counted.
void CountConstructs(std::string_view pattern, wild_card_counts& counts);

} // namespace CallRecordingUtils

#endif
