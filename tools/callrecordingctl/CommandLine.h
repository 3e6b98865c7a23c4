// The command line: what all commands have in common, and how a command adds itself to it.

#ifndef CALLRECORDINGCTL_COMMANDLINE_H
#define CALLRECORDINGCTL_COMMANDLINE_H

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "Failure.h"
#include "Rules.h"

namespace callrecordingctl {

/// What the options that all commands have say.
struct Context {
    std::string path;                     ///< Of the rule file.
    std::optional<std::string> directory; ///< The configuration directory, where it was given.
    std::string line;                     ///< As the shell could take it again.
    bool json = false;
};

/// Runs a command. Returns the exit code, or throws a Failure.
using Command = std::function<ExitCode(Context const&)>;

class CommandLine {
  public:
    CommandLine();

    /// Adds a command with the options that all have. help stands below the options; command runs
    /// once the whole line has been read.
    CLI::App& AddCommand(char const* name, char const* summary, char const* help,
                         Command const& command);

    /// Reads the line and runs its command. Returns the exit code.
    int Run(int argc, char** argv);

  private:
    void Parse(std::vector<std::string> words);
    int RunCommand();

    CLI::App app_;
    Command command_; // Of the line.
    Context context_;
    std::vector<std::string> rest_; // What stands behind "--".
    CLI::App* takesRest_ = nullptr;

    friend void TakeRest(CommandLine& line, CLI::App& command, std::vector<std::string>& texts);
};

/// An option or, when name does not begin with "-", a positional argument, whose text goes through
/// store. (CLI11's own conversion to an optional would lose the empty text, which is a value here.)
template <typename Store>
CLI::Option* AddText(CLI::App& command, std::string const& name, char const* what,
                     std::string const& help, Store store) {
    return command.add_option_function<std::string>(name, store, help)->type_name(what);
}

/// Returns the number that text is. Throws CLI::ValidationError, which names option, when it is
/// none from least to 2147483647.
std::uint32_t ParseNumber(std::string const& option, std::string const& text, std::uint32_t least);

template <typename Store>
CLI::Option* AddNumber(CLI::App& command, std::string const& name, char const* what,
                       std::string const& help, std::uint32_t least, Store store) {
    return AddText(
        command, name, what, help,
        [name, least, store](std::string const& text) { store(ParseNumber(name, text, least)); });
}

/// Returns the time that text means, in seconds since 1970. Throws a Failure that names option when
/// it is not a time.
std::int64_t ParseTime(std::string const& option, std::string const& text);

/// The name of a rule in words of the command line. Throws CLI::ValidationError when text is none.
RuleName ParseRuleName(std::string const& text);

/// The name of a rule, as a required argument.
void AddRuleName(CLI::App& command, RuleName& rule);

/// The names of one or more rules.
void AddRuleNames(CLI::App& command, std::vector<RuleName>& rules);

/// An option for a call type, by its name or number.
void AddCallType(CLI::App& command, std::string const& name, std::string const& help,
                 std::optional<CallType>& type);

/// One side of a call, as it was given. Without a type an address with an "@" is of type sip.
struct PartyOptions {
    std::string address;
    std::optional<CallType> type;
};

/// --name ADDR and --name-type TYPE; who is "calling" or "called".
void AddParty(CLI::App& command, PartyOptions& party, std::string const& name, char const* who);

/// Has all arguments that are no options go to texts, also those behind "--". (CLI11 would take the
/// brackets of the pattern [1,2] for those of a list.) Needs an argument of the command for the
/// help; what that takes is to be added to texts by it.
void TakeRest(CommandLine& line, CLI::App& command, std::vector<std::string>& texts);

} // namespace callrecordingctl

#endif
