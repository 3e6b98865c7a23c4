/// @file
/// Translates patterns for other engines: only such as rules.cpp and hostile.cpp make, and for
/// addresses that have digits wherever a pattern has a range of numbers.

#ifndef BENCH_TRANSLATION_H
#define BENCH_TRANSLATION_H

#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace bench {

/// Returns the pattern of a side of a rule, completed: a SIP pattern without a port takes any port.
std::string SidePattern(std::string const& pattern, CallType type);

/// How to exclude a number from a range: by a negative lookahead or, for engines without them, by
/// splitting the range in two.
enum class Exclusion { Lookahead, Split };

/// Returns a regular expression for the whole address, without anchors. anyOne is the expression
/// for any one character.
std::string ToRegex(std::string_view pattern, Exclusion exclusion, std::string const& anyOne = ".");

/// Returns a pattern for fnmatch(3). REQUIRES: pattern has no range expression.
std::string ToGlob(std::string_view pattern);

} // namespace bench

#endif
