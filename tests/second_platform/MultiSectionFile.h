/// @file
/// The sectioned file as lines that are searched for each operation.

#ifndef SECOND_PLATFORM_MULTISECTIONFILE_H
#define SECOND_PLATFORM_MULTISECTIONFILE_H

#include <memory>
#include <string>

class SlowFile;

namespace Configuration {

class [[gnu::visibility("default")]] MultiSectionFile {
  public:
    /// Takes the syntax of the rule file for granted.
    MultiSectionFile(char const* path, bool, bool, bool, char const*, char const*, char const*,
                     char const*, char const*, char const*);
    ~MultiSectionFile();
    void Restart();
    bool GotoNextSection();
    bool GotoPreviousSection();
    void GetSectionEntry(char const* key, char* buffer, unsigned size);
    void SetSectionEntry(char const* key, char const* value);
    bool AddSection(bool);
    void DeleteSection();
    void Save(bool, char const*);

  private:
    SlowFile& Current();

    std::string mPath;
    std::unique_ptr<SlowFile> mFile;
};

} // namespace Configuration

#endif
