// Adds a rule, changes it, switches it off and on, moves it to the front, and deletes it again,
// while no other editor comes between. Usage: edit_rules DIRECTORY (which stays as it is: the edits
// are made to a copy)

#include <algorithm>
#include <iostream>
#include <string>

#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CRuleFileLock.h>
#include <callrecordingutils/PatternValidation.h>

#include "SampleCopy.h"

using namespace CallRecordingUtils;

namespace {

/// Turns a pattern as people write it into the form that is stored and matched.
bool ToStored(std::string& pattern) {
    if (IsPatternIncorrect(pattern)) // Replaces the escapes as well.
        return false;
    std::replace(pattern.begin(), pattern.end(), '{', '<');
    std::replace(pattern.begin(), pattern.end(), '}', '>');
    return true;
}

bool Edit(CCallRecordingDB& database) {
    CallRecordingRuleParams rule;
    rule.caller_pattern = "*"; // Of any call type, as all new records.
    rule.called_pattern = "0900{00-99}";
    rule.called_call_type = CALL_TYPE_NUMBER;
    if (!ToStored(rule.called_pattern) || !database.AddRule(&rule))
        return false;
    rule.record_to = "archive:/premium";
    if (!database.ModifyRule(&rule, false) || !database.Reload())
        return false;

    std::string const id = std::to_string(rule.callrecordingrule_id);
    CallRecordingRuleParams listed;
    if (!database.CopyRule(id, listed) || listed.record_to != rule.record_to ||
        !database.SetRuleState(id, false) || !database.SetRuleState(id, true))
        return false;

    // Each rule on the way takes over the identifier of its new place.
    bool const isSaved = database.MoveRule(id, 0);
    std::string newId = id;
    database.VisitRules([&](CallRecordingRuleParams const& moved) {
        if (moved.called_pattern == rule.called_pattern)
            newId = std::to_string(moved.callrecordingrule_id);
    });
    if (!isSaved || newId == id || !database.Reload())
        return false;
    return database.DeleteRule(newId) && database.Reload() &&
           !database.Find("*", rule.called_pattern);
}

} // namespace

int main(int, char** argv) {
    SampleCopy const copy(argv[1]);
    CCallRecordingDB* const database = CCallRecordingDB::GetInstance(false, false);
    std::string failure;
    {
        CRuleFileLock const lock(5000);
        if (!lock.IsHeld())
            failure = lock.GetFailure();
        else if (!database->Load() || !Edit(*database)) // Loaded under the lock: nothing is stale.
            failure = "an edit failed: " + database->GetLastFailure();
    }
    CCallRecordingDB::CloseInstance(); // The records are gone with the last reference.
    std::cout << (failure.empty() ? "all edits done" : failure) << "\n";
    return failure.empty() ? 0 : 1;
}
