// The pattern of one side of a rule, checked and converted by its call type. A SIP pattern is
// user@host or user@host:port; there "@" and ":" are structure in both forms, and each piece is a
// pattern by itself.

#ifndef VALIDATION_SIDEPATTERN_H
#define VALIDATION_SIDEPATTERN_H

#include <optional>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

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

/// What in a well-formed entry is surely not meant; nothing when it is malformed.
std::optional<PatternProblem> SuspectEntry(std::string const& entry, CallType type);

/// The same for a stored pattern; the position is one of ToEntry's text.
std::optional<PatternProblem> SuspectStored(std::string const& stored, CallType type);

} // namespace CallRecordingUtils

#endif
