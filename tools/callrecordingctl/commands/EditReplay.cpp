// Replays call records with the rules before and after an edit.

#include "commands/EditReplay.h"

#include "commands/RunReplay.h"

namespace callrecordingctl {

ReplayReport ReplayEdit(CallFiles const& calls, RuleEdit& edit) {
    Replay::Options options;
    options.format = calls.format;
    RulesOverTime const before(edit.Before());
    CountedCalls const counted = RunReplay(calls.paths, before, &edit.After(), options);
    ReplayReport report = counted.apart;
    for (auto const& entry : counted.byEra)
        report.Add(entry.second);
    return report;
}

} // namespace callrecordingctl
