// Fields between tabs, as databases load them.

#ifndef TEXT_COPYFIELD_H
#define TEXT_COPYFIELD_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// A field that is not there.
constexpr char kNoCopyField[] = "\\N";

/// Returns text as PostgreSQL's COPY and ClickHouse's TSV read it: tabs, line ends, backslashes and
/// other control bytes as escapes. What is not UTF-8, and a byte of value 0, becomes U+FFFD, since
/// PostgreSQL stores neither.
std::string CopyField(std::string_view text);

} // namespace CallRecordingUtils

#endif
