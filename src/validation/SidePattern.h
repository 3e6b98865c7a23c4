// The pattern of one side of a rule, checked and converted by its call type. A SIP pattern is
// user@host or user@host:port; there "@" and ":" are structure in both forms, and each piece is a
// pattern by itself.

#ifndef VALIDATION_SIDEPATTERN_H
#define VALIDATION_SIDEPATTERN_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// What is wrong with a pattern: a byte of its entry form and a sentence that says what to change.
struct PatternProblem {
    std::size_t position;
    std::string message;
};

/// The stored form of a pattern, or what is wrong with it; then stored is empty.
struct StoredPattern {
    std::string stored;
    std::optional<PatternProblem> problem;
};
StoredPattern ToStored(std::string const& entry, CallType type);

/// The entry form of a stored pattern. ToStored brings back the very same stored form when the
/// pattern is well formed. A pattern that no entry form corresponds to is returned as it is.
std::string ToEntry(std::string const& stored, CallType type);

/// What is wrong with a stored pattern, if anything; the position is one of ToEntry's text.
std::optional<PatternProblem> ExplainStored(std::string const& stored, CallType type);

} // namespace CallRecordingUtils

#endif
