/// @file
/// The library's configuration directory during the run.

#ifndef BENCH_DIRECTORY_H
#define BENCH_DIRECTORY_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace bench {

/// A new directory in the current one, since the directory for temporary files is often in memory,
/// and durable writes are measured here. It is removed with everything in it.
class RuleDirectory {
  public:
    RuleDirectory() : path_((std::filesystem::current_path() / "bench.XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error(path_ + ": cannot be made");
        std::filesystem::create_directory(path_ + "/telephony");
        setenv("QUVA_PATH", (path_ + "/").c_str(), 1);
    }
    ~RuleDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    RuleDirectory(RuleDirectory const&) = delete;
    RuleDirectory& operator=(RuleDirectory const&) = delete;

    /// Where the rule file is.
    std::string RuleFile() const { return RuleFileDirectory() + "/callrecordingdb"; }
    std::string RuleFileDirectory() const { return path_ + "/telephony"; }
    std::string File(char const* name) const { return path_ + "/" + name; }

    static void Write(std::string const& path, std::string const& text) {
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        if (!file.write(text.data(), static_cast<std::streamsize>(text.size())).flush())
            throw std::runtime_error(path + ": cannot be written");
    }

  private:
    std::string path_;
};

} // namespace bench

#endif
