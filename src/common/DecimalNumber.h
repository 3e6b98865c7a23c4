// Reads decimal numbers as the rule file and the pattern language define them.

#ifndef COMMON_DECIMALNUMBER_H
#define COMMON_DECIMALNUMBER_H

#include <cstdint>
#include <limits>
#include <string_view>

namespace CallRecordingUtils {

/// Returns the number at the start of text as strtol reads it with base 10 into 32 bits: white
/// space and one sign may come first, reading ends at the first character that is not a digit, no
/// digits give 0, and a number that is too large or too small gives the nearest limit. The limits
/// are for 32 bits and not for `long`, so that 32-bit and 64-bit builds agree.
inline std::int32_t ParseDecimal(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    if (at == text.size())
        return 0;
    bool const negative = text[at] == '-';
    if (negative || text[at] == '+')
        ++at;
    std::int64_t const limit = negative ? -std::int64_t{std::numeric_limits<std::int32_t>::min()}
                                        : std::int64_t{std::numeric_limits<std::int32_t>::max()};
    std::int64_t value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
        value = value * 10 + (text[at] - '0');
        if (value >= limit) {
            value = limit;
            break;
        }
    }
    return static_cast<std::int32_t>(negative ? -value : value);
}

} // namespace CallRecordingUtils

#endif
