// Checks and converts the pattern of one side of a rule by its call type. A SIP pattern is
// user@host or user@host:port: "@" and ":" divide it in both forms, and each piece is a pattern by
// itself.

#ifndef VALIDATION_SIDEPATTERN_H
#define VALIDATION_SIDEPATTERN_H

#include <cstddef>
#include <optional>
#include <string>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

/// The stored form of a pattern, or what is wrong with it; stored is empty then.
struct StoredPattern {
    std::string stored;
    std::optional<PatternProblem> problem;
};
StoredPattern ToStored(std::string const& entry, CallType type);

/// Returns the entry form of a stored pattern. If the pattern is well formed, ToStored makes
/// exactly the same stored form of it again. A pattern that has no entry form is returned as it is.
std::string ToEntry(std::string const& stored, CallType type);

/// Returns what is wrong with a stored pattern, if anything. The position is one in ToEntry's text.
std::optional<PatternProblem> ExplainStored(std::string const& stored, CallType type);

/// Returns what in a well-formed entry is surely not meant; nothing when it is malformed.
std::optional<PatternProblem> SuspectEntry(std::string const& entry, CallType type);

/// The same for a stored pattern. The position is one in ToEntry's text.
std::optional<PatternProblem> SuspectStored(std::string const& stored, CallType type);

/// Returns the end of a sentence about place in a stored pattern: that the matcher stops there.
/// Empty when it does not.
std::string WhatStopMeans(std::string const& stored, CallType type, std::size_t place);

} // namespace CallRecordingUtils

#endif
