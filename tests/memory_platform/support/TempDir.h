/// @file
/// The in-memory platform's stand-in for a directory of a test's own: same operations, no disk.

#ifndef TESTS_SUPPORT_TEMPDIR_H
#define TESTS_SUPPORT_TEMPDIR_H

#include <cstdlib>
#include <string>
#include <string_view>

#include "../Memory.h"

class TempDir {
  public:
    TempDir() = default;
    ~TempDir() { TheMemory().files.clear(); }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& Path() const { return mPath; }
    std::string Path(std::string_view name) const { return mPath + "/" + std::string(name); }

    void Write(std::string_view name, std::string_view content) const {
        TheMemory().files[Path(name)] = content;
    }
    std::string Read(std::string_view name) const { return TheMemory().files.at(Path(name)); }

    void WriteRules(std::string_view content) const { Write(RULE_FILE, content); }
    std::string ReadRules() const { return Read(RULE_FILE); }

    void UseAsConfiguration() const { setenv("QUVA_PATH", Path("").c_str(), 1); }

    static constexpr std::string_view RULE_FILE = "telephony/callrecordingdb";

  private:
    std::string mPath = "memory";
};

#endif
