// What is wrong with the rules of a file, each with its line.

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
    /// What it is about, by the word that JSON has for it.
    std::string_view kind;
    std::size_t line;
    std::size_t position; ///< Of the rule.
    std::int32_t id;      ///< As the library reads it.
    std::string message;
    std::string caret; ///< The pattern with a caret under the place, if it is about a pattern.
    /// The places of the rules that take calls of this one.
    std::vector<std::size_t> takenBy;
};

/// Rules that never decide, and those of which earlier ones take some calls: the latter is usual.
inline constexpr std::string_view kNeverDecides = "never_decides";
inline constexpr std::string_view kMatchesNothing = "matches_nothing";
inline constexpr std::string_view kLosesCalls = "loses_calls";
/// What the analysis cannot say.
inline constexpr std::string_view kNotAnalysable = "not_analysable";
inline constexpr std::string_view kUndecided = "undecided";

/// Whether finding is no fault of the file.
bool IsNote(FileFinding const& finding);

/// Whether the identifier of stored is the text of a number from 0 on, as every edit finds it.
bool IsPlainId(StoredRule const& stored);

/// In the order of their lines. memory, in bytes, is for the analysis.
std::vector<FileFinding> FindFaults(std::vector<StoredRule> const& rules, std::size_t memory);

} // namespace CallRecordingUtils

#endif
