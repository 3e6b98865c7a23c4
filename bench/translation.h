/// @file
/// The patterns of the library, written for other engines. Only what rules.cpp and hostile.cpp
/// generate is understood, and addresses of digits are taken for granted where a range of numbers
/// stands.

#ifndef BENCH_TRANSLATION_H
#define BENCH_TRANSLATION_H

#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace bench {

/// The text that a side of a rule is matched with: a SIP pattern without a port takes any.
std::string SidePattern(std::string const& pattern, CallType type);

/// Where a range expression excludes a number: a negative lookahead, or, for an engine that has
/// none, the ranges before and behind it.
enum class Exclusion { Lookahead, Split };

/// A regular expression for the whole address, without anchors. anyOne is the expression for any
/// one character.
std::string ToRegex(std::string_view pattern, Exclusion exclusion, std::string const& anyOne = ".");

/// A pattern of fnmatch(3). REQUIRES: pattern has no range expression.
std::string ToGlob(std::string_view pattern);

} // namespace bench

#endif
