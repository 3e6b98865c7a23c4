/// @file
/// Fuzzes the sectioned file: parse, edit, save, parse again.
///
/// An input is a line of commands, one character each, followed by the text of the file:
///     > < .      cursor to the next section, the previous one, before the first one
///     + -        add a section at the end, delete the current one
///     others     set the entry of that name in the current section

#include "Fuzzing.h"

#include "support/RuleFile.h"
#include "support/TempDir.h"

using fuzzing::Require;

namespace {

/// Executes a command. Throws when that is not possible.
void Do(RuleFile& file, char command, std::string const& value) {
    std::string const key(1, command);
    switch (command) {
    case '>': file.GotoNextSection(); break;
    case '<': file.GotoPreviousSection(); break;
    case '.': file.Restart(); break;
    case '+': file.AddSection(false); break;
    case '-': file.DeleteSection(); break;
    default:
        file.SetSectionEntry(key.c_str(), value.c_str());
        Require(file.Value(key.c_str()) == value, "the value is set", value);
    }
}

/// Returns the values of all keys in all sections.
std::string Content(RuleFile& file, std::string const& keys) {
    std::string content;
    file.Restart();
    for (int section = 1; file.GotoNextSection() != 0; ++section)
        for (char const key : keys)
            content += std::to_string(section) + file.Value(std::string(1, key).c_str()) + "\n";
    return content;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static TempDir const directory;
    auto const [commands, text] = fuzzing::Texts(data, size);
    directory.Write("file", text);
    try {
        RuleFile file(directory.Path("file"));
        for (std::size_t at = 0; at < commands.size(); ++at) {
            try {
                Do(file, commands[at], commands.substr(at).c_str());
            } catch (std::exception const&) {
            }
        }
        std::string const content = Content(file, commands);
        file.Save(true, nullptr);
        RuleFile again(directory.Path("file"));
        Require(Content(again, commands) == content, "what was saved is read", text);
        Require(commands.find_first_not_of("<>.") != std::string::npos ||
                    directory.Read("file") == text,
                "nothing is changed without an edit", text);
    } catch (std::exception const&) {
        Require(directory.Read("file") == text, "what is malformed is left as it is", text);
    }
    return 0;
}
