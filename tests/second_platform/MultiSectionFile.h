/// @file
/// The sectioned file as a list of lines. Its syntax is that of the rule file, whatever it is asked
/// for.

#ifndef SECOND_PLATFORM_MULTISECTIONFILE_H
#define SECOND_PLATFORM_MULTISECTIONFILE_H

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "../support/SlowFile.h"
#include "Faults.h"

namespace Configuration {

class [[gnu::visibility("default")]] MultiSectionFile {
  public:
    MultiSectionFile(std::string const& path, bool, bool, bool, void*, char const*, char const*,
                     char const*, char const*, void*)
        : mPath(path), mFile(Read(path)) {}
    ~MultiSectionFile() {
        if (HasFault("saves when destroyed"))
            Write();
    }
    void Restart() {
        if (!HasFault("no restart"))
            mFile.Restart();
    }
    bool GotoNextSection() {
        return mFile.Next() || HasFault("no end");
    }
    bool GotoPreviousSection() {
        return HasFault("no way back") ? mFile.IsOnSection() : mFile.Previous();
    }
    void GetSectionEntry(char const* key, char* buffer, unsigned size) {
        std::string value = Current().Value(key);
        if (!mFile.Has(key) && HasFault("stale value"))
            return;
        if (HasFault("comment in value"))
            value = value.substr(0, value.find('#'));
        if (HasFault("separator in value"))
            value = value.substr(0, value.find('='));
        if (HasFault("trimmed value"))
            value.erase(0, value.find_first_not_of(' '));
        if (value.size() >= size && !HasFault("overrun"))
            throw std::length_error(std::string("the value of ") + key + " is too long");
        std::strcpy(buffer, value.c_str());
    }
    void SetSectionEntry(char const* key, std::string const& value) {
        bool const hasBreak = value.find_first_of("\r\n") != std::string::npos;
        if ((hasBreak && !HasFault("line break")) || value.size() > 255)
            throw std::invalid_argument(std::string("the value of ") + key + " cannot be stored");
        Current().Set(key, HasFault("short value") ? value.substr(0, 100) : value);
    }
    bool AddSection(bool) {
        if (HasFault("added nowhere"))
            return true;
        mFile.Add();
        if (HasFault("added unselected"))
            mFile.Previous();
        return !HasFault("denied section");
    }
    void DeleteSection() {
        Current().Delete();
        if (HasFault("skips after deletion"))
            mFile.Next();
    }
    void Save(bool, void*) {
        if (!HasFault("saves nothing") && !Write() && !HasFault("silent save"))
            throw std::runtime_error(mPath + ": cannot be written");
    }

  private:
    static std::string Read(std::string const& path) {
        bool const isFile = std::filesystem::is_regular_file(path);
        bool const isThere = std::filesystem::exists(path);
        if (!isFile && !HasFault("unreadable is empty") && (isThere || HasFault("no new file")))
            throw std::runtime_error(path + ": cannot be read");
        std::ifstream file(isFile ? path : "/dev/null", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool Write() {
        std::ofstream file(mPath, std::ios::binary | std::ios::trunc);
        file << mFile.Text();
        file.close();
        return file.good();
    }
    SlowFile& Current() {
        return mFile.IsOnSection() ? mFile : throw std::runtime_error("no section is selected");
    }

    std::string mPath;
    SlowFile mFile;
};

} // namespace Configuration

#endif
