// What happened to each rule between two lists.

#ifndef ADMINISTRATION_EDIT_CHANGES_H
#define ADMINISTRATION_EDIT_CHANGES_H

#include <cstddef>
#include <vector>

#include "administration/edit/Origins.h"

namespace CallRecordingUtils {

/// One rule before and after an edit, with its positions; null if it is new or deleted.
struct Change {
    Rule const* before = nullptr;
    std::size_t beforePosition = 0;
    Rule const* after = nullptr;
    std::size_t afterPosition = 0;
    bool isMeant = false; ///< The edit is about this rule; others only made room for it.
};

/// The changes that lead from one list to the other. They borrow the rules of both.
std::vector<Change> ChangesBetween(RuleList const& before, RuleList const& after);

} // namespace CallRecordingUtils

#endif
