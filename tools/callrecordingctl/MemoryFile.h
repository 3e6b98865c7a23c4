// A text as a file that only this process sees, for what reads files by their path.

#ifndef CALLRECORDINGCTL_MEMORYFILE_H
#define CALLRECORDINGCTL_MEMORYFILE_H

#include <string>
#include <string_view>

#include "Rules.h"

namespace callrecordingctl {

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

/// The bytes of the file at path, "-" for standard input. Throws a Failure that names it.
std::string ReadInput(std::string const& path);

/// The rules of a rule file with this text. Throws a Failure with name, line and reason.
RuleList RulesOf(std::string const& text, std::string const& name);

} // namespace callrecordingctl

#endif
