// Reads the command line.

#include "CommandLine.h"

#include <algorithm>
#include <cstdlib>

#include "Rules.h"
#include "commands/HelpText.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

template <typename Store>
void AddConfigDir(CLI::App& command, Store store) {
    AddText(
        command, "--config-dir", "DIR", kConfigDirHelp,
        [store](std::string const& directory) {
            if (directory.empty())
                throw CLI::ValidationError("--config-dir", "the directory is empty");
            store(directory);
        });
}

} // namespace

CommandLine::CommandLine()
    : app_("Shows, explains and edits the rules by which calls are recorded.", "callrecordingctl") {
    app_.footer(kMainHelp);
    app_.get_formatter()->column_width(24);
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "callrecordingctl " CALLRECORDINGCTL_VERSION);
    AddConfigDir(app_, [this](std::string const& directory) { directory_ = directory; });
}

CLI::App& CommandLine::AddCommand(char const* name, char const* summary, char const* help,
                                  Command const& command) {
    CLI::App& added = *app_.add_subcommand(name, summary);
    added.footer(help);
    added.callback([this, command] { command_ = command; });
    AddConfigDir(added, [this](std::string const& directory) { directory_ = directory; });
    added.add_flag("--json", context_.json, "Print JSON");
    return added;
}

int CommandLine::Run(int argc, char** argv) {
    // CLI11 hands what follows "--" to the wrong command.
    char** const end = std::find(argv, argv + argc, std::string_view("--"));
    rest_.assign(end == argv + argc ? end : end + 1, argv + argc);
    try {
        app_.parse(static_cast<int>(end - argv), argv);
        if (!rest_.empty() && (takesRest_ == nullptr || !takesRest_->parsed()))
            throw CLI::ExtrasError(rest_);
    } catch (CLI::ParseError const& error) {
        return app_.exit(error) == 0 ? kExitYes : kExitUsage;
    }
    return RunCommand();
}

int CommandLine::RunCommand() {
    context_.path = RuleFilePath(directory_);
    try {
        int const code = command_(context_);
        if (std::fflush(stdout) != 0)
            throw Failure(kExitUnsaved, "standard output cannot be written");
        return code;
    } catch (Failure const& failure) {
        std::fflush(stdout);
        Say("{}", failure.what());
        return failure.Code();
    }
}

std::uint32_t ParseNumber(std::string const& option, std::string const& text, std::uint32_t least) {
    bool const isNumber = !text.empty() && text.size() <= 10 &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    std::uint64_t const number = isNumber ? std::stoull(text) : 0;
    if (!isNumber || number < least || number > std::numeric_limits<std::int32_t>::max())
        throw CLI::ValidationError(
            option, fmt::format("\"{}\" is no number from {} to 2147483647", text, least));
    return static_cast<std::uint32_t>(number);
}

void AddId(CLI::App& command, std::int32_t& id) {
    AddNumber(
        command, "ID", "", "Identifier of the rule, as list shows it", 0,
        [&id](std::uint32_t number) { id = static_cast<std::int32_t>(number); })
        ->required();
}

void AddCallType(CLI::App& command, std::string const& name, std::string const& help,
                 std::optional<CallType>& type) {
    AddText(
        command, name, "TYPE", help,
        [name, &type](std::string const& text) {
            type = ParseCallType(text);
            if (!type)
                throw CLI::ValidationError(
                    name, fmt::format(
                              "\"{}\" is no call type; it is number, sip, number2, any, or 0 to 3",
                              text));
        });
}

void AddParty(CLI::App& command, PartyOptions& party, std::string const& name, char const* who) {
    command.add_option("--" + name, party.address, fmt::format("Address of the {} side", who))
        ->type_name("ADDR")
        ->required();
    AddCallType(command, "--" + name + "-type",
                "Its call type (default: sip with an \"@\" in it,\n"
                "else number)",
                party.type);
}

void TakeRest(CommandLine& line, CLI::App& command, std::vector<std::string>& texts) {
    command.allow_extras();
    line.takesRest_ = &command;
    command.parse_complete_callback([&line, &command, &texts] {
        for (std::string const& text : command.remaining()) {
            if (text.size() > 1 && text[0] == '-')
                throw CLI::ExtrasError({text}); // An option, mistyped.
            texts.push_back(text);
        }
        texts.insert(texts.end(), line.rest_.begin(), line.rest_.end());
    });
}

} // namespace callrecordingctl
