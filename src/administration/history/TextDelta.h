// A text as its difference from another one, for files that change a little at a time.

#ifndef ADMINISTRATION_HISTORY_TEXTDELTA_H
#define ADMINISTRATION_HISTORY_TEXTDELTA_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns what ApplyDelta needs to make text from base. Whole lines that base has are referred to,
/// wherever they are in it; takes time in proportion to the lines between the first and the last
/// that differ.
std::string DeltaBetween(std::string_view base, std::string_view text);

/// Returns the text, which has size bytes, or nothing if delta is damaged or belongs to another
/// base.
std::optional<std::string> ApplyDelta(std::string_view base, std::string_view delta,
                                      std::size_t size);

} // namespace CallRecordingUtils

#endif
