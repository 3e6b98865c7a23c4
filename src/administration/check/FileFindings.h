// Finds what is wrong with the rules of a file, and on which line.

#ifndef ADMINISTRATION_CHECK_FILEFINDINGS_H
#define ADMINISTRATION_CHECK_FILEFINDINGS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "administration/inspection/StoredRules.h"

namespace CallRecordingUtils {

struct FileFinding {
    /// What it is about: a word, as JSON has it.
    std::string_view kind;
    std::size_t line;
    std::size_t position; ///< Of the rule.
    std::int32_t id;      ///< Of the rule, as the library reads it.
    std::string message;
    std::string caret; ///< If it is about a pattern: the pattern, with a caret under the place.
    /// The places of rules that take calls of this one.
    std::vector<std::size_t> takenBy;
};

/// Kinds of findings: rules that never decide, rules that match no call, and rules of which earlier
/// rules take some calls, as is usual.
inline constexpr std::string_view kNeverDecides = "never_decides";
inline constexpr std::string_view kMatchesNothing = "matches_nothing";
inline constexpr std::string_view kLosesCalls = "loses_calls";
/// What the analysis could not find out.
inline constexpr std::string_view kNotAnalysable = "not_analysable";
inline constexpr std::string_view kUndecided = "undecided";

/// Whether finding is worth knowing, but not a fault.
bool IsNote(FileFinding const& finding);

/// Whether the identifier of stored is written as a plain number from 0 on, so that every edit
/// finds it.
bool IsPlainId(StoredRule const& stored);

/// Returns the findings in the order of their lines. The analysis may take so many bytes of memory.
std::vector<FileFinding> FindFaults(std::vector<StoredRule> const& rules, std::size_t memory);

} // namespace CallRecordingUtils

#endif
