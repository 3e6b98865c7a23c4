/// @file
/// Tests of a text's characters.

#ifndef PLATFORM_STRINGUTILS_H
#define PLATFORM_STRINGUTILS_H

#include <string>

namespace StringUtils {
inline namespace CallRecordingPlatform {

/// Returns whether text is one or more ASCII digits. The flags have no effect on a plain host.
bool IsNumeric(std::string const& text, bool flag1, bool flag2);

/// Returns whether text is one or more ASCII letters. The flag has no effect on a plain host.
bool IsAlpha(std::string const& text, bool flag);

} // namespace CallRecordingPlatform
} // namespace StringUtils

#endif
