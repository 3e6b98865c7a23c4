/// @file
/// Tests which characters a text has, independent of the process's locale.

#include "StringUtils.h"

#include <algorithm>

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

} // namespace

bool StringUtils::IsNumeric(std::string const& text, bool /*flag1*/, bool /*flag2*/) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

bool StringUtils::IsAlpha(std::string const& text, bool /*flag*/) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsLetter);
}
