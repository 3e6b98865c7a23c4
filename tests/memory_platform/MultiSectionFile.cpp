/// @file
/// The sectioned file of the in-memory platform: a list of lines, searched from the cursor on.

#include <MultiSectionFile.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Memory.h"

namespace Configuration {
namespace {

/// A line without the blanks before it and the carriage return behind it.
std::string_view Content(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

} // namespace

class [[gnu::visibility("hidden")]] MultiSectionFile::Impl {
  public:
    std::string path;
    std::string open;
    std::string close;
    std::string separator;
    std::vector<std::string> lines; // What the line breaks part; at least one, maybe empty.
    std::size_t first = 0;          // Of the current section; without one, where to go on from.
    std::size_t last = 0;           // Its closing line.
    bool isOnSection = false;

    void Split(std::string_view text) {
        std::size_t end = 0;
        for (; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1))
            lines.emplace_back(text.substr(0, end));
        lines.emplace_back(text);
    }

    void Check(std::string_view comment) const {
        bool isOpen = false;
        for (std::string const& line : lines) {
            std::string_view const content = Content(line);
            if (content == (isOpen ? close : open))
                isOpen = !isOpen;
            else if (!content.empty() && content.substr(0, comment.size()) != comment &&
                     (!isOpen || content.find(separator) == std::string_view::npos))
                throw std::runtime_error(path + ": found " + line);
        }
        if (isOpen)
            throw std::runtime_error(path + ": a section is not closed");
    }

    /// Selects the section that opens at line; when none does, the cursor stands at the line
    /// otherwise.
    int Select(std::size_t line, std::size_t otherwise) {
        isOnSection = line < lines.size();
        first = last = isOnSection ? line : otherwise;
        while (isOnSection && Content(lines[last]) != close)
            ++last;
        return isOnSection ? 1 : 0;
    }

    /// Returns the line of the current section that has the entry of key, or the section's last
    /// line.
    std::size_t FindEntry(std::string const& key) const {
        if (!isOnSection)
            throw std::logic_error(path + ": no section is selected");
        std::string const start = key + separator;
        std::size_t line = first + 1;
        while (line < last && Content(lines[line]).substr(0, start.size()) != start)
            ++line;
        return line;
    }

    auto At(std::size_t line) {
        return lines.begin() + static_cast<std::ptrdiff_t>(line);
    }
};

MultiSectionFile::MultiSectionFile(char const* path, bool /*flag1*/, bool /*flag2*/, bool /*flag3*/,
                                   char const* /*unused1*/, char const* sectionOpen,
                                   char const* sectionClose, char const* separator,
                                   char const* comment, char const* /*unused2*/)
    : mpImpl(std::make_unique<Impl>()) {
    MemoryPlatform::CountCall();
    mpImpl->path = path;
    mpImpl->open = std::string(sectionOpen, std::string_view(sectionOpen).find('\n'));
    mpImpl->close = std::string(sectionClose, std::string_view(sectionClose).find('\n'));
    mpImpl->separator = separator;
    mpImpl->Split(MemoryPlatform::GetFile(path).value_or(""));
    mpImpl->Check(comment);
}

MultiSectionFile::~MultiSectionFile() = default;

void MultiSectionFile::Restart() {
    MemoryPlatform::CountCall();
    mpImpl->Select(mpImpl->lines.size(), 0);
}

int MultiSectionFile::GotoNextSection() {
    MemoryPlatform::CountCall();
    std::size_t line = mpImpl->isOnSection ? mpImpl->last : mpImpl->first;
    while (line < mpImpl->lines.size() && Content(mpImpl->lines[line]) != mpImpl->open)
        ++line;
    return mpImpl->Select(line, line);
}

int MultiSectionFile::GotoPreviousSection() {
    MemoryPlatform::CountCall();
    std::size_t line = mpImpl->first;
    while (line > 0 && Content(mpImpl->lines[line - 1]) != mpImpl->open)
        --line;
    return mpImpl->Select(line > 0 ? line - 1 : mpImpl->lines.size(), 0);
}

int MultiSectionFile::GetSectionEntry(char const* key, char* buffer, unsigned size) {
    MemoryPlatform::CountCall();
    if (size == 0 || size == UINT32_MAX)
        return 0; // The buffer is not usable.
    std::size_t const line = mpImpl->FindEntry(key);
    bool const isFound = line != mpImpl->last;
    std::string_view value = isFound ? Content(mpImpl->lines[line]) : std::string_view();
    value.remove_prefix(isFound ? (key + mpImpl->separator).size() : 0);
    if (value.size() >= size)
        throw std::runtime_error(mpImpl->path + ": a value is too long");
    buffer[value.copy(buffer, value.size())] = '\0';
    return isFound ? 1 : 0;
}

int MultiSectionFile::SetSectionEntry(char const* key, char const* value) {
    MemoryPlatform::CountCall();
    std::size_t const line = mpImpl->FindEntry(key);
    if (line == mpImpl->last)
        mpImpl->lines.emplace(mpImpl->At(mpImpl->last++));
    mpImpl->lines[line] = key + mpImpl->separator + value;
    return 1;
}

int MultiSectionFile::AddSection(bool /*flag*/) {
    MemoryPlatform::CountCall();
    if (mpImpl->lines.empty() || !mpImpl->lines.back().empty())
        mpImpl->lines.emplace_back();
    std::size_t const line = mpImpl->lines.size() - 1;
    mpImpl->lines.insert(mpImpl->At(line), {mpImpl->open, mpImpl->close});
    return mpImpl->Select(line, line);
}

int MultiSectionFile::DeleteSection() {
    MemoryPlatform::CountCall();
    mpImpl->FindEntry(""); // Throws without a section.
    mpImpl->lines.erase(mpImpl->At(mpImpl->first), mpImpl->At(mpImpl->last + 1));
    mpImpl->Select(mpImpl->lines.size(), mpImpl->first);
    return 1;
}

int MultiSectionFile::Save(bool /*flag*/, char const* /*unused*/) {
    MemoryPlatform::CountCall();
    std::string text;
    for (std::string const& line : mpImpl->lines)
        text.append(&line != mpImpl->lines.data() ? "\n" : "").append(line);
    MemoryPlatform::SetFile(mpImpl->path, text);
    return 1;
}

} // namespace Configuration
