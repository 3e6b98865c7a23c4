// The wording of rejections.

#ifndef VALIDATION_REJECTIONMESSAGE_H
#define VALIDATION_REJECTIONMESSAGE_H

#include <string_view>

#include "validation/Finding.h"

namespace CallRecordingUtils {

/// Puts a finding into words. It was made in stored, the form of the text that the check reads; the
/// words quote, and the position counts in, what the user wrote.
PatternRejection Reject(Finding const& finding, std::string_view written, std::string_view stored);

} // namespace CallRecordingUtils

#endif
