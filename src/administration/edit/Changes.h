// What became of the rules of one list in another.

#ifndef ADMINISTRATION_EDIT_CHANGES_H
#define ADMINISTRATION_EDIT_CHANGES_H

#include <cstddef>
#include <vector>

#include "administration/edit/Origins.h"

namespace CallRecordingUtils {

/// One rule before and after an edit, with its positions; null where it is new or deleted.
struct Change {
    Rule const* before = nullptr;
    std::size_t beforePosition = 0;
    Rule const* after = nullptr;
    std::size_t afterPosition = 0;
    bool isMeant = false; ///< The edit is about this rule; others only made room.
};

/// Whether a rule that kept its order and its fields, the identifier aside, is meant: no.
bool OnlyMadeRoom(Rule const& before, Rule const& after);

/// The changes that lead from one list to the other. They borrow the rules of both.
std::vector<Change> ChangesBetween(RuleList const& before, RuleList const& after);

} // namespace CallRecordingUtils

#endif
