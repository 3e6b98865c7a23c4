// Reads the command line.

#include "CommandLine.h"

#include <algorithm>
#include <cstdlib>

#include "Completion.h"
#include "HelpFormatter.h"
#include "Manual.h"
#include "Rules.h"
#include "administration/history/When.h"
#include "commands/HelpText.h"
#include "common/Error.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/ShellText.h"
#include "text/Similar.h"

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

/// help COMMAND is COMMAND --help.
void AskForHelp(std::vector<std::string>& words) {
    if (words.empty() || words[0] != "help")
        return;
    words.erase(words.begin());
    words.resize(std::min<std::size_t>(words.size(), 1));
    words.emplace_back("--help");
}

/// Words that people try, and the commands that do it.
constexpr std::pair<char const*, char const*> kOtherWords[] = {
    {"rm", "delete"},      {"remove", "delete"}, {"erase", "delete"},   {"ls", "list"},
    {"print", "list"},     {"get", "show"},      {"cat", "show"},       {"mv", "move"},
    {"set", "modify"},     {"change", "modify"}, {"update", "modify"},  {"new", "add"},
    {"create", "add"},     {"insert", "add"},    {"test", "decide"},    {"why", "decide"},
    {"explain", "decide"}, {"on", "enable"},     {"off", "disable"},    {"history", "log"},
    {"restore", "undo"},   {"load", "import"},   {"save", "export"},    {"dump", "export"},
    {"validate", "check"}, {"lint", "check"},    {"simulate", "replay"}};

/// The name most similar to word; empty when none is similar.
std::string MostSimilar(std::string const& word, std::vector<std::string> const& names) {
    std::string best;
    for (std::string const& name : names)
        if (IsSimilar(word, name) && (best.empty() || Distance(word, name) < Distance(word, best)))
            best = name;
    return best;
}

