// Completes words from the options that CLI11 knows, and from the rules.

#include "Completion.h"

#include <algorithm>
#include <map>
#include <optional>

#include <fmt/format.h>

#include "Failure.h"
#include "Rules.h"
#include "administration/history/History.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "model/CallTypeNames.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

/// As much of text as stands beside a candidate, cut at a word.
std::string Brief(std::string text) {
    constexpr std::size_t kMost = 60;
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::size_t const length = BytesWithin(text, kMost);
    if (length == text.size())
        return text;
    std::size_t const blank = text.rfind(' ', length);
    return text.substr(0, blank != std::string::npos && blank > 0 ? blank : length) + " ...";
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

    /// A word that a shell would split is left out.
    void Offer(std::string const& word, std::string const& what) {
        if (word.find(' ') == std::string::npos && word.compare(0, current_.size(), current_) == 0)
            fmt::print("{}{}\t{}\n", prefix_, Printable(word), Printable(Brief(what)));
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
                Offer("--" + name, option->get_description());
        for (CLI::App const* group :
             Scope().get_subcommands([](CLI::App* app) { return app->get_name().empty(); }))
            for (CLI::Option const* option : group->get_options())
                for (std::string const& name : option->get_lnames())
                    Offer("--" + name, option->get_description());
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
        else if (option != nullptr && option->get_name().compare(0, 11, "--record-to") == 0)
            OfferDestinations();
        else if (type == "PLACE")
            OfferPlaces();
        else if (type == "NUMBER")
            OfferEdits();
        else if (type == "NAME")
            OfferUsers();
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
            if (name.compare(0, 2, "ID") == 0)
                OfferRules();
            else if (name == "NUMBER")
                OfferEdits();
            else if (name == "FILE" || name == "CALLS")
                fmt::print(":files\n");
        }
    }

    /// Nothing is offered when the rules or the history cannot be read.
    template <typename Action>
    void With(Action action) {
        try {
            action(RuleFilePath(directory_));
        } catch (std::exception const&) {
        }
    }

    static std::string Text(Rule const& rule) {
        return rule.description.empty() ? SidesText(rule) : rule.description;
    }

    /// The identifiers that are not on the line yet.
    void OfferRules() {
        With([this](std::string const& path) {
            for (Rule const& rule : ReadRules(path)) {
                std::string const id = std::to_string(rule.callrecordingrule_id);
                if (std::find(words_.begin(), words_.end(), id) == words_.end())
                    Offer(id, Text(rule));
            }
        });
    }

    void OfferPlaces() {
        With([this](std::string const& path) {
            std::size_t place = 0;
            for (Rule const& rule : ReadRules(path))
                Offer(std::to_string(++place),
                      fmt::format("now rule {}: {}", rule.callrecordingrule_id, Text(rule)));
        });
    }

    void OfferDestinations() {
        With([this](std::string const& path) {
            std::map<std::string, std::size_t> counts;
            for (Rule const& rule : ReadRules(path))
                if (!rule.record_to.empty())
                    ++counts[rule.record_to];
            for (auto const& [destination, count] : counts)
                Offer(destination, fmt::format("of {} {}", count, count == 1 ? "rule" : "rules"));
        });
    }

    /// The last edits.
    void OfferEdits() {
        With([this](std::string const& path) {
            constexpr std::size_t kMost = 20;
            std::vector<HistoryEntry> const entries = History(path).Read().entries;
            for (std::size_t i = entries.size(); i-- > 0 && entries.size() - i <= kMost;)
                if (entries[i].number > 0)
                    Offer(std::to_string(entries[i].number), entries[i].IsOutside()
                                                                 ? "changed outside the history"
                                                                 : entries[i].note.command);
        });
    }

    void OfferUsers() {
        With([this](std::string const& path) {
            std::map<std::string, std::size_t> counts;
            for (HistoryEntry const& entry : History(path).Read().entries)
                if (!entry.IsOutside())
                    ++counts[entry.note.user.substr(0, entry.note.user.find(' '))];
            for (auto const& [user, count] : counts)
                Offer(user, fmt::format("made {} {}", count, count == 1 ? "edit" : "edits"));
        });
    }

    void OfferState() {
        With([this](std::string const& path) {
            Offer(StateToken(DigestOf(ReadInput(path))), "the state now");
        });
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
