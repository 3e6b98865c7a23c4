/// @file
/// The in-memory platform's stand-in for a directory of a test's own: same operations, no disk.

#ifndef TESTS_SUPPORT_TEMPDIR_H
#define TESTS_SUPPORT_TEMPDIR_H

#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "../Memory.h"

class TempDir {
  public:
    TempDir() {
        static std::atomic<int> count{0};
        mPath = "memory" + std::to_string(count++);
    }
    ~TempDir() { MemoryPlatform::RemoveFiles(Path("")); }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    std::string const& Path() const { return mPath; }
    std::string Path(std::string_view name) const { return mPath + "/" + std::string(name); }

    void Write(std::string_view name, std::string_view content) const {
        MemoryPlatform::SetFile(Path(name), std::string(content));
    }
    std::string Read(std::string_view name) const {
        auto const text = MemoryPlatform::GetFile(Path(name));
        if (!text)
            throw std::runtime_error(Path(name) + ": does not exist");
        return *text;
    }

    void WriteRules(std::string_view content) const { Write(RULE_FILE, content); }
    std::string ReadRules() const { return Read(RULE_FILE); }

    void UseAsConfiguration() const { setenv("QUVA_PATH", Path("").c_str(), 1); }

    static constexpr std::string_view RULE_FILE = "telephony/callrecordingdb";

  private:
    std::string mPath;
};

#endif
