/// @file
/// An edit: the rules that it leads to, and the operations of the library that lead there.

#ifndef CALLRECORDINGCTL_EDITPLAN_H
#define CALLRECORDINGCTL_EDITPLAN_H

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "Commands.h"

namespace callrecordingctl {

/// A rule of the list after the edit, and its index in the list before; none for a rule that is
/// new.
struct PlannedRule {
    Rule rule;
    std::optional<std::size_t> origin;
};

/// One operation of the library, and the rule that must stand at an index once it is done.
struct Step {
    std::function<bool(CallRecordingUtils::CCallRecordingDB&)> run;
    std::optional<std::size_t> index;
    Rule expected;
};

struct Plan {
    std::vector<PlannedRule> after;
    std::vector<Step> steps;
    std::size_t subject = 0; ///< The index in after of the rule that the edit is about.
};

/// Works out a plan from the rules as they are. Throws a Failure when the edit is not possible.
using Planner = std::function<Plan(RuleList const&)>;

/// Takes the lock, reads the file, plans, runs the steps, and makes sure that the file then holds
/// what was planned; prints what changed. A dry run reads, plans and prints, and writes nothing.
ExitCode RunEdit(EditOptions const& options, Planner const& planner);

} // namespace callrecordingctl

#endif
