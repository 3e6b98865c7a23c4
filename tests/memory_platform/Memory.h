/// @file
/// The memory in which this platform keeps its files, and what a test can make of its calls.

#ifndef MEMORYPLATFORM_MEMORY_H
#define MEMORYPLATFORM_MEMORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <PlatformExport.h>

namespace MemoryPlatform {

/// Makes or replaces the file at path, which is any text.
PLATFORM_EXPORT void SetFile(std::string const& path, std::string const& text);
PLATFORM_EXPORT std::optional<std::string> GetFile(std::string const& path);
void AppendToFile(std::string const& path, std::string const& text);
/// Removes all files whose path begins with start.
PLATFORM_EXPORT void RemoveFiles(std::string const& start);

/// What a call throws that is to fail: nothing that anyone could expect.
struct Fault {};

/// Begins to count the library's calls of the platform, and lets one of them fail: the occurrence
/// is 1 for the next one; with 0 none fails.
PLATFORM_EXPORT void FailCall(int occurrence);
/// Whether that call has been made.
PLATFORM_EXPORT bool WasHit();
/// The texts given to SetFile since FailCall.
PLATFORM_EXPORT std::vector<std::string> Saves();
/// Lets every SmartBuffer report this capacity. Initially 64 KiB, which the buffers do have.
PLATFORM_EXPORT void SetBufferCapacity(std::uint32_t capacity);
std::uint32_t BufferCapacity();

/// Counts a call of the platform; throws a Fault when it is the one that is to fail.
void CountCall();

} // namespace MemoryPlatform

#endif
