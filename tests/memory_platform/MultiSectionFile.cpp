/// @file
/// The sectioned file of the in-memory platform: a list of sections and of what lies between them.

#include <MultiSectionFile.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <sstream>
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

/// The lines from "{" to "}", or one line that is in no section.
struct Part {
    std::vector<std::string> lines;

    bool IsSection() const { return Content(lines.front()) == "{"; }
};

} // namespace

class [[gnu::visibility("hidden")]] MultiSectionFile::Impl {
  public:
    std::string path;
    std::list<Part> parts;
    std::list<Part>::iterator cursor = parts.end(); // Where to go on from, at least.
    bool isOnSection = false;
    std::string end; // Of the last line.

    void Parse(std::string const& text) {
        end = text.empty() || text.back() == '\n' ? "\n" : "";
        std::istringstream input(text);
        bool isOpen = false;
        for (std::string line; std::getline(input, line);) {
            std::string_view const content = Content(line);
            bool const isMarker = content == (isOpen ? "}" : "{");
            bool const isEntry = isOpen && content.find('=') != std::string_view::npos;
            if (!isMarker && !isEntry && !content.empty() && content[0] != '#')
                throw std::runtime_error(path + ": found " + line);
            if (!isOpen)
                parts.emplace_back();
            parts.back().lines.push_back(line);
            isOpen = isOpen != isMarker;
        }
        if (isOpen)
            throw std::runtime_error(path + ": a section is not closed");
        cursor = parts.begin();
    }

    int Select(std::list<Part>::iterator part, bool isSection) {
        cursor = part;
        isOnSection = isSection;
        return isSection ? 1 : 0;
    }

    /// Returns the line of the current section that has the entry of key, or the closing one.
    std::vector<std::string>::iterator FindEntry(std::string const& key) {
        if (!isOnSection)
            throw std::logic_error(path + ": no section is selected");
        return std::find_if(cursor->lines.begin(), cursor->lines.end() - 1, [&](auto const& line) {
            return Content(line).substr(0, key.size() + 1) == key + "=";
        });
    }
};

MultiSectionFile::MultiSectionFile(char const* path, bool /*flag1*/, bool /*flag2*/, bool /*flag3*/,
                                   char const* /*unused1*/, char const* /*sectionOpen*/,
                                   char const* /*sectionClose*/, char const* /*separator*/,
                                   char const* /*comment*/, char const* /*unused2*/)
    : mpImpl(std::make_unique<Impl>()) {
    TheMemory().CountCall();
    mpImpl->path = path;
    mpImpl->Parse(TheMemory().files[path]);
}

MultiSectionFile::~MultiSectionFile() = default;

void MultiSectionFile::Restart() {
    TheMemory().CountCall();
    mpImpl->Select(mpImpl->parts.begin(), false);
}

int MultiSectionFile::GotoNextSection() {
    TheMemory().CountCall();
    auto const next =
        std::find_if(mpImpl->isOnSection ? std::next(mpImpl->cursor) : mpImpl->cursor,
                     mpImpl->parts.end(), [](Part const& part) { return part.IsSection(); });
    return mpImpl->Select(next, next != mpImpl->parts.end());
}

int MultiSectionFile::GotoPreviousSection() {
    TheMemory().CountCall();
    while (mpImpl->cursor != mpImpl->parts.begin())
        if ((--mpImpl->cursor)->IsSection())
            return mpImpl->Select(mpImpl->cursor, true);
    return mpImpl->Select(mpImpl->cursor, false);
}

int MultiSectionFile::GetSectionEntry(char const* key, char* buffer, unsigned size) {
    TheMemory().CountCall();
    if (size == 0 || size == UINT32_MAX)
        return 0; // The buffer is not usable.
    auto const line = mpImpl->FindEntry(key);
    bool const isFound = line != mpImpl->cursor->lines.end() - 1;
    std::string_view const content = isFound ? Content(*line) : "=";
    std::string_view const value = content.substr(content.find('=') + 1);
    if (value.size() >= size)
        throw std::runtime_error(mpImpl->path + ": a value is too long");
    buffer[value.copy(buffer, value.size())] = '\0';
    return isFound ? 1 : 0;
}

int MultiSectionFile::SetSectionEntry(char const* key, char const* value) {
    TheMemory().CountCall();
    auto line = mpImpl->FindEntry(key);
    if (line == mpImpl->cursor->lines.end() - 1)
        line = mpImpl->cursor->lines.emplace(line);
    *line = std::string(key) + "=" + value;
    return 1;
}

int MultiSectionFile::AddSection(bool /*flag*/) {
    TheMemory().CountCall();
    mpImpl->parts.push_back({{"{", "}"}});
    mpImpl->end = "\n";
    return mpImpl->Select(std::prev(mpImpl->parts.end()), true);
}

int MultiSectionFile::DeleteSection() {
    TheMemory().CountCall();
    mpImpl->FindEntry(""); // Throws without a section.
    mpImpl->Select(mpImpl->parts.erase(mpImpl->cursor), false);
    return 1;
}

int MultiSectionFile::Save(bool /*flag*/, char const* /*unused*/) {
    TheMemory().CountCall();
    std::string text;
    for (Part const& part : mpImpl->parts)
        for (std::string const& line : part.lines)
            text.append(text.empty() ? "" : "\n").append(line);
    text += text.empty() ? "" : mpImpl->end;
    TheMemory().saves.push_back(text);
    TheMemory().files[mpImpl->path] = text;
    return 1;
}

} // namespace Configuration
