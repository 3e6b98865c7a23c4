// Writes the manual page's description and commands from what CLI11 knows of the command line.

#include "Manual.h"

#include <algorithm>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace callrecordingctl {
namespace {

using Apps = std::vector<CLI::App*>;
using Options = std::vector<CLI::Option*>;

/// Options that at least so many commands share are described once, before the commands.
constexpr std::size_t kShared = 4;

std::string Escaped(std::string const& text) {
    std::string escaped;
    for (char const c : text) {
        if (std::string_view("\\`*_{}[]<>#^~$&|").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c == '\n' ? ' ' : c;
    }
    return escaped;
}

/// Options of groups belong to the group.
Options OptionsOf(CLI::App& app) {
    return app.get_options([](CLI::Option* option) { return option->get_name() != "--help"; });
}

Apps GroupsOf(CLI::App& command) {
    return command.get_subcommands([](CLI::App* app) { return app->get_name().empty(); });
}

/// "--a, --b and --c", of options or of commands.
template <typename Named>
std::string Names(std::vector<Named*> const& all) {
    std::string names;
    for (std::size_t i = 0; i < all.size(); ++i)
        names += (i == 0 ? "" : i + 1 < all.size() ? ", " : " and ") + all[i]->get_name();
    return names;
}

/// The names that are typed, and what stands for the value: "**-v**, **--verbose**".
std::string Title(CLI::Option const& option) {
    if (option.get_positional())
        return fmt::format("*{}*", option.get_name());
    std::string title;
    for (std::string const& name : option.get_snames())
        title += fmt::format("**-{}**, ", name);
    for (std::string const& name : option.get_lnames())
        title += fmt::format("**--{}**, ", name);
    title.erase(title.size() - 2);
    std::string const value = option.get_type_name();
    return option.get_expected_min() == 0 ? title : fmt::format("{} *{}*", title, Escaped(value));
}

/// The option as an entry of a definition list.
std::string Entry(CLI::Option const& option) {
    std::string text = Escaped(option.get_description()) + ".";
    auto const related = [](std::set<CLI::Option*> const& options) {
        return Names(Options(options.begin(), options.end()));
    };
    if (option.get_required() && !option.get_positional())
        text += " Required.";
    if (!option.get_needs().empty())
        text += fmt::format(" Only with {}.", related(option.get_needs()));
    if (!option.get_excludes().empty())
        text += fmt::format(" Not with {}.", related(option.get_excludes()));
    return fmt::format("{}\n\n:   {}\n\n", Title(option), text);
}

/// "callrecordingctl show [OPTIONS] [ID]", as the help has it.
std::string Usage(CLI::App const& command) {
    constexpr std::string_view kUsage = "Usage: ";
    std::string const help = command.help();
    std::size_t const begin = help.find(kUsage) + kUsage.size();
    return "callrecordingctl " + help.substr(begin, help.find("\n\n", begin) - begin);
}

/// Help text: paragraphs, and lines that stand as they are. These begin with two blanks, or follow
/// "Example: ".
class HelpText {
  public:
    void Print(std::string const& help) {
        std::istringstream lines(help);
        for (std::string line; std::getline(lines, line);)
            PrintLine(line);
        PrintParagraph();
        PrintExample();
    }

  private:
    static constexpr std::string_view kExample = "Example: ";

    void PrintLine(std::string const& line) {
        if (line.compare(0, 2, "  ") == 0) {
            PrintParagraph();
            example_ += line.substr(2) + "\n";
        } else if (line.compare(0, kExample.size(), kExample) == 0) {
            PrintParagraph();
            fmt::print("Example:\n\n");
            example_ = line.substr(kExample.size()) + "\n";
        } else {
            PrintExample();
            if (line.empty())
                PrintParagraph();
            paragraph_ += (paragraph_.empty() || line.empty() ? "" : "\n") + line;
        }
    }

    void PrintParagraph() {
        if (!paragraph_.empty())
            fmt::print("{}\n\n", Escaped(paragraph_));
        paragraph_.clear();
    }

    void PrintExample() {
        if (!example_.empty())
            fmt::print("```\n{}```\n\n", example_);
        example_.clear();
    }

    std::string paragraph_;
    std::string example_;
};

class Manual {
  public:
    explicit Manual(CLI::App& app) : app_(app) {
        commands_ = app.get_subcommands([](CLI::App*) { return true; });
        for (CLI::App* command : commands_)
            for (CLI::Option const* option : OptionsOf(*command))
                takers_[Entry(*option)].push_back(command);
    }

    void Print() {
        fmt::print("# DESCRIPTION\n\n");
        HelpText().Print(app_.get_footer());
        fmt::print("# COMMANDS\n\n");
        PrintShared();
        for (CLI::App* command : commands_)
            PrintCommand(*command);
    }

  private:
    bool IsShared(CLI::Option const& option) const {
        auto const takers = takers_.find(Entry(option));
        return !option.get_positional() && takers != takers_.end() &&
               takers->second.size() >= kShared;
    }

    /// What several commands take, in the order in which the options are first met.
    void PrintShared() {
        std::vector<Apps> printed;
        for (CLI::App* first : commands_)
            for (CLI::Option const* option : OptionsOf(*first)) {
                Apps const& takers = takers_[Entry(*option)];
                if (!IsShared(*option) ||
                    std::find(printed.begin(), printed.end(), takers) != printed.end())
                    continue;
                printed.push_back(takers);
                fmt::print("{} take:\n\n", takers.size() == commands_.size()
                                               ? "All commands"
                                               : "The commands " + Names(takers) + " also");
                for (CLI::Option const* other : OptionsOf(*first))
                    if (IsShared(*other) && takers_[Entry(*other)] == takers)
                        fmt::print("{}", Entry(*other));
            }
    }

    void PrintCommand(CLI::App& command) {
        fmt::print("## {}\n\n{}.\n\n", command.get_name(), Escaped(command.get_description()));
        fmt::print("```\n{}\n```\n\n", Usage(command));
        PrintOptions(command);
        for (CLI::App* group : GroupsOf(command)) {
            fmt::print("{}:\n\n", Escaped(group->get_description()));
            PrintOptions(*group);
        }
        HelpText().Print(command.get_footer());
    }

    void PrintOptions(CLI::App& app) {
        for (CLI::Option const* option : OptionsOf(app))
            if (!IsShared(*option))
                fmt::print("{}", Entry(*option));
    }

    CLI::App& app_;
    Apps commands_;
    std::map<std::string, Apps> takers_; // Of each option, by its entry.
};

} // namespace

void PrintManual(CLI::App& app) {
    Manual(app).Print();
}

} // namespace callrecordingctl
