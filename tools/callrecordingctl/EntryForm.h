/// @file
/// The two forms of a pattern: the entry form, in which people write and read it, and the stored
/// form, in which the rule file holds it and the library matches it.
///
///     entry form             stored form
///     {1-5}                  <1-5>
///     \*  \?  \,  \-  \!     #  ^  @  %  :
///
/// A SIP pattern is user@host or user@host:port; there "@" and ":" are structure in both forms, and
/// each piece is a pattern by itself.

#ifndef CALLRECORDINGCTL_ENTRYFORM_H
#define CALLRECORDINGCTL_ENTRYFORM_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace callrecordingctl {

/// What is wrong with a pattern: a byte of its entry form and a sentence that says what to change.
struct PatternProblem {
    std::size_t position;
    std::string message;
};

/// The pieces of a SIP pattern, as views into it.
struct SipPieces {
    std::string_view user;
    std::string_view host;
    std::optional<std::string_view> port;
};

/// Splits a SIP pattern of either form as the library splits a stored one: the port is behind the
/// last
/// ":", and the user ends at the last "@" before that. Nothing without such an "@".
std::optional<SipPieces> SplitSip(std::string_view pattern);

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

} // namespace callrecordingctl

#endif
