// Puts messages together.

#ifndef VALIDATION_SENTENCE_H
#define VALIDATION_SENTENCE_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text in quotes, in printable ASCII, cut after 24 bytes so that a message stays one line.
std::string Quoted(std::string_view text);

/// Returns the pieces joined.
std::string Join(std::initializer_list<std::string_view> pieces);

} // namespace CallRecordingUtils

#endif