std::vector<std::string> CommandNames(CLI::App& app) {
    std::vector<std::string> names;
    for (CLI::App const* command : app.get_subcommands([](CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

/// Throws, with a suggestion, when the first word that is not an option is not a command either.
/// (CLI11 would only say that it did not expect it.)
void RequireCommand(std::vector<std::string> const& names, std::vector<std::string> const& words) {
    auto word = words.begin();
    while (word != words.end() && word->compare(0, 1, "-") == 0)
        word += *word == "--config-dir" && word + 1 != words.end() ? 2 : 1;
    if (word == words.end() || std::find(names.begin(), names.end(), *word) != names.end())
        return;
    std::string meant = MostSimilar(*word, names);
    for (auto const& [other, command] : kOtherWords)
        if (*word == other)
            meant = command;
    throw Failure(kExitUsage, fmt::format("\"{}\" is not a command; {}", *word,
                                          meant.empty() ? "\"callrecordingctl --help\" lists them"
                                                        : fmt::format("did you mean {}?", meant)));
}

std::vector<std::string> OptionNames(CLI::App const& command) {
    std::vector<std::string> names;
    for (CLI::Option const* option : command.get_options())
        for (std::string const& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

bool Has(std::vector<std::string> const& names, std::string const& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr char kNothingMeant[] = "unknown";

/// What should have been written instead of word, as the end of a sentence; empty when word is
/// right, or is none that looks like an option; kNothingMeant when nobody knows. isUnknown says
/// that some word is not known.
std::string MeantInsteadOf(std::string const& word, std::vector<std::string> const& names,
                           bool isUnknown) {
    std::string const option = word.substr(0, word.find('='));
    if (option.size() > 2 && option[0] == '-' && Has(names, "-" + option))
        return fmt::format("did you mean -{}?", option);
    if (!isUnknown || option.compare(0, 2, "--") != 0 || option == "--config-dir" ||
        Has(names, option))
        return "";
    if (option == "--all" && Has(names, "--is-enabled")) // It selects rules.
        return "for all rules write '#1-', which is from the first position on";
    std::string const meant = MostSimilar(option, names);
    return meant.empty() ? kNothingMeant : fmt::format("did you mean {}?", meant);
}

/// What is wrong with the line and, for a mistyped option, a suggestion.
std::string Explain(CLI::ParseError const& error, CLI::App& app,
                    std::vector<std::string> const& words) {
    std::vector<CLI::App*> const commands = app.get_subcommands();
    std::string const help = commands.empty() ? "callrecordingctl --help"
                                              : "callrecordingctl help " + commands[0]->get_name();
    if (commands.empty())
        return fmt::format("{} (see \"{}\")", error.what(), help);
    std::vector<std::string> const names = OptionNames(*commands[0]);
    bool const isUnknown = dynamic_cast<CLI::ExtrasError const*>(&error) != nullptr;
    for (std::string const& word : words) {
        std::string const meant = MeantInsteadOf(word, names, isUnknown);
        if (!meant.empty())
            return fmt::format("{} is not an option of {}; {}", word.substr(0, word.find('=')),
                               commands[0]->get_name(),
                               meant != kNothingMeant ? meant : fmt::format("see \"{}\"", help));
    }
    return fmt::format("{} (see \"{}\")", error.what(), help);
}

} // namespace

CommandLine::CommandLine()
    : app_("Shows, explains and edits the rules by which calls are recorded.", "callrecordingctl") {
    app_.footer(kMainHelp);
    app_.formatter(std::make_shared<HelpFormatter>());
    app_.require_subcommand(1);
    app_.set_version_flag("--version", "callrecordingctl " CALLRECORDINGCTL_VERSION);
    AddConfigDir(app_, [this](std::string const& directory) { context_.directory = directory; });
}

CLI::App& CommandLine::AddCommand(char const* name, char const* summary, char const* help,
                                  Command const& command) {
    CLI::App& added = *app_.add_subcommand(name, summary);
    added.group(group_);
    added.footer(help);
    added.callback([this, command] { command_ = command; });
    AddConfigDir(added, [this](std::string const& directory) { context_.directory = directory; });
    added.add_flag("--json", context_.json, "Print JSON");
    return added;
}

int CommandLine::Run(int argc, char** argv) {
    std::vector<std::string> const words(argv + 1, argv + argc);
    context_.line = "callrecordingctl";
    for (std::string const& word : words)
        context_.line += " " + ShellWord(word);
    // Until the line has been read; the command may not see it at all.
    if (std::find(words.begin(), words.end(), "--json") != words.end())
        UseJsonMessages();
    if (!words.empty() && words[0] == kCompleteCommand) {
        PrintCompletions(app_, {words.begin() + 1, words.end()});
        return kExitYes;
    }
    if (words == std::vector<std::string>{kManualCommand}) {
        PrintManual(app_);
        return kExitYes;
    }
    try {
        Parse(words);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == 0)
            return app_.exit(error); // The help, or the version.
        SayError(Explain(error, app_, words), kExitUsage);
        return kExitUsage;
    } catch (Failure const& failure) {
        SayError(failure.what(), failure.Code());
        return failure.Code();
    }
    return RunCommand();
}

void CommandLine::Parse(std::vector<std::string> words) {
    AskForHelp(words);
    // CLI11 hands what follows "--" to the wrong command.
    auto const end = std::find(words.begin(), words.end(), "--");
    rest_.assign(end == words.end() ? end : end + 1, words.end());
    words.erase(end, words.end());
    RequireCommand(CommandNames(app_), words);
    std::reverse(words.begin(), words.end()); // As CLI11 takes them.
    app_.parse(std::move(words));
    if (!rest_.empty() && (takesRest_ == nullptr || !takesRest_->parsed()))
        throw CLI::ExtrasError(rest_);
}

namespace {

ExitCode CodeOf(Error::Kind kind) {
    switch (kind) {
    case Error::Kind::Unreadable: return kExitUnreadable;
    case Error::Kind::Unsaved: return kExitUnsaved;
    case Error::Kind::NoSuchRule: return kExitNoSuchRule;
    }
    return kExitUnreadable;
}

int Fail(std::string const& message, ExitCode code) {
    std::fflush(stdout);
    SayError(message, code);
    return code;
}

} // namespace

int CommandLine::RunCommand() {
    context_.path = RuleFilePath(context_.directory);
    try {
        int const code = command_(context_);
        // An earlier write may have failed, and what is left be nothing.
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            throw Failure(kExitUnsaved, "standard output cannot be written");
        return code;
    } catch (Failure const& failure) {
        return Fail(failure.what(), failure.Code());
    } catch (Error const& error) {
        return Fail(error.what(), CodeOf(error.GetKind()));
    }
}

std::uint32_t ParseNumber(std::string const& option, std::string const& text, std::uint32_t least) {
    bool const isNumber = !text.empty() && text.size() <= 10 &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    std::uint64_t const number = isNumber ? std::stoull(text) : 0;
    if (!isNumber || number < least || number > std::numeric_limits<std::int32_t>::max())
        throw CLI::ValidationError(
            option, fmt::format("\"{}\" is not a number from {} to 2147483647", text, least));
    return static_cast<std::uint32_t>(number);
}

std::int64_t ParseTime(std::string const& option, std::string const& text) {
    if (auto const when = ParseWhen(text))
        return *when;
    throw Failure(
        kExitUsage,
        fmt::format("{}: \"{}\" is not a time; write 2026-11-25, '2026-11-25 14:00', 14:00, "
                    "today, yesterday, monday, 3h, 2d or 1w",
                    option, text));
}

RuleName ParseRuleName(std::string const& text) {
    bool const isPosition = text.compare(0, 1, "#") == 0;
    try {
        std::uint32_t const number =
            ParseNumber("ID", text.substr(isPosition ? 1 : 0), isPosition ? 1 : 0);
        return {static_cast<std::int32_t>(number), isPosition};
    } catch (CLI::ValidationError const&) {
        throw CLI::ValidationError(
            "ID", fmt::format("\"{}\" is no identifier (7) and no position ('#5')", text));
    }
}

void AddRuleName(CLI::App& command, RuleName& rule) {
    AddText(
        command, "ID", "", "Identifier of the rule, or its position: '#5'",
        [&rule](std::string const& text) { rule = ParseRuleName(text); })
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
                    name,
                    fmt::format(
                        "\"{}\" is not a call type; write number, sip, number2, any, or 0 to 3",
                        text));
        });
}

void AddAddress(CLI::App& command, AddressOptions& side, std::string const& name, char const* who) {
    command.add_option("--" + name, side.address, fmt::format("Address of the {} side", who))
        ->type_name("ADDR")
        ->required();
    std::string const option = "--" + name + "-type";
    AddText(command, option, "TYPE",
            "Compare the address byte for byte as one of this\ncall type: number, sip or number2",
            [option, &side](std::string const& text) {
                side.type = ParseCallType(text);
                if (!side.type || *side.type == CALL_TYPE_ANY)
                    throw CLI::ValidationError(
                        option,
                        fmt::format("\"{}\" is not the type of an address; write number, sip, "
                                    "number2, or 0 to 2",
                                    text));
            });
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
