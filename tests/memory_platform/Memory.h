/// @file
/// The memory in which this platform keeps its files, and what a test can make of its calls.

#ifndef MEMORYPLATFORM_MEMORY_H
#define MEMORYPLATFORM_MEMORY_H

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <PlatformExport.h>

/// One for the process. The library locks its files and its log by itself, and counts of calls are
/// the only thing that decisions share.
struct Memory {
    std::map<std::string, std::string> files; // By their paths, which are any texts.
    std::vector<std::string> saves;           // All texts that were saved.
    std::atomic<int> callsToGo{0}; // Until one of the platform's calls fails, if above 0.
    std::uint32_t bufferCapacity = 64 * 1024; // What buffers report; they do have 64 KiB.

    /// What a call throws that is to fail: nothing that anyone could expect.
    struct Fault {};

    /// Counts a call of the platform, and throws a Fault when it is the one that is to fail.
    void CountCall() {
        if (callsToGo > 0 && --callsToGo == 0)
            throw Fault{};
    }
};

PLATFORM_EXPORT Memory& TheMemory();

#endif
