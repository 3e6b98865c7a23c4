// How the sentences of messages are put together.

#ifndef VALIDATION_SENTENCE_H
#define VALIDATION_SENTENCE_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text in quotes, in printable ASCII, cut where a sentence on one line has no more room.
std::string Quoted(std::string_view text);

/// Returns the pieces one behind the other.
std::string Join(std::initializer_list<std::string_view> pieces);

} // namespace CallRecordingUtils

#endif
