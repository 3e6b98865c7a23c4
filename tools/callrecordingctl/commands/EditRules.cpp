// edit: opens rules in an editor, shows what would change, asks, and saves once.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>

#include <fmt/format.h>

#include "administration/exchange/RuleBlocks.h"
#include "administration/inspection/RuleNames.h"
#include "commands/EditorFile.h"
#include "commands/RuleFields.h"
#include "commands/RunEdit.h"
#include "commands/SelectionOptions.h"
#include "common/Error.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Opens these rules, or all, in an editor: what VISUAL or EDITOR names, else
"editor" or "vi". Each rule is a block of lines "name: value". A block that is
removed deletes its rule, one without an id is a new rule behind the block above
it, and blocks in another order have their rules exchange places. Faults are
shown above their lines, and the text is opened again. Then the difference is
shown, and you are asked before it is saved, all at once. Nobody else has to
wait meanwhile. A text that is not saved stays in a file, which is named; to
take it up again, use cp as the editor.
Example: EDITOR='cp /tmp/callrecordingctl-x1Y2z3.rules' callrecordingctl edit 3
)";

constexpr char kIntro[] =
    "# Change what follows the colons. A block that you remove deletes its rule; one without an\n"
    "# id is a new rule behind the block above it; blocks in another order exchange places.\n\n";

struct Options {
    RuleSelection selection;
    bool yes = false;
    bool everyone = false;
};

/// The selected rules, or all. Throws a Failure if identifiers do not tell them apart.
OpenRules Open(RuleList const& rules, RuleSelection const& selection) {
    OpenRules open{rules, Matching(rules, selection)};
    if (selection.IsGiven())
        open.places = Select(rules, selection);
    std::sort(open.places.begin(), open.places.end());
    for (std::size_t const place : open.places)
        FindRule(rules, {rules[place].callrecordingrule_id, false});
    return open;
}

/// Adds the lack of --everyone to the faults.
void RequireEveryone(OpenRules const& open, ReadBlocks& read) {
    for (RuleBlock const& block : read.blocks)
        if (block.isChanged && IsForEveryone(block.rule) &&
            (!block.origin || !IsForEveryone(open.rules[*block.origin])))
            read.faults.push_back(
                {block.line, fmt::format("this rule would take {}; give from or to, or start edit "
                                         "with --everyone if you want that",
                                         EveryoneText(block.rule))});
}

/// Has the text edited until it has no faults. No blocks: nothing is to be changed.
std::vector<RuleBlock> EditBlocks(EditorFile const& file, OpenRules const& open, std::string shown,
                                  bool everyone) {
    std::string last; // What the editor left behind before, with faults.
    for (bool hasFaults = false;; hasFaults = true) {
        std::string const text = file.Edit();
        if (hasFaults && (text == shown || text == last))
            throw Failure(kExitNo, "nothing was changed, since these faults are still there");
        ReadBlocks read = ReadRuleBlocks(text, open);
        if (!everyone)
            RequireEveryone(open, read);
        if (read.faults.empty() && (text == shown || read.blocks.empty()))
            Say("{}; nothing was changed",
                text == shown ? "the text is as it was" : "there is no rule in the text any more");
        if (read.faults.empty())
            return text == shown ? std::vector<RuleBlock>() : read.blocks;
        std::string message;
        for (auto const& [line, fault] : read.faults)
            message +=
                fmt::format("{}{}:{}: {}", message.empty() ? "" : "\n", file.Path(), line, fault);
        SayNote(message);
        last = text;
        shown = WithFaults(text, read.faults);
        file.Write(shown);
    }
}

bool Confirm(EditorFile const& file) {
    fmt::print(stderr, "Save this? (The text is in {}.) [y/N] ", file.Path());
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

/// Shows the difference and saves it. If the file is another one by then than the one for which
/// the difference was shown, it is shown again.
ExitCode ShowAndSave(Context const& context, EditOptions const& edit, Options const& options,
                     OpenRules const& open, std::vector<RuleBlock> const& blocks,
                     EditorFile const& file) {
    EditOptions dry = edit;
    dry.dryRun = true;
    for (;;) {
        std::string shown;
        if (!context.json || edit.dryRun) {
            ExitCode const code = RunEdit(context, dry, [&](RuleEdit& changing) {
                Apply(changing, open, blocks);
                shown = changing.TextBefore();
                return changing.IsChanged() ? kExitYes : kExitNo;
            });
            if (code != kExitYes || edit.dryRun)
                return code;
        }
        if (!options.yes && !Confirm(file))
            throw Failure(kExitNo, "nothing was changed");
        bool isStale = false;
        ExitCode const code = RunEdit(context, edit, [&](RuleEdit& changing) {
            isStale = !options.yes && changing.TextBefore() != shown;
            if (!isStale)
                Apply(changing, open, blocks);
            return isStale || !changing.IsChanged() ? kExitNo : kExitYes;
        });
        if (!isStale)
            return code;
        Say("somebody else has changed the rule file meanwhile; this is what the edit would do "
            "now");
    }
}

ExitCode Edit(Context const& context, EditOptions const& edit, Options const& options,
              OpenRules const& open, EditorFile const& file, std::string const& text) {
    std::vector<RuleBlock> const blocks = EditBlocks(file, open, text, options.everyone);
    if (blocks.empty())
        return kExitNo;
    for (RuleBlock const& block : blocks)
        if (block.isChanged)
            NoteSuspicions(block.rule, block.origin ? NameOf(block.rule) : "the new rule");
    return ShowAndSave(context, edit, options, open, blocks, file);
}

ExitCode EditRules(Context const& context, EditOptions const& edit, Options const& options) {
    if (context.json && !options.yes && !edit.dryRun)
        throw Failure(kExitUsage, "edit --json: nobody can be asked; give --yes or --dry-run");
    RequireDirectory(context.path);
    RuleEdit const before(context.path);
    RequireState(before, edit);
    OpenRules const open = Open(before.Before(), options.selection);
    std::string const text = kIntro + BlocksOf(open);
    EditorFile const file(text);
    auto const where = [&file] {
        return std::filesystem::exists(file.Path()) ? "the text is in " + file.Path()
                                                    : "nothing was changed";
    };
    try {
        ExitCode const code = Edit(context, edit, options, open, file, text);
        if (edit.dryRun)
            Say("{}", where());
        else
            file.Remove();
        return code;
    } catch (Failure const& failure) {
        throw Failure(failure.Code(), fmt::format("{}; {}", failure.what(), where()));
    } catch (Error const& error) {
        throw Error(error.GetKind(), fmt::format("{}; {}", error.what(), where()));
    }
}

} // namespace

void AddEditRules(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    auto const edit = std::make_shared<EditOptions>();
    CLI::App& command = line.AddCommand(
        "edit", "Change rules in an editor", kHelp,
        [options, edit](Context const& context) { return EditRules(context, *edit, *options); });
    AddSelection(command, options->selection, WithoutSelection::MeansAll);
    command.add_flag("--yes", options->yes, "Save without asking");
    AddEveryone(command, options->everyone);
    AddEditOptions(command, *edit);
}

} // namespace callrecordingctl
