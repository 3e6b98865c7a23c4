// renumber: gives every rule an identifier that no other rule has.

#include <limits>
#include <memory>
#include <set>

#include "administration/check/FileFindings.h"
#include "commands/RunEdit.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Gives the next free identifiers to rules whose identifier an earlier rule has
already, or is negative or no plain number. The other rules keep theirs, and
the order does not change.
)";

struct Options {
    bool all = false;
};

/// Says for each place whether the rule there keeps its identifier. taken gets those identifiers.
std::vector<bool> Kept(std::vector<StoredRule> const& rules, std::set<std::int32_t>& taken) {
    std::vector<bool> kept;
    kept.reserve(rules.size());
    for (auto const& stored : rules)
        kept.push_back(IsPlainId(stored) && taken.insert(stored.rule.callrecordingrule_id).second);
    return kept;
}

/// The identifier after the greatest one, as for a new rule; if there is none, the first gap.
std::int32_t FreeId(std::set<std::int32_t>& taken) {
    std::int32_t id = taken.empty() ? 0 : *taken.rbegin();
    if (!taken.empty() && id < std::numeric_limits<std::int32_t>::max())
        ++id;
    else
        for (id = 0; taken.count(id) > 0;)
            ++id;
    taken.insert(id);
    return id;
}

ExitCode Renumber(RuleEdit& edit, Options const& options) {
    auto const rules = edit.Stored();
    std::set<std::int32_t> taken;
    std::vector<bool> kept(rules.size(), false);
    if (!options.all)
        kept = Kept(rules, taken);
    for (std::size_t place = 0; place < rules.size(); ++place) {
        if (kept[place])
            continue;
        std::int32_t const id = options.all ? static_cast<std::int32_t>(place) : FreeId(taken);
        if (!IsPlainId(rules[place]) || id != rules[place].rule.callrecordingrule_id)
            edit.SetId(place, id);
    }
    return kExitYes;
}

} // namespace

void AddRenumber(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& renumber =
        AddEdit(line, "renumber", "Give rules identifiers of their own", kHelp, options, Renumber);
    renumber.add_flag("--all", options->all, "Number all rules 0, 1, 2, ... in their order");
}

} // namespace callrecordingctl
