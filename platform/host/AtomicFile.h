/// @file
/// Reads a whole file, and replaces a whole file so that no crash can lose it, and no other
/// writer's work is lost either.

#ifndef PLATFORM_HOST_ATOMICFILE_H
#define PLATFORM_HOST_ATOMICFILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "FileStamp.h"

namespace HostPlatform {

/// The most bytes that are read or written. A file that has more has come there by mistake, and its
/// bytes might take all the memory of the process.
constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;

/// The bytes of a file, and the stamp that it had; without a stamp there was no file.
struct FileText {
    std::string text;
    std::optional<FileStamp> stamp;
};

/// Reads the regular file at path; where there is none but its directory exists, so that
/// ReplaceFile could create it, the text is empty. What is written while it is read is read again.
/// Throws std::runtime_error, with the path in its text, for anything else. Never waits for a pipe
/// or a device that stands in the file's place.
FileText ReadFile(std::string const& path);

/// Makes content the file at path, following symbolic links; creates the file when there was none.
/// At every instant, through a crash or a loss of power as well, the file is the old or the new
/// one. Owner and mode of the old file are kept; a process that may not keep them cannot replace
/// it. stamp is the one that the file had when content was made from it, and becomes that of the
/// new file: a file that has another one by now is left alone.
///
/// Throws std::runtime_error, with the path in its text, when any step fails. The old file is whole
/// then and nothing is left beside it; only when the last step failed, which makes the replacement
/// in the directory durable, is the new file in place. A process killed on the way may leave a file
/// named like the old one with ".tmp" at the end, which nothing reads and the next call removes.
void ReplaceFile(std::string const& path, std::string_view content,
                 std::optional<FileStamp>& stamp);

} // namespace HostPlatform

#endif
