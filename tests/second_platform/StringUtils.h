/// @file
/// Tests which characters a text consists of, with the C library.

#ifndef SECOND_PLATFORM_STRINGUTILS_H
#define SECOND_PLATFORM_STRINGUTILS_H

#include <cstring>
#include <string>

#include "Faults.h"

namespace StringUtils {

inline bool IsNumeric(std::string const& text, bool, bool) {
    bool const isSigned = HasFault("signed number") && text[0] == '-';
    return !text.empty() &&
           std::strspn(text.c_str(), isSigned ? "-0123456789" : "0123456789") == text.size();
}

inline bool IsAlpha(std::string const& text, bool) {
    if (text.empty())
        return HasFault("empty letters");
    for (char const c : text)
        if ((c | 0x20) < 'a' || (c | 0x20) > 'z')
            return false;
    return true;
}

} // namespace StringUtils

#endif
