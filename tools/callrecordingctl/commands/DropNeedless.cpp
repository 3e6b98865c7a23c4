// Deletes the rules that nobody needs, and says which.

#include "commands/DropNeedless.h"

#include <fmt/format.h>

#include "administration/check/Needless.h"
#include "administration/inspection/RuleNames.h"
#include "output/Screen.h"

namespace callrecordingctl {

ExitCode DropNeedless(RuleEdit& edit, CheckOptions const& options, bool json) {
    RuleList const rules = edit.Before();
    NeedlessRules const needless = FindNeedless(rules, options.calls, options.memory);
    if (!needless.isProved)
        throw Failure(kExitUndecided, "it cannot be proved that no call would be decided "
                                      "differently; nothing was changed");
    for (auto rule = needless.rules.rbegin(); rule != needless.rules.rend(); ++rule)
        edit.Delete(rule->place);
    for (auto const& [place, insteadOf] : needless.rules)
        if (!json)
            PrintLines("rule {} can go: {}\n", rules[place].callrecordingrule_id,
                       insteadOf.empty()
                           ? "no call is decided differently without it"
                           : fmt::format("{} {} the same with the calls that it matches or decides",
                                         RulesText(rules, insteadOf),
                                         insteadOf.size() == 1 ? "does" : "do"));
    if (needless.rules.empty() && !json)
        PrintLines("no rule can go\n");
    return needless.rules.empty() ? kExitNo : kExitYes;
}

} // namespace callrecordingctl
