// The wording of rejections.

#ifndef VALIDATION_REJECTIONMESSAGE_H
#define VALIDATION_REJECTIONMESSAGE_H

#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Says in the user's terms what was found in stored, the form of the text that was checked, of
/// which the user wrote written.
PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored);

} // namespace CallRecordingUtils

#endif
