// Adds the options for the columns of call records.

#include "commands/ColumnOptions.h"

#include <fmt/format.h>

namespace callrecordingctl {

void AddColumns(CLI::App& command, CallFormat& format, CLI::Option* needed) {
    constexpr char const* kWhat[kColumnCount] = {"the calling side", "the called side",
                                                 "the call type of the calling side",
                                                 "the call type of the called side", "the time"};
    auto const add = [needed](CLI::Option* option) {
        if (needed != nullptr)
            option->needs(needed)->group("Columns of the call records");
    };
    for (std::size_t i = 0; i < kColumnCount; ++i) {
        auto const column = static_cast<Column>(i);
        add(AddText(
            command, ColumnNames::Option(column), "NAME",
            fmt::format("Column with {}, by name or number", kWhat[i]),
            [&format, column](std::string const& name) { format.names.Name(column, name); }));
    }
    add(command.add_flag_callback(
        "--no-header", [&format] { format.hasHeader = false; },
        "There is no row of names; columns are numbers"));
}

} // namespace callrecordingctl
