/// @file
/// callrecordingctl: the command line, and the dispatch to the commands.

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Commands.h"
#include "HelpText.h"
#include "RuleText.h"

namespace callrecordingctl {
namespace {

/// What the command line says; the command is set while it is parsed.
struct CommandLine {
    std::function<ExitCode()> command;
    std::string configDir;
    bool json = false;
    std::int32_t id = 0;
    std::size_t number = 1; // The places to move.
    std::optional<std::size_t> position;
    bool isBasic = false;
    bool explain = false;
    CallSide from;
    CallSide to;
    CallType type = CALL_TYPE_NUMBER;
    std::vector<std::string> patterns;
    RuleFields fields;
    EditOptions edit;
};

std::uint32_t ParseNumber(std::string const& option, std::string const& text, std::uint32_t least) {
    bool const isNumber = !text.empty() && text.size() <= 10 &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    std::uint64_t const number = isNumber ? std::stoull(text) : 0;
    if (!isNumber || number < least || number > std::numeric_limits<std::int32_t>::max())
        throw CLI::ValidationError(
            option, fmt::format("\"{}\" is no number from {} to 2147483647", text, least));
    return static_cast<std::uint32_t>(number);
}

/// An option whose text goes through store. CLI11's own conversion to an optional would lose the
/// empty text, which is a value here.
template <typename Store>
CLI::Option* AddText(CLI::App& command, std::string const& name, char const* what, char const* help,
                     Store store) {
    return command.add_option_function<std::string>(name, store, help)->type_name(what);
}

template <typename Store>
CLI::Option* AddNumber(CLI::App& command, std::string const& name, char const* what,
                       char const* help, std::uint32_t least, Store store) {
    return AddText(
        command, name, what, help,
        [name, least, store](std::string const& text) { store(ParseNumber(name, text, least)); });
}

template <typename Store>
void AddCallType(CLI::App& command, std::string const& name, char const* help, Store store) {
    AddText(
        command, name, "TYPE", help,
        [name, store](std::string const& text) {
            auto const type = ParseCallType(text);
            if (!type)
                throw CLI::ValidationError(
                    name, fmt::format(
                              "\"{}\" is no call type; it is number, sip, number2, any, or 0 to 3",
                              text));
            store(*type);
        });
}

void AddConfigDir(CLI::App& command, CommandLine& line) {
    AddText(
        command, "--config-dir", "DIR", CONFIG_DIR_HELP,
        [&line](std::string const& directory) {
            if (directory.empty())
                throw CLI::ValidationError("--config-dir", "the directory is empty");
            line.configDir = directory;
        });
}

/// A subcommand with the options that all have.
CLI::App& AddCommand(CLI::App& app, CommandLine& line, char const* name, char const* summary,
                     char const* help, std::function<ExitCode()> const& command) {
    CLI::App& added = *app.add_subcommand(name, summary);
    added.footer(help);
    added.callback([&line, command] { line.command = command; });
    AddConfigDir(added, line);
    added.add_flag("--json", line.json, "Print JSON");
    return added;
}

void AddId(CLI::App& command, CommandLine& line) {
    AddNumber(
        command, "ID", "", "Identifier of the rule, as list shows it", 0,
        [&line](std::uint32_t id) { line.id = static_cast<std::int32_t>(id); })
        ->required();
}

void AddList(CLI::App& app, CommandLine& line) {
    CLI::App& list = AddCommand(app, line, "list", "Show the rules in order of evaluation",
                                LIST_HELP, [&line] { return List(line.isBasic, line.json); });
    list.add_flag("--basic", line.isBasic, "The basic view: each rule and its twin as one");
    AddId(AddCommand(app, line, "show", "Show one rule in full", "",
                     [&line] { return Show(line.id, line.json); }),
          line);
}

void AddParty(CLI::App& command, CallSide& side, std::string const& name, char const* who) {
    command.add_option("--" + name, side.address, fmt::format("Address of the {} side", who))
        ->type_name("ADDR")
        ->required();
    AddCallType(command, "--" + name + "-type",
                "Its call type (default: sip with an \"@\" in it,\n"
                "else number)",
                [&side](CallType type) { side.type = type; });
}

void AddDecide(CLI::App& app, CommandLine& line) {
    CLI::App& decide = AddCommand(
        app, line, "decide", "Say whether a call is recorded, by which rule, and why", DECIDE_HELP,
        [&line] { return Decide(line.from, line.to, line.explain, line.json); });
    AddParty(decide, line.from, "from", "calling");
    AddParty(decide, line.to, "to", "called");
    decide.add_flag("--explain", line.explain, "Say of every rule why it was passed over");
}

/// The patterns are what the command line leaves over: CLI11 would take the brackets of [1,2] for
/// those of a list. No pattern begins with "-", so what does is an option mistyped.
void TakePatterns(CLI::App const& check, std::vector<std::string>& patterns) {
    for (std::string const& text : check.remaining()) {
        if (text.size() > 1 && text[0] == '-')
            throw CLI::ExtrasError({text});
        patterns.push_back(text);
    }
}

void AddCheck(CLI::App& app, CommandLine& line) {
    CLI::App& check = AddCommand(
        app, line, "check", "Check patterns, or without any the whole rule file", CHECK_HELP,
        [&line] {
            return line.patterns.empty() ? CheckRuleFile(line.json)
                                         : CheckPatterns(line.patterns, line.type, line.json);
        });
    AddText(check, "PATTERN...", "", "Patterns as they would be given to add",
            [&line](std::string const& text) { line.patterns.push_back(text); })
        ->expected(0, 1); // For the help: all patterns are left over.
    check.allow_extras();
    check.parse_complete_callback([&check, &line] { TakePatterns(check, line.patterns); });
    AddCallType(check, "--type", "Their call type (default: number)",
                [&line](CallType type) { line.type = type; });
}

/// A command that edits, with the options that all edits have.
CLI::App& AddEdit(CLI::App& app, CommandLine& line, char const* name, char const* summary,
                  char const* help, std::function<ExitCode()> const& command) {
    CLI::App& edit = AddCommand(app, line, name, summary, help, [&line, command] {
        line.edit.json = line.json;
        return command();
    });
    edit.add_flag("--dry-run", line.edit.dryRun, "Show the rule before and after; write nothing");
    AddNumber(
        edit, "--wait", "SECONDS", "Wait so long for another client's edit\n(default: 5)", 0,
        [&line](std::uint32_t seconds) { line.edit.patience = std::chrono::seconds(seconds); });
    return edit;
}

void AddSide(CLI::App& command, SideFields& side, std::string const& name, char const* who,
             bool isNew) {
    AddText(
        command, "--" + name, "PATTERN",
        fmt::format("Pattern of the {} side{}", who, isNew ? " (default: *, everyone)" : "")
            .c_str(),
        [&side](std::string const& text) { side.pattern = text; });
    AddCallType(command, "--" + name + "-type",
                isNew ? "Its call type (default: sip with an \"@\" in it,\nany for *, else number)"
                      : "Its call type",
                [&side](CallType type) { side.type = type; });
}

void AddFields(CLI::App& command, RuleFields& fields, bool isNew) {
    using namespace CallRecordingUtils;
    AddSide(command, fields.from, "from", "calling", isNew);
    AddSide(command, fields.to, "to", "called", isNew);
    AddText(
        command, "--record-to", "TEXT", "Where to record to",
        [&fields](std::string const& text) { fields.recordTo = text; });
    AddText(
        command, "--duration", "TEXT", "How long to record",
        [&fields](std::string const& text) { fields.duration = text; });
    AddText(command, "--description", "TEXT", "What the rule is for",
            [&fields](std::string const& text) { fields.description = text; });
    AddText(
        command, "--recording-type", "0|1", "Kind of recording",
        [&fields](std::string const& text) {
            if (text != "0" && text != "1")
                throw CLI::ValidationError("--recording-type",
                                           fmt::format("\"{}\" is not 0 or 1", text));
            fields.recordingType = text == "0" ? CALL_RECORDING_TYPE_0 : CALL_RECORDING_TYPE_1;
        });
    command.add_flag_callback(
        "--disabled", [&fields] { fields.state = RULE_DISABLED; }, "Switch the rule off");
    auto const enable = [&fields] {
        if (fields.state)
            throw CLI::ValidationError("--enabled", "contradicts --disabled");
        fields.state = RULE_ENABLED;
    };
    command.add_flag_callback("--enabled", enable,
                              isNew ? "Switch the rule on (default)" : "Switch the rule on");
}

void AddAddAndModify(CLI::App& app, CommandLine& line) {
    CLI::App& add = AddEdit(app, line, "add", "Add a rule, as the last or at a position", ADD_HELP,
                            [&line] { return Add(line.fields, line.position, line.edit); });
    AddFields(add, line.fields, true);
    AddNumber(add, "--at", "POSITION", "Position to put the rule at; 1 is evaluated first", 1,
              [&line](std::uint32_t position) { line.position = position; });
    add.add_flag("--twin", line.edit.twin, "Add the mirrored rule too, right behind it");
    CLI::App& modify =
        AddEdit(app, line, "modify", "Change the given fields of a rule", MODIFY_HELP,
                [&line] { return Modify(line.id, line.fields, line.edit); });
    AddId(modify, line);
    AddFields(modify, line.fields, false);
    modify.add_flag("--twin", line.edit.twin, "Change the mirrored twin too");
}

void AddOtherEdits(CLI::App& app, CommandLine& line) {
    CLI::App& erase = AddEdit(app, line, "delete", "Delete a rule", DELETE_HELP,
                              [&line] { return Delete(line.id, line.edit); });
    AddId(erase, line);
    erase.add_flag("--twin", line.edit.twin, "Delete the mirrored twin too");
    for (bool const up : {true, false}) {
        CLI::App& move =
            AddEdit(app, line, up ? "up" : "down",
                    up ? "Move a rule toward the front" : "Move a rule toward the end", MOVE_HELP,
                    [&line, up] { return Move(line.id, line.number, up, line.edit); });
        AddId(move, line);
        AddNumber(move, "PLACES", "",
                  "How many places (default: 1); with more than there\nare, all the way", 1,
                  [&line](std::uint32_t places) { line.number = places; });
    }
    for (bool const enable : {true, false})
        AddId(AddEdit(app, line, enable ? "enable" : "disable",
                      enable ? "Switch a rule on" : "Switch a rule off", "",
                      [&line, enable] { return SetState(line.id, enable, line.edit); }),
              line);
}

int Run(CommandLine const& line) {
    if (!line.configDir.empty())
        UseConfiguration(line.configDir);
    try {
        int const code = line.command();
        if (std::fflush(stdout) != 0)
            throw Failure(EXIT_CODE_UNSAVED, "standard output cannot be written");
        return code;
    } catch (Failure const& failure) {
        std::fflush(stdout);
        Say("callrecordingctl: {}\n", failure.what());
        return failure.Code();
    }
}

int Main(int argc, char** argv) {
    CLI::App app("Shows, explains and edits the rules by which calls are recorded.",
                 "callrecordingctl");
    CommandLine line;
    app.footer(MAIN_HELP);
    app.get_formatter()->column_width(24);
    app.require_subcommand(1);
    app.set_version_flag("--version", "callrecordingctl " CALLRECORDINGCTL_VERSION);
    AddConfigDir(app, line);
    AddList(app, line);
    AddDecide(app, line);
    AddCheck(app, line);
    AddAddAndModify(app, line);
    AddOtherEdits(app, line);
    // CLI11 hands what follows "--" to the wrong command.
    char** const end = std::find(argv, argv + argc, std::string_view("--"));
    std::vector<std::string> const rest(end == argv + argc ? end : end + 1, argv + argc);
    try {
        app.parse(static_cast<int>(end - argv), argv);
        if (!rest.empty() && !app.got_subcommand("check"))
            throw CLI::ExtrasError(rest);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? EXIT_CODE_YES : EXIT_CODE_USAGE;
    }
    line.patterns.insert(line.patterns.end(), rest.begin(), rest.end());
    return Run(line);
}

} // namespace
} // namespace callrecordingctl

int main(int argc, char** argv) {
    // A file opened in the place of a closed standard stream would take what is printed there.
    for (int file = 0; file >= 0 && file <= STDERR_FILENO;)
        file = open("/dev/null", O_RDWR);
    // A reader that has seen enough, as head has, ends this process without a word.
    std::signal(SIGPIPE, SIG_DFL);
    try {
        return callrecordingctl::Main(argc, argv);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "callrecordingctl: %s\n", error.what()); // Output, or memory.
        return callrecordingctl::EXIT_CODE_UNSAVED;
    }
}
