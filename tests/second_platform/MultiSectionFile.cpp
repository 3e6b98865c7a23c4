/// @file
/// Reads all lines, and writes all lines.

#include "MultiSectionFile.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "Faults.h"
#include "SmartBuffer.h"
#include "support/SlowFile.h"

namespace Configuration {

namespace {

std::string Read(std::string const& path) {
    bool const isFile = std::filesystem::is_regular_file(path);
    if (!isFile && (std::filesystem::exists(path) ? !HasFault("unreadable is empty")
                                                  : HasFault("no new file")))
        throw std::runtime_error(path + ": cannot be read");
    std::ifstream file(isFile ? path : "/dev/null", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

MultiSectionFile::MultiSectionFile(char const* path, bool, bool, bool, char const*, char const*,
                                   char const*, char const*, char const*, char const*)
    : mPath(path), mFile(std::make_unique<SlowFile>(Read(path))) {}

MultiSectionFile::~MultiSectionFile() {
    if (HasFault("saves when destroyed"))
        std::ofstream(mPath, std::ios::binary | std::ios::trunc) << mFile->Text();
}

SlowFile& MultiSectionFile::Current() {
    if (!mFile->IsOnSection())
        throw std::runtime_error("no section is selected");
    return *mFile;
}

void MultiSectionFile::Restart() {
    if (!HasFault("no restart"))
        mFile->Restart();
}

bool MultiSectionFile::GotoNextSection() {
    return mFile->Next() || HasFault("no end");
}

bool MultiSectionFile::GotoPreviousSection() {
    return HasFault("no way back") ? mFile->IsOnSection() : mFile->Previous();
}

void MultiSectionFile::GetSectionEntry(char const* key, char* buffer, unsigned size) {
    std::string value = Current().Value(key);
    if (!mFile->Has(key) && HasFault("stale value"))
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

void MultiSectionFile::SetSectionEntry(char const* key, char const* value) {
    std::string const text(value);
    bool const hasBreak = text.find_first_of("\r\n") != std::string::npos;
    if ((hasBreak && !HasFault("line break")) || text.size() >= sizeof(SmartBuffer))
        throw std::invalid_argument("a value cannot be stored");
    Current().Set(key, HasFault("short value") ? text.substr(0, 100) : text);
}

bool MultiSectionFile::AddSection(bool) {
    if (HasFault("added nowhere"))
        return true;
    mFile->Add();
    if (HasFault("added unselected"))
        mFile->Previous();
    return !HasFault("denied section");
}

void MultiSectionFile::DeleteSection() {
    Current().Delete();
    if (HasFault("skips after deletion"))
        mFile->Next();
}

void MultiSectionFile::Save(bool, char const*) {
    if (HasFault("saves nothing"))
        return;
    std::ofstream file(mPath, std::ios::binary | std::ios::trunc);
    file << mFile->Text();
    file.close();
    if (!file && !HasFault("silent save"))
        throw std::runtime_error(mPath + ": cannot be written");
}

} // namespace Configuration
