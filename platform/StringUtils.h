/// @file
/// Tests which characters a text consists of.

#ifndef PLATFORM_STRINGUTILS_H
#define PLATFORM_STRINGUTILS_H

#include <string>

namespace StringUtils {
inline namespace CallRecordingPlatform {

/// Returns whether text consists of one or more ASCII digits, in every locale. The library passes
/// false and false.
///   Plain host: the flags have no effect.
bool IsNumeric(std::string const& text, bool flag1, bool flag2);

/// Returns whether text consists of one or more ASCII letters, in every locale. The library passes
/// false.
///   Plain host: the flag has no effect.
bool IsAlpha(std::string const& text, bool flag);

} // namespace CallRecordingPlatform
} // namespace StringUtils

#endif
