// Reads the arguments and options that select rules.

#include "commands/SelectionOptions.h"

#include <limits>

#include <fmt/format.h>

namespace callrecordingctl {
namespace {

/// Reads part of text.
RuleName NameIn(std::string const& text, std::string const& part) {
    try {
        return ParseRuleName(part);
    } catch (CLI::ValidationError const&) {
        throw CLI::ValidationError(
            "ID", fmt::format("\"{}\" is no identifier (7), no position ('#5') and no range (1-5)",
                              text));
    }
}

/// Reads 5, '#5', 1-5, '#1-#5', or with no end 5- and '#5-'.
RuleRange ParseRuleRange(std::string const& text) {
    std::size_t const dash = text.find('-');
    RuleRange range{NameIn(text, text.substr(0, dash))};
    if (dash == std::string::npos)
        return range;
    std::string const end = text.substr(dash + 1);
    if (end.empty()) {
        range.last = std::numeric_limits<std::int32_t>::max();
        return range;
    }
    RuleName last = NameIn(text, end);
    bool const isPosition = range.first.isPosition;
    if (last.isPosition && !isPosition)
        throw CLI::ValidationError(
            "ID", fmt::format("\"{}\" goes from an identifier to a position", text));
    if (last.number < range.first.number)
        throw CLI::ValidationError("ID", fmt::format("\"{}\" runs backwards; write {}{}-{}", text,
                                                     isPosition ? "#" : "", last.number,
                                                     range.first.number));
    range.last = last.number;
    return range;
}

void AddFilter(CLI::App& command, char const* name, char const* what, char const* help,
               std::optional<std::string>& field, bool mayBeEmpty) {
    AddText(
        command, name, what, help,
        [&field, name, mayBeEmpty](std::string const& text) {
            if (text.empty() && !mayBeEmpty)
                throw CLI::ValidationError(name, "the text is empty");
            field = text;
        });
}

void AddState(CLI::App& command, char const* name, char const* help, std::optional<bool>& field,
              bool isEnabled) {
    auto const set = [&field, isEnabled] {
        if (field.value_or(isEnabled) != isEnabled)
            throw CLI::ValidationError("--is-enabled", "contradicts --is-disabled");
        field = isEnabled;
    };
    command.add_flag_callback(name, set, help);
}

} // namespace

void AddSelection(CLI::App& command, RuleSelection& selection, WithoutSelection without,
                  char const* isEnabled, char const* isDisabled) {
    command
        .add_option_function<std::vector<std::string>>(
            "ID",
            [&selection](std::vector<std::string> const& texts) {
                for (std::string const& text : texts)
                    selection.names.push_back(ParseRuleRange(text));
            },
            "Rules by identifier, position ('#5') or range (1-5,\n'#1-#5'), any number of them")
        ->type_name("");
    RuleFilter& filter = selection.filter;
    AddFilter(command, "--grep", "TEXT",
              "Only rules with this text\n(in a pattern, destination or description)", filter.text,
              false);
    AddFilter(command, "--matching-from", "ADDR", "Only rules whose calling side takes this party",
              filter.from, true);
    AddFilter(command, "--matching-to", "ADDR", "Only rules whose called side takes this party",
              filter.to, true);
    AddFilter(command, "--record-to-is", "TEXT", "Only rules with exactly this destination",
              filter.recordTo, true);
    AddState(command, isEnabled, "Only rules that are on", filter.isEnabled, true);
    AddState(command, isDisabled, "Only rules that are off", filter.isEnabled, false);
    if (without == WithoutSelection::IsRefused)
        command.parse_complete_callback([&command, &selection] {
            // What CLI11 does not know is the better thing to complain of.
            if (!selection.IsGiven() && command.remaining_size() == 0)
                throw CLI::ValidationError(
                    "ID", "which rules? Give identifiers, positions such as '#3', ranges (1-5; "
                          "'#1-' is all) or a filter such as --grep");
        });
}

} // namespace callrecordingctl
