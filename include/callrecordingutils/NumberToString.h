/// @file
/// The decimal text of a number, as the rule file stores it.

#ifndef CALLRECORDINGUTILS_NUMBERTOSTRING_H
#define CALLRECORDINGUTILS_NUMBERTOSTRING_H

#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/Export.h>

/// Returns value in decimal: digits, with a minus sign in front of a negative number, and never
/// grouped, whatever the locale of the process. An enumeration is written as its number. Available
/// for the three types below.
template <typename T>
CALLRECORDINGUTILS_EXPORT std::string NumberToString(T const& value);

extern template std::string NumberToString<long>(long const&);
extern template std::string NumberToString<int>(int const&);
extern template std::string NumberToString<CallRecordingUtils::CallRecordingTypes>(
    CallRecordingUtils::CallRecordingTypes const&);

#endif
