// Addresses as call records write them and no telephone system hands them over.

#ifndef RECORDS_READING_WRITTENADDRESS_H
#define RECORDS_READING_WRITTENADDRESS_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// Returns text with each %XX decoded.
std::string UrlDecoded(std::string_view text);

/// Whether text is an address that is URL-encoded as a whole: "sip%3A201%40pbx", "%2B4930".
bool IsUrlEncoded(std::string_view text);

/// The number of what is written as a name and a number in parentheses, "Doe, John (201)", or the
/// other way round, "201 (Doe, John)"; all of text otherwise.
std::string_view WithoutName(std::string_view text);

/// text without the quotes in which all of it stands, as CSV has them; else text.
std::string Unquoted(std::string const& text);

} // namespace CallRecordingUtils

#endif
