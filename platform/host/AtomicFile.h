/// @file
/// Reads a whole file, and replaces a whole file so that no crash can lose it.

#ifndef PLATFORM_HOST_ATOMICFILE_H
#define PLATFORM_HOST_ATOMICFILE_H

#include <string>
#include <string_view>

/// Returns the bytes of the regular file at path; the empty text when there is no file but its
/// directory exists, so that ReplaceFile could create it. Throws std::system_error, with the path
/// in its text, for anything else. Never waits for a pipe or a device that stands in the file's
/// place.
std::string ReadFile(std::string const& path);

/// Makes content the file at path, following symbolic links; creates the file when it is missing.
/// At every instant, through a crash or a loss of power as well, the file is the old or the new
/// one. Owner and mode of the old file are kept; a process that may not keep them cannot replace
/// it.
///
/// Throws std::system_error, with the path in its text, when any step fails. The old file is whole
/// then and nothing is left beside it; only when the last step failed, which makes the replacement
/// in the directory durable, is the new file in place. A process killed on the way may leave a file
/// named like the old one with ".tmp" at the end, which nothing reads.
void ReplaceFile(std::string const& path, std::string_view content);

#endif
