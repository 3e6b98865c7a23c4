/// @file
/// The commands. Each returns the exit code, or throws a Failure.

#ifndef CALLRECORDINGCTL_COMMANDS_H
#define CALLRECORDINGCTL_COMMANDS_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Failure.h"
#include "RuleStore.h"

namespace callrecordingctl {

ExitCode List(bool basicView, bool json);
ExitCode Show(std::int32_t id, bool json);

/// One side of a call, as it was given. Without a type an address with an "@" is of type sip.
struct CallSide {
    std::string address;
    std::optional<CallType> type;
};
ExitCode Decide(CallSide const& from, CallSide const& to, bool explain, bool json);

/// Patterns in the entry form. Returns no when one is malformed.
ExitCode CheckPatterns(std::vector<std::string> const& patterns, CallType type, bool json);
/// The whole rule file. Returns no when anything is found.
ExitCode CheckRuleFile(bool json);

/// What all edits have in common.
struct EditOptions {
    bool dryRun = false;
    bool json = false;
    bool twin = false; ///< The mirrored twin too; add, modify and delete only.
    std::chrono::seconds patience{5};
};

/// The fields of a rule that the command line gives; patterns in the entry form.
struct SideFields {
    std::optional<std::string> pattern;
    std::optional<CallType> type;
};
struct RuleFields {
    SideFields from;
    SideFields to;
    std::optional<std::string> recordTo;
    std::optional<std::string> duration;
    std::optional<std::string> description;
    std::optional<CallRecordingUtils::CallRecordingTypes> recordingType;
    std::optional<std::int32_t> state;
};

ExitCode Add(RuleFields fields, std::optional<std::size_t> position, EditOptions const& options);
ExitCode Modify(std::int32_t id, RuleFields const& fields, EditOptions const& options);
ExitCode Delete(std::int32_t id, EditOptions const& options);
ExitCode Move(std::int32_t id, std::size_t places, bool up, EditOptions const& options);
ExitCode SetState(std::int32_t id, bool enable, EditOptions const& options);

} // namespace callrecordingctl

#endif
