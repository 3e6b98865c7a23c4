/// @file
/// Reads a whole file, and replaces a whole file so that neither its content nor what another
/// writer saved meanwhile can be lost.

#ifndef PLATFORM_HOST_ATOMICFILE_H
#define PLATFORM_HOST_ATOMICFILE_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "FileStamp.h"

namespace HostPlatform {

/// The most bytes that are read or written. A larger file got there by mistake, and reading it
/// might take all the memory of the process.
constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;

/// The content of a file and its stamp when it was read; no stamp if there was no file.
struct FileText {
    std::string text;
    std::optional<FileStamp> stamp;
};

/// Reads the regular file at path. The text is empty if there is no file but its directory exists,
/// so that ReplaceFile could create one. A file that changes while it is read is read again. Throws
/// std::runtime_error, with the path in its text, in every other case. Never blocks, not even if
/// path is a pipe or a device.
FileText ReadFile(std::string const& path);

/// Replaces the content of the file at path, following symbolic links; creates the file if there is
/// none. At every moment, even after a crash or a power failure, the file is either the old or the
/// new one. stamp is the file's stamp from when content was derived from it, and becomes the new
/// file's: if the file has a different stamp by now, it is left alone.
///
/// The new file has the mode, group and owner of the old one. A process that may not change owners
/// becomes the owner itself if it may write the old file and can keep the group; otherwise the file
/// is left alone. So is one that path reaches through a symbolic link into a folder beside that
/// link which is a symbolic link too. Container platforms mount configuration this way, and an edit
/// would be lost when they point the folder's link to another folder.
///
/// Throws std::runtime_error, with the path in its text, if any step fails. The old file is then
/// intact and nothing is left beside it. Only if the last step fails, which makes the rename
/// durable in the directory, is the new file in place. A process killed on the way may leave a file
/// with the name of the old one and ".PROCESS.NUMBER.tmp" appended; nobody reads it, and the next
/// call removes it.
void ReplaceFile(std::string const& path, std::string_view content,
                 std::optional<FileStamp>& stamp);

} // namespace HostPlatform

#endif
