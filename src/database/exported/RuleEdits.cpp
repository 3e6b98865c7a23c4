// The edits that write a rule: saving, adding, modifying, enabling and disabling.

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <callrecordingutils/CCallRecordingDB.h>

#include "database/exported/EditSteps.h"
#include "database/exported/RuleFilePath.h"
#include "database/exported/StoredSides.h"

namespace CallRecordingUtils {
namespace {

/// How far the rewrite of a section came.
enum class Rewritten { InPart, Unsaved, Saved };

/// Writes rule into the section at place, and saves.
Rewritten Rewrite(std::string& reasons, RuleFileEdit& edit, std::size_t place,
                  CallRecordingRuleParams const& rule) {
    if (!AttemptSave(reasons, [&] { edit.Set(place, rule); }))
        return Rewritten::InPart;
    return AttemptSave(reasons, [&] { edit.Save(); }) ? Rewritten::Saved : Rewritten::Unsaved;
}

/// Reads the rule at place. A failure is traced; the fields that were not read then have the
/// values of a new record.
CallRecordingRuleParams ReadPrevious(std::string& reasons, RuleFileEdit& edit, std::size_t place) {
    CallRecordingRuleParams previous;
    Attempt(reasons, TraceLine::LoadingFailed, [&] {
        edit.At(place)->ReadRule(previous);
        return true;
    });
    return previous;
}

/// Gives the first section that mirrors previous the recording settings of rule, and saves.
void UpdateTwin(RuleFileEdit& edit, CallRecordingRuleParams const& previous,
                CallRecordingRuleParams const& rule) {
    RuleSides const twin = Crossed(SidesOf(previous));
    auto const place =
        edit.Find([&](SectionReader& section) { return StoredSides(section) == twin; });
    if (!place)
        return;
    edit.Set(*place, RecordingSettings(rule));
    edit.Save();
}

/// Rewrites the rule at place, then updates its twin, each with a save of its own. Returns whether
/// the rewrite was saved; the twin is updated in any case.
bool ModifyPair(std::string& reasons, std::optional<RuleFileEdit>& edit, std::size_t place,
                CallRecordingRuleParams const& rule) {
    CallRecordingRuleParams const previous = ReadPrevious(reasons, *edit, place);
    Rewritten const rewritten = Rewrite(reasons, *edit, place, rule);
    if (rewritten == Rewritten::InPart)
        edit.emplace(RuleFilePath()); // The twin's save must not write half a rule.
    UpdateTwin(*edit, previous, rule);
    return rewritten == Rewritten::Saved;
}

} // namespace

bool CCallRecordingDB::SaveSelectedRule(Configuration::MultiSectionFile* file,
                                        CallRecordingRuleParams const* rule) {
    if (file == nullptr)
        return true;
    return RunEdit(mLastFailure, TraceLine::SavingFailed, [&] {
        if (rule == nullptr)
            throw std::invalid_argument("there is no rule to save");
        SetEntries(*file, RuleEntries(*rule));
        file->Save(true, nullptr);
        return true;
    });
}

std::int32_t CCallRecordingDB::GenerateRuleID(Configuration::MultiSectionFile* file) {
    return NextRuleId(*file);
}

bool CCallRecordingDB::AddRule(CallRecordingRuleParams* rule) {
    return RunEdit(
        mLastFailure, TraceLine::AddingFailed,
        [&] {
            if (rule == nullptr || !mIsLoaded) {
                KeepReason(mLastFailure, rule == nullptr ? "there is no rule to add"
                                                         : "no rules have been loaded");
                return false;
            }
            RuleFileEdit edit(RuleFilePath());
            rule->callrecordingrule_id = edit.NextId();
            if (!edit.AddSection()) {
                KeepReason(mLastFailure, "no section can be added");
                return false;
            }
            auto const save = [&] {
                edit.SetAdded(*rule);
                edit.Save();
            };
            return AttemptSave(mLastFailure, save);
        });
}

bool CCallRecordingDB::ModifyRule(CallRecordingRuleParams const* rule, bool updateTwin) {
    return RunEdit(
        mLastFailure, TraceLine::ModifyingFailed,
        [&] {
            if (rule == nullptr || !mIsLoaded)
                return true;
            std::optional<RuleFileEdit> edit(std::in_place, RuleFilePath());
            auto const place = edit->Find(HasId(rule->callrecordingrule_id));
            if (!place)
                return true;
            return updateTwin ? ModifyPair(mLastFailure, edit, *place, *rule)
                              : Rewrite(mLastFailure, *edit, *place, *rule) == Rewritten::Saved;
        });
}

bool CCallRecordingDB::SetRuleState(std::string const& ruleId, bool enable) {
    return RunEdit(
        mLastFailure, TraceLine::StateFailed,
        [&] {
            if (!IsRuleId(ruleId)) {
                KeepReason(mLastFailure, ("\"" + ruleId + "\" is not an identifier").c_str());
                return false;
            }
            RuleFileEdit edit(RuleFilePath());
            CallRecordingRuleParams* const rule = FindRecord(ruleId);
            if (rule == nullptr)
                return true;
            rule->recording_rule_state = enable ? RULE_ENABLED : RULE_DISABLED;
            if (auto const place = edit.Find(HasId(rule->callrecordingrule_id))) {
                edit.Set(*place, {StateEntry(enable)});
                edit.Save();
            }
            return true;
        });
}

} // namespace CallRecordingUtils
