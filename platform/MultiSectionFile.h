/// @file
/// The sectioned key/value file in which the rules are kept.

#ifndef PLATFORM_MULTISECTIONFILE_H
#define PLATFORM_MULTISECTIONFILE_H

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PlatformExport.h"

namespace Configuration {
inline namespace CallRecordingPlatform {

/// A text file of sections, each a group of entries between two section lines:
///
///     # a comment
///     {
///     key=value
///     }
///
/// The object is the file as it was read, with a cursor on one of its sections. Every line that is
/// not changed keeps its bytes: comments, blank lines, unknown keys, order, line ends. A line whose
/// first non-blank character is the comment marker is a comment, anywhere else the marker is text.
/// The value is everything behind the first separator, blanks included. Blanks before a key and
/// around a section line, CRLF line ends, and a last line without an end are accepted.
///
/// Every operation may throw an exception derived from std::exception; what() says path, line (in
/// the file as it was read, where there is one) and reason. A failed operation leaves the object as
/// it was. Not thread-safe.
///
/// An operation on the current section takes time in proportion to that section, however large the
/// file is; opening and saving take time in proportion to the file.
class PLATFORM_EXPORT MultiSectionFile {
  public:
    /// Reads the file at path. A file that does not exist has no sections. Throws when the
    /// directory of path does not exist, when path cannot be read or is no regular file, when it
    /// has more than 64 MiB (before any of it is read), and when the file is malformed: a section
    /// that is not closed, nested or closed without being open, a line outside the sections that is
    /// neither blank nor a comment, a line in a section that is no entry, a NUL, a byte order mark.
    ///
    /// sectionOpen and sectionClose are the section lines with their line end, separator and
    /// comment the markers described above. The flags, unused1 and unused2 have no effect on a
    /// plain host.
    MultiSectionFile(char const* path, bool flag1, bool flag2, bool flag3, char const* unused1,
                     char const* sectionOpen, char const* sectionClose, char const* separator,
                     char const* comment, char const* unused2);

    /// Releases the object. Changes that were not saved are gone; nothing is written.
    ~MultiSectionFile();

    MultiSectionFile(MultiSectionFile const&) = delete;
    MultiSectionFile& operator=(MultiSectionFile const&) = delete;

    /// Puts the cursor before the first section.
    void Restart();

    /// Moves to the next section. Returns 1, or 0 when there is none: the cursor then stands behind
    /// the last section.
    int GotoNextSection();

    /// Moves to the preceding section. Returns 1, or 0 when there is none: the cursor then stands
    /// before the first section.
    int GotoPreviousSection();

    /// Writes the value of key in the current section into buffer, NUL-terminated; the empty text
    /// when the section lacks the key. The first of several entries of one key counts. Returns 1
    /// when the section has the key, else 0. Throws when the value with its NUL takes more than
    /// size bytes (it is never cut), and when the cursor is on no section.
    int GetSectionEntry(char const* key, char* buffer, unsigned size);

    /// Replaces the value of key in the current section, or adds the entry as the section's last.
    /// Returns 1. Throws when the entry could not be read back the same (a value with a line break
    /// or more characters than a SmartBuffer holds; a key that is empty, begins like a comment or
    /// with a blank, or has a line break or the separator in it) and when the cursor is on no
    /// section.
    int SetSectionEntry(char const* key, char const* value);

    /// Appends an empty section at the end of the file and moves to it. Returns 1. The flag has no
    /// effect.
    int AddSection(bool flag);

    /// Removes the current section with everything between its section lines, and leaves what is
    /// outside. The cursor then stands between the neighbours: GotoNextSection moves to the section
    /// that followed, GotoPreviousSection to the one before. Returns 1. Throws when the cursor is
    /// on no section.
    int DeleteSection();

    /// Writes the object back to its file, atomically and durably: at every instant, through a
    /// crash or a loss of power as well, the file is the old one or the new one. Owner and mode
    /// stay, a symbolic link is followed. Returns 1. On a failure nothing is left behind, the old
    /// file is whole, and an exception says what failed. (When the very last step fails, making the
    /// replacement in the directory durable, the new file is already in place.)
    ///
    /// Only the file that was read, or that this object saved last, is replaced: when it has become
    /// another one since, or has appeared or gone, nothing is written and the exception says so. Of
    /// two objects that save at the same time one fails; where a foreign program writes the file,
    /// it has to do so in the microseconds between the last look and the replacement to be missed.
    /// What a killed process left beside the file is removed. No signal reaches the process because
    /// of a limit on the size of files. The arguments have no effect here.
    int Save(bool flag, char const* unused);

    // --- For reports on the file; a device's class need not have these ---

    /// Returns the line, counted from 1 in the file as it was read, on which the current section is
    /// opened; 0 for an added one. Throws when the cursor is on no section.
    [[gnu::visibility("hidden")]] std::size_t GetSectionLine();

    /// Returns key and line of every entry of the current section, in their order. Throws as
    /// GetSectionLine.
    [[gnu::visibility("hidden")]] std::vector<std::pair<std::string, std::size_t>> GetEntryLines();

  private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

} // namespace CallRecordingPlatform
} // namespace Configuration

#endif
