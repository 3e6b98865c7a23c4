// The count of a pattern's constructs.

#ifndef MATCHING_PATTERNCOUNTS_H
#define MATCHING_PATTERNCOUNTS_H

#include <string_view>

#include <callrecordingutils/CCallRecordingAssistant.h>

namespace CallRecordingUtils {

/// Adds the constructs of pattern to the ungrouped counters of counts. Groups count as one each;
/// one that is not closed ends the counting.
void CountConstructs(std::string_view pattern, wild_card_counts& counts);

} // namespace CallRecordingUtils

#endif
