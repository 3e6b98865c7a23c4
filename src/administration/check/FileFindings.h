// Finds what is wrong with the rules of a file, and on which line.

#ifndef ADMINISTRATION_CHECK_FILEFINDINGS_H
#define ADMINISTRATION_CHECK_FILEFINDINGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "administration/inspection/StoredRules.h"
#include "analysis/RuleAnalysis.h"

namespace CallRecordingUtils {

struct FileFinding {
    /// What it is about: a word, as JSON has it.
    std::string_view kind;
    std::size_t line;
    std::size_t position; ///< Of the rule.
    std::int32_t id;      ///< Of the rule, as the library reads it.
    std::string message;
    std::string caret; ///< If it is about a pattern: the pattern, with a caret under the place.
    /// The places of rules that take calls of this one; all of them if isTakenByComplete.
    std::vector<std::size_t> takenBy;
    bool isTakenByComplete = true;
    bool neverDecides = false; ///< Proved: it matches no call, or takenBy together take them all.
    /// A call that another rule decides, not as this one would.
    struct Loss {
        std::size_t taker;
        ExampleCall call;
    };
    std::optional<Loss> loss;
};

/// Kinds of findings about rules that never decide, by what takes their calls: rules that do the
/// same; something else; a wider rule before it that does something else; a rule that says never;
/// or that is not known.
inline constexpr std::string_view kDroppable = "droppable";
inline constexpr std::string_view kConflict = "conflict";
inline constexpr std::string_view kOrder = "order";
inline constexpr std::string_view kForbidden = "forbidden";
inline constexpr std::string_view kNeverDecides = "never_decides";
/// No call matches the rule at all.
inline constexpr std::string_view kMatchesNothing = "matches_nothing";

/// Kinds of notes: earlier rules take some calls, as is usual; the rule decides calls, but could go
/// without any call changing; no party of a call can match it; and with the other kind of calls it
/// is otherwise.
inline constexpr std::string_view kLosesCalls = "loses_calls";
inline constexpr std::string_view kCouldGo = "could_go";
inline constexpr std::string_view kNoParty = "no_party";
inline constexpr std::string_view kOtherCalls = "other_calls";
/// What the analysis could not find out.
inline constexpr std::string_view kNotAnalysable = "not_analysable";
inline constexpr std::string_view kUndecided = "undecided";

inline constexpr std::array<std::string_view, 6> kNotes{kLosesCalls, kCouldGo,       kNoParty,
                                                        kOtherCalls, kNotAnalysable, kUndecided};

/// Whether finding is worth knowing, but not a fault.
bool IsNote(FileFinding const& finding);

/// Whether the identifier of stored is written as a plain number from 0 on, so that every edit
/// finds it.
bool IsPlainId(StoredRule const& stored);

struct CheckOptions {
    CallKind calls = CallKind::Typed;
    std::size_t memory = kAnalysisMemory; ///< In bytes, the findings among what is held.
    /// How many rules that take calls of another one are looked for.
    std::size_t mostTakers = 100;
    /// Called now and then with how much is done, and how much there is to do.
    std::function<void(std::size_t, std::size_t)> onProgress{};
};

/// Returns the faults in the order of their lines, and then the notes.
std::vector<FileFinding> FindFaults(std::vector<StoredRule> const& rules,
                                    CheckOptions const& options);

} // namespace CallRecordingUtils

#endif
