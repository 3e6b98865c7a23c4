// Adds the options for formats, columns, times and what is left out.

#include "commands/ReadingOptions.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "records/reading/CallTime.h"
#include "records/reading/KnownFormats.h"

namespace callrecordingctl {
namespace {

constexpr char kColumns[] = "columns";

/// The names of all formats, each once.
std::vector<std::string> FormatNames() {
    std::vector<std::string> names{kColumns};
    for (KnownFormat const& format : KnownFormats())
        if (names.back() != format.name)
            names.push_back(format.name);
    return names;
}

void TakeFormat(CallFormat& format, std::string const& name) {
    format.known = FormatNamed(name);
    format.mayGuess = false;
    if (format.known == nullptr && name != kColumns)
        throw CLI::ValidationError("--format",
                                   fmt::format("there is no format \"{}\"; there are {}", name,
                                               fmt::join(FormatNames(), ", ")));
}

void TakeCondition(CallFormat& format, std::string const& text) {
    try {
        format.where.push_back(ReadCondition(text));
    } catch (std::invalid_argument const& error) {
        throw CLI::ValidationError("--where", fmt::format("\"{}\": {}", text, error.what()));
    }
}

void TakeZone(std::string const& zone) {
    if (!UseZone(zone))
        throw CLI::ValidationError(
            "--zone", fmt::format("\"{}\" is no zone; write Europe/Berlin, UTC or +01:00", zone));
}

std::string ColumnHelp(Column column) {
    constexpr char const* kWhat[kColumnCount] = {"the calling side",
                                                 "the called side",
                                                 "the call type of the calling side",
                                                 "the call type of the called side",
                                                 "the time",
                                                 "the date, if the time is one of the day"};
    return fmt::format("Column with {}, by name or number", kWhat[column]);
}

} // namespace

CLI::Option* AddReading(CLI::App& command, CallFormat& format, CLI::Option* needed) {
    auto const add = [needed](CLI::Option* option) {
        if (needed != nullptr)
            option->needs(needed)->group("Reading call records");
        return option;
    };
    add(AddText(command, "--format", "FORMAT",
                fmt::format("Format of the call records, instead of a guess:\n{}",
                            fmt::join(FormatNames(), ", ")),
                [&format](std::string const& name) { TakeFormat(format, name); }));
    for (std::size_t i = 0; i < kColumnCount; ++i) {
        auto const column = static_cast<Column>(i);
        add(AddText(
            command, ColumnNames::Option(column), "NAME", ColumnHelp(column),
            [&format, column](std::string const& name) { format.names.Name(column, name); }));
    }
    add(command.add_flag_callback(
        "--no-header", [&format] { format.hasHeader = false; },
        "There is no row of names; columns are numbers"));
    add(command
            .add_option_function<std::vector<std::string>>(
                "--where",
                [&format](std::vector<std::string> const& texts) {
                    for (std::string const& text : texts)
                        TakeCondition(format, text);
                },
                "Leave out records unless COLUMN=VALUE, or\nCOLUMN!=VALUE; repeated: unless all "
                "hold")
            ->type_name("CONDITION"))
        ->allow_extra_args(false);
    CLI::Option* const distinct = add(AddText(
        command, "--distinct", "COLUMN",
        "Leave out records with a value of this column\nthat came before. Takes memory for each "
        "value",
        [&format](std::string const& column) { format.distinct = column; }));
    add(AddText(command, "--time-format", "FORMAT",
                "How times are written, as strptime takes it:\n%d/%m/%Y %H:%M",
                [&format](std::string const& text) { format.timeFormat = text; }));
    add(AddText(
        command, "--zone", "ZONE",
        "Zone of times that name none, and of the report:\nEurope/Berlin or +01:00 (default: this "
        "computer's)",
        TakeZone));
    return distinct;
}

} // namespace callrecordingctl
