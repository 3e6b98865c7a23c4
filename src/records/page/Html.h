// Pieces of a page.

#ifndef RECORDS_PAGE_HTML_H
#define RECORDS_PAGE_HTML_H

#include <cstdint>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// text escaped for any place in a page, between tags or in a quoted attribute. Bytes that are not
/// UTF-8, control characters and characters that change the direction become U+FFFD.
std::string Escaped(std::string_view text);

/// 1234567 as 1,234,567.
std::string Grouped(std::uint64_t number);

/// The number for people, with its plain digits for programs.
std::string DataElement(std::uint64_t number);

} // namespace CallRecordingUtils

#endif
