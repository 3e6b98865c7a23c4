// The commands, in the groups and the order in which the help shows them. A new one is a file in
// this folder, which defines its AddName, and a line here.

#ifndef CALLRECORDINGCTL_COMMANDS_REGISTRY_H
#define CALLRECORDINGCTL_COMMANDS_REGISTRY_H

#include "CommandLine.h"

namespace callrecordingctl {

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): each name is said once.
#define CALLRECORDINGCTL_COMMANDS(GROUP, COMMAND)                                                  \
    GROUP("Look at rules and calls")                                                               \
    COMMAND(List)                                                                                  \
    COMMAND(Show)                                                                                  \
    COMMAND(Decide)                                                                                \
    COMMAND(Explain)                                                                               \
    COMMAND(Example)                                                                               \
    COMMAND(Status)                                                                                \
    GROUP("Change rules")                                                                          \
    COMMAND(Add)                                                                                   \
    COMMAND(Modify)                                                                                \
    COMMAND(EditRules)                                                                             \
    COMMAND(Delete)                                                                                \
    COMMAND(UpAndDown)                                                                             \
    COMMAND(Move)                                                                                  \
    COMMAND(EnableAndDisable)                                                                      \
    COMMAND(Renumber)                                                                              \
    GROUP("Look back, and go back")                                                                \
    COMMAND(Log)                                                                                   \
    COMMAND(Undo)                                                                                  \
    COMMAND(Revert)                                                                                \
    GROUP("Move in and out, and compare")                                                          \
    COMMAND(Import)                                                                                \
    COMMAND(Export)                                                                                \
    COMMAND(Pull)                                                                                  \
    COMMAND(Diff)                                                                                  \
    GROUP("Audit")                                                                                 \
    COMMAND(Check)                                                                                 \
    COMMAND(Prove)                                                                                 \
    COMMAND(Replay)

#define CALLRECORDINGCTL_NO_GROUP(heading)
#define CALLRECORDINGCTL_DECLARE(name) void Add##name(CommandLine& line);
CALLRECORDINGCTL_COMMANDS(CALLRECORDINGCTL_NO_GROUP, CALLRECORDINGCTL_DECLARE)
#undef CALLRECORDINGCTL_DECLARE
#undef CALLRECORDINGCTL_NO_GROUP

/// Adds all of them to line.
inline void AddCommands(CommandLine& line) {
#define CALLRECORDINGCTL_GROUP(heading) line.BeginGroup(heading);
#define CALLRECORDINGCTL_ADD(name) Add##name(line);
    CALLRECORDINGCTL_COMMANDS(CALLRECORDINGCTL_GROUP, CALLRECORDINGCTL_ADD)
#undef CALLRECORDINGCTL_ADD
#undef CALLRECORDINGCTL_GROUP
}

} // namespace callrecordingctl

#endif
