/// @file
/// A temporary directory for a test.

#ifndef TESTS_SUPPORT_TEMPDIR_H
#define TESTS_SUPPORT_TEMPDIR_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

/// A new, empty directory. The destructor removes it with everything in it.
class TempDir {
  public:
    TempDir() : path_((std::filesystem::temp_directory_path() / "callrecording.XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error(path_ + ": cannot be created");
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;

    /// The path of the directory, without a slash at the end.
    std::string const& Path() const { return path_; }
    /// The path of a file in the directory.
    std::string Path(std::string_view name) const { return path_ + "/" + std::string(name); }

    /// Creates or overwrites a file, and the directories of its path.
    void Write(std::string_view name, std::string_view content) const {
        std::filesystem::path const path(Path(name));
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
    }

    /// Returns the bytes of a file.
    std::string Read(std::string_view name) const {
        std::ifstream file(Path(name), std::ios::binary);
        if (!file)
            throw std::runtime_error(Path(name) + ": cannot be read");
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    /// The same for the rule file that the library uses after UseAsConfiguration.
    void WriteRules(std::string_view content) const { Write(RULE_FILE, content); }
    std::string ReadRules() const { return Read(RULE_FILE); }

    /// Makes this the configuration directory of the process.
    void UseAsConfiguration() const {
        std::filesystem::create_directories(Path("telephony"));
        setenv("QUVA_PATH", (path_ + "/").c_str(), 1);
    }

    static constexpr std::string_view RULE_FILE = "telephony/callrecordingdb";

  private:
    std::string path_;
};

#endif
