// Pieces of a page.

#ifndef RECORDS_PAGE_HTML_H
#define RECORDS_PAGE_HTML_H

#include <cstdint>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// text as it can stand anywhere in a page, between tags or in a quoted attribute. Bytes that are
/// no UTF-8 become U+FFFD, and so do characters that control the terminal or the direction.
std::string Escaped(std::string_view text);

/// 1234567 as 1,234,567.
std::string Grouped(std::uint64_t number);

/// The number, for people and for programs.
std::string DataElement(std::uint64_t number);

} // namespace CallRecordingUtils

#endif
