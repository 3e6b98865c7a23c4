// Quotes words for a shell, and writes the add command of a rule.

#include "output/ShellText.h"

#include <algorithm>

#include <fmt/format.h>

#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool IsPlain(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
           std::string_view("_-./:@%+=,").find(c) != std::string_view::npos;
}

/// In the form $'...', the only one that shows control characters.
std::string Escaped(std::string const& word) {
    std::string escaped = "$'";
    for (char const c : word)
        if (IsControl(c))
            escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
        else
            escaped += c == '\'' || c == '\\' ? std::string{'\\', c} : std::string{c};
    return escaped + "'";
}

void AppendText(std::string& line, char const* option, std::string const& text) {
    if (!text.empty())
        line += fmt::format(" {} {}", option, ShellWord(text));
}

/// Gives both the pattern and the type, so that nothing is guessed.
bool AppendSide(std::string& line, char const* option, std::string const& stored, CallType type) {
    if (stored.empty() || ExplainStored(stored, type))
        return false;
    line += fmt::format(" {} {} {}-type {}", option, ShellWord(ToEntry(stored, type)), option,
                        CallTypeName(type));
    return true;
}

} // namespace

std::string ShellWord(std::string const& word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), IsPlain))
        return word;
    if (std::any_of(word.begin(), word.end(), IsControl))
        return Escaped(word);
    std::string quoted = "'";
    for (char const c : word)
        quoted += c == '\'' ? "'\\''" : std::string{c};
    return quoted + "'";
}

std::optional<std::string> AddCommandFor(Rule const& rule, std::size_t position,
                                         Context const& context) {
    std::string line = fmt::format("callrecordingctl add --at {}", position);
    if (!AppendSide(line, "--from", rule.caller_pattern, rule.caller_call_type) ||
        !AppendSide(line, "--to", rule.called_pattern, rule.called_call_type))
        return std::nullopt;
    AppendText(line, "--record-to", rule.record_to);
    AppendText(line, "--duration", rule.recording_duration);
    AppendText(line, "--description", rule.description);
    if (rule.call_recording_type != CALL_RECORDING_TYPE_0)
        line += " --recording-type 1";
    if (rule.recording_rule_state != RULE_ENABLED)
        line += " --disabled";
    if (IsForEveryone(rule))
        line += " --everyone";
    AppendText(line, "--config-dir", context.directory.value_or(""));
    return line;
}

} // namespace callrecordingctl
