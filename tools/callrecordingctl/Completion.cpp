// Completes words from the options that CLI11 knows, and from the rules.

#include "Completion.h"

#include <optional>

#include <fmt/format.h>

#include "Failure.h"
#include "Rules.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

std::string FirstLine(std::string const& text) {
    return text.substr(0, text.find('\n'));
}

class Completer {
  public:
    Completer(CLI::App& app, std::vector<std::string> const& words) : app_(app), words_(words) {
        if (words_.empty())
            words_.emplace_back();
        current_ = words_.back();
        words_.pop_back();
        FindCommand();
    }

    void Print() {
        std::size_t const equals = current_.find('=');
        if (current_.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            prefix_ = current_.substr(0, equals + 1);
            current_.erase(0, equals + 1);
            OfferValues(OptionNamed(prefix_.substr(0, equals)));
        } else if (CLI::Option const* const option = OpenOption()) {
            OfferValues(option);
        } else if (current_.compare(0, 1, "-") == 0) {
            OfferOptions();
        } else if (command_ == nullptr || isHelp_) {
            OfferCommands();
        } else {
            OfferArguments();
        }
    }

  private:
    void FindCommand() {
        for (std::size_t i = 0; i < words_.size(); ++i) {
            if (words_[i] == "--config-dir" && i + 1 < words_.size())
                directory_ = words_[++i];
            else if (words_[i].compare(0, 13, "--config-dir=") == 0)
                directory_ = words_[i].substr(13);
            else if (words_[i] == "help" && command_ == nullptr)
                isHelp_ = true;
            else if (command_ == nullptr)
                for (CLI::App* command : Commands())
                    if (command->get_name() == words_[i])
                        command_ = command;
        }
    }

    std::vector<CLI::App*> Commands() {
        return app_.get_subcommands([](CLI::App* command) { return !command->get_name().empty(); });
    }

    CLI::App& Scope() { return command_ != nullptr ? *command_ : app_; }

    /// The option with this name, in groups of the command too.
    CLI::Option const* OptionNamed(std::string const& name) {
        return name.size() > 1 && name[0] == '-' ? Scope().get_option_no_throw(name) : nullptr;
    }

    /// The option whose value is being typed.
    CLI::Option const* OpenOption() {
        CLI::Option const* const option = words_.empty() ? nullptr : OptionNamed(words_.back());
        return option != nullptr && option->get_expected_min() > 0 ? option : nullptr;
    }

    void Offer(std::string const& word, std::string const& what) {
        if (word.compare(0, current_.size(), current_) == 0)
            fmt::print("{}{}\t{}\n", prefix_, word, Printable(what));
    }

    void OfferCommands() {
        for (CLI::App const* command : Commands())
            Offer(command->get_name(), command->get_description());
        if (!isHelp_)
            Offer("help", "Explain a command");
    }

    void OfferOptions() {
        for (CLI::Option const* option : Scope().get_options())
            for (std::string const& name : option->get_lnames())
                Offer("--" + name, FirstLine(option->get_description()));
        for (CLI::App const* group :
             Scope().get_subcommands([](CLI::App* app) { return app->get_name().empty(); }))
            for (CLI::Option const* option : group->get_options())
                for (std::string const& name : option->get_lnames())
                    Offer("--" + name, FirstLine(option->get_description()));
    }

    void OfferValues(CLI::Option const* option) {
        std::string const type = option != nullptr ? option->get_type_name() : "";
        if (type == "TYPE")
            for (char const* name : kCallTypeNames)
                Offer(name, "call type");
        else if (type == "ID")
            OfferRules();
        else if (type == "TOKEN")
            OfferState();
        else if (type == "0|1")
            for (char const* value : {"0", "1"})
                Offer(value, "recording type");
        else if (type == "DIR")
            fmt::print(":directories\n");
        else if (type == "FILE")
            fmt::print(":files\n");
    }

    void OfferArguments() {
        for (CLI::Option const* option :
             Scope().get_options([](CLI::Option const* o) { return o->get_positional(); })) {
            std::string const name = option->get_name();
            if (name == "ID")
                OfferRules();
            else if (name == "FILE" || name == "CALLS")
                fmt::print(":files\n");
        }
    }

    /// Offers nothing when the rules cannot be read.
    void OfferRules() {
        try {
            for (Rule const& rule : ReadRules(RuleFilePath(directory_)))
                Offer(std::to_string(rule.callrecordingrule_id),
                      rule.description.empty() ? SidesText(rule) : rule.description);
        } catch (std::exception const&) {
        }
    }

    void OfferState() {
        try {
            Offer(StateToken(DigestOf(ReadInput(RuleFilePath(directory_)))), "the state now");
        } catch (std::exception const&) {
        }
    }

    CLI::App& app_;
    std::vector<std::string> words_; // Before the one that is being typed.
    std::string current_;
    std::string prefix_; // --option= before a value.
    CLI::App* command_ = nullptr;
    bool isHelp_ = false;
    std::optional<std::string> directory_;
};

} // namespace

void PrintCompletions(CLI::App& app, std::vector<std::string> const& words) {
    Completer(app, words).Print();
}

} // namespace callrecordingctl
