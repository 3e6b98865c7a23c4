// The commands, in the order in which the help shows them. A new one is a file in this folder,
// which defines its AddName, and a line here.

#ifndef CALLRECORDINGCTL_COMMANDS_REGISTRY_H
#define CALLRECORDINGCTL_COMMANDS_REGISTRY_H

namespace callrecordingctl {

class CommandLine;

// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): each name is said once.
#define CALLRECORDINGCTL_COMMANDS(COMMAND)                                                         \
    COMMAND(List)                                                                                  \
    COMMAND(Show)                                                                                  \
    COMMAND(Decide)                                                                                \
    COMMAND(Check)                                                                                 \
    COMMAND(Explain)                                                                               \
    COMMAND(Example)                                                                               \
    COMMAND(Diff)                                                                                  \
    COMMAND(Prove)                                                                                 \
    COMMAND(Replay)                                                                                \
    COMMAND(Add)                                                                                   \
    COMMAND(Modify)                                                                                \
    COMMAND(EditRules)                                                                             \
    COMMAND(Delete)                                                                                \
    COMMAND(UpAndDown)                                                                             \
    COMMAND(Move)                                                                                  \
    COMMAND(EnableAndDisable)                                                                      \
    COMMAND(Renumber)                                                                              \
    COMMAND(Undo)                                                                                  \
    COMMAND(Revert)                                                                                \
    COMMAND(Log)                                                                                   \
    COMMAND(Import)                                                                                \
    COMMAND(Export)                                                                                \
    COMMAND(Status)

#define CALLRECORDINGCTL_DECLARE(name) void Add##name(CommandLine& line);
CALLRECORDINGCTL_COMMANDS(CALLRECORDINGCTL_DECLARE)
#undef CALLRECORDINGCTL_DECLARE

/// Adds all of them to line.
inline void AddCommands(CommandLine& line) {
#define CALLRECORDINGCTL_ADD(name) Add##name(line);
    CALLRECORDINGCTL_COMMANDS(CALLRECORDINGCTL_ADD)
#undef CALLRECORDINGCTL_ADD
}

} // namespace callrecordingctl

#endif
