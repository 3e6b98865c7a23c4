/// @file
/// Fuzzes the sectioned file: parse, edit, save, parse again.
///
/// An input is a line of commands, separated by ";", and behind it the text of the file:
///     n p r      cursor to the next section, the previous one, before the first one
///     a d        add a section at the end, delete the current one
///     key|value  set an entry of the current section; "~" stands for a line break

#include "Fuzzing.h"

#include <optional>
#include <sstream>
#include <vector>

#include "support/RuleFile.h"
#include "support/TempDir.h"

using fuzzing::Require;

namespace {

std::vector<std::string> Split(std::string const& text, char separator) {
    std::istringstream input(text);
    std::vector<std::string> parts;
    for (std::string part; std::getline(input, part, separator);)
        parts.push_back(part);
    return parts;
}

/// A line without the blanks before it and the carriage return behind it.
std::string Content(std::string line) {
    line.erase(0, std::min(line.find_first_not_of(" \t"), line.size()));
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

/// The sections as the cursor shows them, with their values of all keys.
std::vector<std::string> Sections(RuleFile& file, std::vector<std::string> const& keys) {
    std::vector<std::string> sections;
    file.Restart();
    while (file.GotoNextSection() != 0) {
        sections.emplace_back();
        for (std::string const& key : keys)
            sections.back() += file.Value(key.c_str()) + "\n";
    }
    for (std::size_t left = sections.size(); left > 0; --left)
        Require(file.GotoPreviousSection() != 0, "the cursor comes back the same way");
    Require(file.GotoPreviousSection() == 0, "nothing is before the first section");
    return sections;
}

/// Throws where the command cannot be done.
void Do(RuleFile& file, std::string command) {
    std::replace(command.begin(), command.end(), '~', '\n');
    std::size_t const bar = command.find('|');
    if (command == "n") {
        file.GotoNextSection();
    } else if (command == "p") {
        file.GotoPreviousSection();
    } else if (command == "a") {
        file.AddSection(false);
    } else if (command == "d") {
        file.DeleteSection();
    } else if (bar != std::string::npos) {
        std::string const key = command.substr(0, bar).c_str(); // Up to a NUL, as in a C string.
        std::string const value = command.substr(bar + 1).c_str();
        file.SetSectionEntry(key.c_str(), value.c_str());
        Require(file.Value(key.c_str()) == value, "the value is set", command);
    } else {
        file.Restart();
    }
}

/// The comments of a file, in order.
std::string Comments(std::string const& text) {
    std::string comments;
    for (std::string const& line : Split(text, '\n'))
        if (Content(line)[0] == '#')
            comments += Content(line) + "\n";
    return comments;
}

/// The names of the entries in the text of a file, and those that commands set.
std::vector<std::string> Keys(std::string const& commands, std::string const& text) {
    std::vector<std::string> keys;
    for (std::string const& line : Split(text, '\n'))
        keys.push_back(Content(line).substr(0, Content(line).find('=')));
    for (std::string const& command : Split(commands, ';'))
        keys.push_back(command.substr(0, command.find('|')));
    return keys;
}

void EditAndSave(RuleFile& file, TempDir const& directory, std::string const& commands,
                 std::string const& text) {
    file.Save(true, nullptr);
    Require(directory.Read("file") == text, "nothing is changed without an edit", text);
    for (std::string const& command : Split(commands, ';')) {
        try {
            Do(file, command);
        } catch (std::exception const&) {
        }
    }
    auto const keys = Keys(commands, text);
    auto const sections = Sections(file, keys);
    file.Save(true, nullptr);
    RuleFile again(directory.Path("file"));
    Require(Sections(again, keys) == sections, "what was saved is read", text);
    if (commands.find('d') == std::string::npos)
        Require(Comments(directory.Read("file")) == Comments(text), "comments are kept", text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static TempDir const directory;
    auto const [commands, text] = fuzzing::Texts(data, size);
    directory.Write("file", text);
    std::optional<RuleFile> file;
    try {
        file.emplace(directory.Path("file"));
    } catch (std::exception const&) {
        Require(directory.Read("file") == text, "what is malformed is left as it is", text);
        return 0;
    }
    EditAndSave(*file, directory, commands, text);
    return 0;
}
