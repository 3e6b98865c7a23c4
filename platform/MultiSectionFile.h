/// @file
/// The sectioned key/value file that holds the rules.

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
/// An object holds the file as it was read, with a cursor on one of its sections. Operations change
/// the object, and Save the file.
///
/// What is said below without "Plain host" is what the library needs on every platform;
/// tests/platform_contract_test.cpp checks it. A device may bring a class of its own instead of
/// this one: any class on which these calls compile. "Plain host" marks what platform/host promises
/// besides. Nothing in the library relies on it, but the people who edit rules do.
///
/// Errors: every operation may throw, preferably an exception derived from std::exception, whose
/// what() the library passes on as the reason. Only exceptions count as failures; of the results,
/// the library uses those of GotoNextSection and AddSection alone.
///   Plain host: what() gives the path, the line in the file as it was read (if there is one) and
///   the reason. A failed operation leaves the object as it was.
///
/// Threads: each object is used by one thread at a time, different ones by several threads at once.
///
/// Plain host: every line that is not changed keeps its bytes: comments, blank lines, unknown keys,
/// the order of entries, line ends. A line is a comment if its first non-blank character is the
/// comment marker; anywhere else the marker is text. Blanks before a key and around a section line,
/// CRLF line ends and a last line without a line end are accepted. An operation on the current
/// section takes time in proportion to that section, opening and saving in proportion to the file.
class PLATFORM_EXPORT MultiSectionFile {
  public:
    /// Reads the file at path. A file that cannot be read or understood is an error: with an empty
    /// object in its place, the next edit would overwrite it. If the file does not exist, the
    /// object has no sections; a class that throws instead cannot create a rule file.
    ///
    /// The library passes these arguments: path, true, false, false, null, sectionOpen "{\n",
    /// sectionClose "}\n", separator "=", comment "#", null.
    ///
    /// Plain host: throws if the directory of path does not exist; if path is not a regular file or
    /// cannot be read; if the file has more than 64 MiB (without reading it); and if it is
    /// malformed: a section that is not closed, or is opened or closed at the wrong place, a line
    /// outside the sections that is neither blank nor a comment, a line in a section that is not an
    /// entry, a NUL, or a byte order mark. The flags, unused1 and unused2 have no effect.
    MultiSectionFile(char const* path, bool flag1, bool flag2, bool flag3, char const* unused1,
                     char const* sectionOpen, char const* sectionClose, char const* separator,
                     char const* comment, char const* unused2);

    /// Releases the object. Unsaved changes are lost; nothing is written.
    ~MultiSectionFile();

    MultiSectionFile(MultiSectionFile const&) = delete;
    MultiSectionFile& operator=(MultiSectionFile const&) = delete;

    /// Moves the cursor before the first section.
    void Restart();

    /// Moves to the next section, in the order of the file. Returns non-zero, or 0 if there is
    /// none; the cursor is then after the last section.
    int GotoNextSection();

    /// Moves from the current section to the preceding one. Returns non-zero, or 0 if there is
    /// none.
    ///   Plain host: the cursor is then before the first section. From after the last section, it
    ///   moves to that.
    int GotoPreviousSection();

    /// Writes the value of key in the current section into buffer, with a NUL at the end: every
    /// character after the separator. Values set on this object before count, saved or not. If the
    /// section does not have the key, it writes the empty text; otherwise the library would take
    /// the value of another key for this one's. Never writes more than size bytes.
    ///   Plain host: returns 1 if the section has the key, else 0. The first of several entries
    ///   with the same key counts. A value is never cut: if it does not fit, with its NUL, it
    ///   throws. Throws too if the cursor is on no section.
    int GetSectionEntry(char const* key, char* buffer, unsigned size);

    /// Replaces the value of key in the current section, or adds the entry. Any value that fits
    /// into a SmartBuffer and has no line break in it has to be read back the same, after Save too:
    /// the comment marker, the separator and section lines are ordinary text within a value. Other
    /// values are an error.
    ///   Plain host: returns 1. Adds the entry at the end of the section. Throws if the entry could
    ///   not be read back the same (a value with a line break, or longer than a SmartBuffer of the
    ///   plain host holds; a key that is empty, begins with the comment marker or a blank, or
    ///   contains the separator or a line break), and if the cursor is on no section.
    int SetSectionEntry(char const* key, char const* value);

    /// Adds an empty section at the end of the file, wherever the cursor is, and moves to it.
    /// Returns non-zero, or 0 if that is impossible. The flag is false.
    int AddSection(bool flag);

    /// Removes the current section with its entries. GotoNextSection then moves to the section that
    /// followed it.
    ///   Plain host: returns 1. Keeps the text outside the section. GotoPreviousSection then moves
    ///   to the section before it. Throws if the cursor is on no section.
    int DeleteSection();

    /// Writes the object to its file, which then has the sections of the object, in their order.
    /// May be called repeatedly. The library passes true and null.
    ///
    /// Plain host: returns 1. The save is atomic and durable: at every moment, even after a crash
    /// or a power failure, the file is either the old or the new one. On a failure, the old file is
    /// intact and nothing is left beside it. (Only if the very last step fails, making the new name
    /// durable, is the new file in place already; the exception says so.)
    ///
    /// Owner, group and mode of the file are kept, and symbolic links are followed. A process that
    /// may not change owners becomes the owner, if it may write the file and can keep its group. It
    /// throws if it can do neither, and if the link to the file leads into a folder that is itself
    /// a symbolic link beside that link: container platforms exchange such folders, with everything
    /// in them.
    ///
    /// Only the file that was read, or last saved by this object, is replaced. If it has changed
    /// since, was created or removed, nothing is written, and the exception says so. Of two objects
    /// that save at the same time, one fails. A change by a program that does not use this class is
    /// missed only if it is made in the microseconds between the last check and the replacement.
    /// Leftovers of killed processes are removed. A limit on the size of files (RLIMIT_FSIZE) is an
    /// error, and raises no signal. The arguments have no effect.
    int Save(bool flag, char const* unused);

    // --- Not needed for the library: for the client's reports on lines of the file ---

    /// Returns the line, counted from 1 in the file as it was read, that opens the current section;
    /// 0 for an added section. Throws if the cursor is on no section.
    [[gnu::visibility("hidden")]] std::size_t GetSectionLine();

    /// Returns key and line of every entry of the current section, in their order. Throws if the
    /// cursor is on no section.
    [[gnu::visibility("hidden")]] std::vector<std::pair<std::string, std::size_t>> GetEntryLines();

  private:
    class Impl;
    std::unique_ptr<Impl> mImpl;
};

} // namespace CallRecordingPlatform
} // namespace Configuration

#endif
