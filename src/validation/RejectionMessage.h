// Words rejections.

#ifndef VALIDATION_REJECTIONMESSAGE_H
#define VALIDATION_REJECTIONMESSAGE_H

#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Words a finding. It is about stored, the text that was checked; the message quotes written, what
/// the user wrote, and the position is one in that.
PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored);

} // namespace CallRecordingUtils

#endif
