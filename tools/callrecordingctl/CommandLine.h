// The command line: the options that all commands share, and how a command adds itself.

#ifndef CALLRECORDINGCTL_COMMANDLINE_H
#define CALLRECORDINGCTL_COMMANDLINE_H

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "Failure.h"
#include "Rules.h"

namespace callrecordingctl {

/// The values of the options that all commands share.
struct Context {
    std::string path;                     ///< The rule file.
    std::optional<std::string> directory; ///< The configuration directory, if given.
    std::string line;                     ///< The command line, quoted for a shell.
    bool json = false;
};

/// Runs a command. Returns the exit code, or throws a Failure.
using Command = std::function<ExitCode(Context const&)>;

class CommandLine {
  public:
    CommandLine();

    /// The commands that are added from now on are under this heading of the help.
    void BeginGroup(char const* heading) { group_ = heading; }

    /// Adds a command with the options that all share. help is printed below the options; command
    /// runs after the whole line has been read.
    CLI::App& AddCommand(char const* name, char const* summary, char const* help,
                         Command const& command);

    /// The same for a command with options of its own, which live as long as the command line.
    template <typename Options>
    CLI::App& AddCommand(char const* name, char const* summary, char const* help,
                         std::shared_ptr<Options> const& options,
                         ExitCode (*run)(Context const&, Options const&)) {
        return AddCommand(
            name, summary, help,
            [options, run](Context const& context) { return run(context, *options); });
    }

    /// Reads the line and runs its command. Returns the exit code.
    int Run(int argc, char** argv);

  private:
    void Parse(std::vector<std::string> words);
    int RunCommand();

    CLI::App app_;
    std::string group_;
    Command command_; // Of the line.
    Context context_;
    std::vector<std::string> rest_; // The words after "--".
    CLI::App* takesRest_ = nullptr;

    friend void TakeRest(CommandLine& line, CLI::App& command, std::vector<std::string>& texts);
};

/// An option or, when name does not begin with "-", a positional argument; its text is passed to
/// store. (CLI11's own conversion to std::optional would lose the empty text, which is a value
/// here.)
template <typename Store>
CLI::Option* AddText(CLI::App& command, std::string const& name, char const* what,
                     std::string const& help, Store store) {
    return command.add_option_function<std::string>(name, store, help)->type_name(what);
}

/// Returns text as a number. Throws CLI::ValidationError, which names option, when it is not a
/// number from least to 2147483647.
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

/// Reads an identifier, or "#" and a position. Throws CLI::ValidationError when text is neither.
RuleName ParseRuleName(std::string const& text);

/// The name of a rule, as a required argument.
void AddRuleName(CLI::App& command, RuleName& rule);

/// An option for a call type, by its name or number.
void AddCallType(CLI::App& command, std::string const& name, std::string const& help,
                 std::optional<CallType>& type);

/// One side of a call, as given. Without a type it is a party.
struct AddressOptions {
    std::string address;
    std::optional<CallType> type;
};

/// --name ADDR and --name-type TYPE; who is "calling" or "called".
void AddAddress(CLI::App& command, AddressOptions& side, std::string const& name, char const* who);

/// Collects all positional arguments in texts, including those after "--". (CLI11 would read the
/// pattern [1,2] as a list.) REQUIRES: the command has a positional argument, for the help, that
/// adds what it takes to texts.
void TakeRest(CommandLine& line, CLI::App& command, std::vector<std::string>& texts);

} // namespace callrecordingctl

#endif
