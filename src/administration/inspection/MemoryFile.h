// A text as a file that only this process sees, for what reads files by their path.

#ifndef ADMINISTRATION_INSPECTION_MEMORYFILE_H
#define ADMINISTRATION_INSPECTION_MEMORYFILE_H

#include <string>
#include <string_view>

namespace CallRecordingUtils {

class MemoryFile {
  public:
    /// Throws std::system_error when there is no memory for it.
    explicit MemoryFile(std::string_view text);
    ~MemoryFile();
    MemoryFile(MemoryFile const&) = delete;
    MemoryFile& operator=(MemoryFile const&) = delete;

    /// Good for as long as the object lives.
    std::string Path() const;

  private:
    int file_;
};

} // namespace CallRecordingUtils

#endif
