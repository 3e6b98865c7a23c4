// Texts of the user's in the sentences of messages.

#ifndef VALIDATION_QUOTED_H
#define VALIDATION_QUOTED_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text in quotes, in printable ASCII, cut where a sentence on one line has no more room.
std::string Quoted(std::string_view text);

} // namespace CallRecordingUtils

#endif
