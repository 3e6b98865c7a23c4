// The one list of what is well formed in a pattern and yet surely not meant.

#ifndef VALIDATION_SUSPICIONS_H
#define VALIDATION_SUSPICIONS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>
#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

/// A pattern, or one piece of a SIP pattern, in the stored form.
struct PatternPiece {
    enum class Kind { Number, User, Host, Port };
    Kind kind;
    std::string text;
};

/// A part of the text of a piece.
struct Stretch {
    std::size_t begin;
    std::size_t length;
};

/// One entry of the list.
struct Suspicion {
    char const* example; ///< A pattern in the entry form that it is about.
    CallType type;       ///< The call type of example.
    /// Returns the first part of a well-formed piece that it is about.
    std::optional<Stretch> (*find)(PatternPiece const& piece);
    /// The message, after the part in quotes; the whole message when the part has no characters.
    /// What it says is certain, or else it is advice.
    char const* sentence;
};

/// Where several entries are about a piece, the first one is reported.
using Suspicions = std::array<Suspicion, 16>;
Suspicions const& AllSuspicions();

/// Returns what is suspicious in entry, a pattern in the entry form for a side of this call type.
/// REQUIRES: entry is well formed.
std::optional<PatternProblem> FindSuspicion(std::string_view entry, CallType type);

/// Returns where in a stored pattern the matcher stops, so that the match succeeds whatever follows
/// in the pattern and in the address; npos when it does not.
std::size_t PlaceOfStop(std::string_view stored);

} // namespace CallRecordingUtils

#endif
