/// @file
/// A copy of a configuration directory, for the examples that change rules.

#ifndef EXAMPLES_SAMPLECOPY_H
#define EXAMPLES_SAMPLECOPY_H

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

/// Copies a configuration directory to a temporary place and makes that the library's; removes the
/// copy at the end of the object's life.
class SampleCopy {
  public:
    /// Ends the program when original, its only argument, is missing.
    explicit SampleCopy(char const* original)
        : mPath((std::filesystem::temp_directory_path() / "example.XXXXXX").string()) {
        if (original == nullptr) {
            std::cerr << "Please name a configuration directory, as examples/sample\n";
            std::exit(2);
        }
        if (mkdtemp(mPath.data()) == nullptr)
            throw std::system_error(errno, std::generic_category(), mPath);
        std::filesystem::copy(original, mPath, std::filesystem::copy_options::recursive);
        mPath += '/'; // The library joins the parts of the path as plain text.
        setenv("QUVA_PATH", mPath.c_str(), 1);
    }
    ~SampleCopy() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    SampleCopy(SampleCopy const&) = delete;
    SampleCopy& operator=(SampleCopy const&) = delete;

    /// The directory, with a slash at its end.
    std::string const& Path() const { return mPath; }

  private:
    std::string mPath;
};

#endif
