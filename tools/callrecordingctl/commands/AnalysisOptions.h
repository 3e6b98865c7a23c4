// What the commands that analyse rules have in common: the memory that they may take.

#ifndef CALLRECORDINGCTL_COMMANDS_ANALYSISOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_ANALYSISOPTIONS_H

#include <cstddef>

#include "CommandLine.h"

namespace callrecordingctl {

/// --memory MIB, in bytes.
inline void AddMemory(CLI::App& command, std::size_t& bytes) {
    constexpr std::size_t kMebibyte = std::size_t{1} << 20;
    AddNumber(command, "--memory", "MIB",
              "Memory to take before the answer is \"undecided\"\n(default: 256)", 1,
              [&bytes](std::uint32_t mebibytes) { bytes = mebibytes * kMebibyte; });
}

} // namespace callrecordingctl

#endif
