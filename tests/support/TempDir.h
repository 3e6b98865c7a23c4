/// @file
/// A directory of a test's own, and the files in it.

#ifndef TESTS_SUPPORT_TEMPDIR_H
#define TESTS_SUPPORT_TEMPDIR_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

/// A new, empty directory, removed with all that is in it at the end of the object's life.
class TempDir {
  public:
    TempDir() : mPath((std::filesystem::temp_directory_path() / "callrecording.XXXXXX").string()) {
        if (mkdtemp(mPath.data()) == nullptr)
            throw std::runtime_error(mPath + ": cannot be made");
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    /// The directory, without a slash at its end.
    std::string const& Path() const { return mPath; }
    /// The path of the file name in the directory.
    std::string Path(std::string_view name) const { return mPath + "/" + std::string(name); }

    /// Makes the file name, and the directories on its way, with exactly these bytes.
    void Write(std::string_view name, std::string_view content) const {
        std::filesystem::path const path(Path(name));
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

    /// The bytes of the file name.
    std::string Read(std::string_view name) const {
        std::ifstream file(Path(name), std::ios::binary);
        if (!file)
            throw std::runtime_error(Path(name) + ": cannot be read");
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// Write and Read for the rule file that the library finds after UseAsConfiguration.
    void WriteRules(std::string_view content) const { Write(RULE_FILE, content); }
    std::string ReadRules() const { return Read(RULE_FILE); }

    /// Makes the directory the configuration directory of this process.
    void UseAsConfiguration() const {
        std::filesystem::create_directories(Path("telephony"));
        setenv("QUVA_PATH", (mPath + "/").c_str(), 1);
    }

    static constexpr std::string_view RULE_FILE = "telephony/callrecordingdb";

  private:
    std::string mPath;
};

#endif
