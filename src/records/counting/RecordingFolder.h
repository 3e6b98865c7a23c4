// The names of the recordings in a folder, to find those of a call.

#ifndef RECORDS_COUNTING_RECORDINGFOLDER_H
#define RECORDS_COUNTING_RECORDINGFOLDER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace CallRecordingUtils {

/// Any number of threads may ask at once.
class RecordingFolder {
  public:
    /// Reads the names of the files in the folder and in all folders within. Empty files are no
    /// recordings. Throws an Error that names what cannot be read.
    explicit RecordingFolder(std::string const& path);

    /// Whether the name of a file holds id, as it is or with %XX for characters as rtpengine writes
    /// them; not as a part of a longer number or word.
    bool HasRecordingOf(std::string_view id) const;

    std::size_t Files() const { return files_; }
    std::size_t EmptyFiles() const { return emptyFiles_; }

  private:
    std::string_view RestOfName(std::size_t start) const;
    bool HasWhole(std::string_view id) const;

    std::size_t files_ = 0; // Those that are not empty.
    std::size_t emptyFiles_ = 0;
    std::string names_;               // One after the other, with line ends in between.
    std::vector<std::size_t> starts_; // Where words and numbers begin, sorted by what follows.
};

} // namespace CallRecordingUtils

#endif
