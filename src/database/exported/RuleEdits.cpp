// The prescribed edits of the rule file. Each states its check, which sections it is about, and its
// change; opening, saving and failing are the same for all.

#include <cstddef>
#include <iterator>
#include <list>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <StringUtils.h>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/CancellationHeld.h"
#include "common/DecimalNumber.h"
#include "database/RuleFileEdit.h"
#include "database/exported/Failure.h"
#include "database/exported/RuleFilePath.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

/// Runs an edit. When a step of it fails, the reason is kept in reasons.
template <typename Edit>
bool RunEdit(std::string& reasons, TraceLine failure, Edit edit) {
    CancellationHeld const held;
    reasons.clear();
    return Attempt(reasons, failure, edit);
}

bool IsRuleId(std::string const& text) {
    return StringUtils::IsNumeric(text, false, false);
}

/// Accepts the section whose identifier is the very text ruleId.
auto HasIdText(std::string const& ruleId) {
    return [&ruleId](SectionReader& section) {
        char const* const text = section.Read(KEY_CALLRECORDINGRULE_ID);
        return text != nullptr && ruleId == text;
    };
}

/// Accepts the section whose identifier has the value id.
auto HasId(std::int32_t id) {
    return [id](SectionReader& section) { return section.ReadId() == id; };
}

/// The sides of a section, as the edits compare them: patterns as text, call types as numbers.
struct StoredSides {
    std::string callerPattern;
    std::int32_t callerType;
    std::string calledPattern;
    std::int32_t calledType;

    RuleSides View() const { return {{callerPattern, callerType}, {calledPattern, calledType}}; }
};

/// The sides of a section; a key that it lacks reads as the empty text, or 0.
StoredSides ReadSides(SectionReader& section) {
    auto const text = [&section](RuleFileKeys key) {
        char const* const value = section.Read(key);
        return std::string(value != nullptr ? value : "");
    };
    StoredSides sides;
    sides.callerPattern = text(KEY_CALLER_PATTERN);
    sides.calledPattern = text(KEY_CALLED_PATTERN);
    sides.callerType = ParseDecimal(text(KEY_CALLER_CALL_TYPE));
    sides.calledType = ParseDecimal(text(KEY_CALLED_CALL_TYPE));
    return sides;
}

/// Runs one step of a save. A failure is reported as SaveSelectedRule's.
template <typename Step>
bool AttemptSave(std::string& reasons, Step step) {
    return Attempt(
        reasons, TraceLine::SavingFailed,
        [&step] {
            step();
            return true;
        });
}

/// Gives the first rule that mirrors previous the recording settings of rule. Returns whether there
/// is one.
bool SetTwin(RuleFileEdit& edit, CallRecordingRuleParams const& previous,
             CallRecordingRuleParams const& rule) {
    RuleSides const twin = Crossed(SidesOf(previous));
    std::optional<std::size_t> const place =
        edit.Find([&](SectionReader& section) { return ReadSides(section).View() == twin; });
    if (place)
        edit.Set(*place, RecordingSettings(rule));
    return place.has_value();
}

/// Rewrites the rule at place and brings its twin up to date, in one save.
bool ModifyWithTwin(std::string& reasons, RuleFileEdit& edit, std::size_t place,
                    CallRecordingRuleParams const& rule) {
    CallRecordingRuleParams previous;
    Attempt(
        reasons, TraceLine::LoadingFailed,
        [&] {
            edit.At(place)->ReadRule(previous);
            return true;
        });
    if (!AttemptSave(reasons, [&] { edit.Set(place, rule); })) {
        // The twin is brought up to date all the same, in a file without the half-made change.
        RuleFileEdit unchanged(RuleFilePath());
        if (SetTwin(unchanged, previous, rule))
            unchanged.Save();
        return false;
    }
    bool hasTwin = false;
    try {
        hasTwin = SetTwin(edit, previous, rule);
    } catch (...) {
        // A twin that cannot be looked for does not hold up the rewrite.
        RuleFileEdit alone(RuleFilePath());
        AttemptSave(reasons, [&] {
            alone.Set(place, rule);
            alone.Save();
        });
        throw;
    }
    if (AttemptSave(reasons, [&] { edit.Save(); }))
        return true;
    if (hasTwin)
        Trace(TraceLine::ModifyingFailed); // The save was the twin's as well.
    return false;
}

/// Which sections a deletion by record takes, shown one after the other.
class Deletion {
  public:
    explicit Deletion(CallRecordingRuleParams const& rule)
        : own_(SidesOf(rule)), twin_(Crossed(own_)), id_(rule.callrecordingrule_id) {}

    bool Takes(SectionReader& section) {
        StoredSides const stored = ReadSides(section);
        std::optional<std::int32_t> const id = section.ReadId();
        if (!id)
            return false; // Nothing of the section is known, and it only looks like a match.
        RuleSides const sides = stored.View();
        bool const isOwn = sides == own_ && *id == id_;
        bool const isTwin = !isOwn && sides == twin_;
        ownTaken_ = ownTaken_ || isOwn;
        // A rule that mirrors itself has no other twin.
        twinTaken_ = twinTaken_ || isTwin || (isOwn && own_ == twin_);
        return isOwn || isTwin;
    }

    bool IsComplete() const { return ownTaken_ && twinTaken_; }

  private:
    RuleSides own_;
    RuleSides twin_;
    std::int32_t id_;
    bool ownTaken_ = false;
    bool twinTaken_ = false;
};

/// The listed rule with the identifier id, and behind it the count ones above or below it in their
/// order; empty when there are not so many.
std::vector<CallRecordingRuleParams*> ListedRun(std::list<CallRecordingRuleParams*> const& list,
                                                std::int32_t id, bool up, std::size_t count) {
    auto at = list.begin();
    while (at != list.end() && (*at == nullptr || (*at)->callrecordingrule_id != id))
        ++at;
    std::vector<CallRecordingRuleParams*> run;
    while (at != list.end() && *at != nullptr && run.size() <= count) {
        run.push_back(*at);
        if (up && at == list.begin())
            break;
        std::advance(at, up ? -1 : 1);
    }
    if (run.size() <= count)
        run.clear();
    return run;
}

/// Returns whether the sections from place on, up or down, carry the identifiers of run, so that
/// moving one past the others moves what the caller sees in the list.
bool IsRunInFile(RuleFileEdit& edit, std::size_t place, bool up,
                 std::vector<CallRecordingRuleParams*> const& run) {
    for (CallRecordingRuleParams const* const rule : run) {
        SectionReader* const section = edit.At(place);
        if (section == nullptr || section->ReadId() != rule->callrecordingrule_id)
            return false;
        place += up ? static_cast<std::size_t>(-1) : 1;
    }
    return !run.empty();
}

/// In memory the identifiers follow the rules: the first of run takes over the last one's place.
void MoveIds(std::vector<CallRecordingRuleParams*> const& run) {
    for (std::size_t next = 1; next < run.size(); ++next)
        std::swap(run.front()->callrecordingrule_id, run[next]->callrecordingrule_id);
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
            return AttemptSave(
                mLastFailure,
                [&] {
                    edit.SetAdded(*rule);
                    edit.Save();
                });
        });
}

bool CCallRecordingDB::ModifyRule(CallRecordingRuleParams const* rule, bool updateTwin) {
    return RunEdit(
        mLastFailure, TraceLine::ModifyingFailed,
        [&] {
            if (rule == nullptr || !mIsLoaded)
                return true;
            RuleFileEdit edit(RuleFilePath());
            std::optional<std::size_t> const place = edit.Find(HasId(rule->callrecordingrule_id));
            if (!place)
                return true;
            if (updateTwin)
                return ModifyWithTwin(mLastFailure, edit, *place, *rule);
            return AttemptSave(
                mLastFailure,
                [&] {
                    edit.Set(*place, *rule);
                    edit.Save();
                });
        });
}

bool CCallRecordingDB::DeleteRule(CallRecordingRuleParams const* rule) {
    return RunEdit(
        mLastFailure, TraceLine::RemovingFailed,
        [&] {
            if (rule == nullptr)
                return true;
            RuleFileEdit edit(RuleFilePath());
            Deletion deletion(*rule);
            bool hasChanged = false;
            try {
                for (std::size_t place = 0; !deletion.IsComplete();) {
                    SectionReader* const section = edit.At(place);
                    if (section == nullptr)
                        break;
                    if (deletion.Takes(*section)) {
                        edit.Delete(place);
                        hasChanged = true;
                    } else {
                        ++place;
                    }
                }
            } catch (...) {
                if (hasChanged)
                    edit.Save(); // What was deleted before the failure stays deleted.
                throw;
            }
            if (hasChanged)
                edit.Save();
            return true;
        });
}

bool CCallRecordingDB::DeleteRule(std::string const& ruleId) {
    return RunEdit(
        mLastFailure, TraceLine::RemovingFailed,
        [&] {
            if (!IsRuleId(ruleId))
                return true;
            RuleFileEdit edit(RuleFilePath());
            if (std::optional<std::size_t> const place = edit.Find(HasIdText(ruleId))) {
                edit.Delete(*place);
                edit.Save();
            }
            return true;
        });
}

bool CCallRecordingDB::ReOrderRule(std::string const& ruleId, bool up) {
    return RunEdit(
        mLastFailure, TraceLine::ReorderingFailed,
        [&] {
            if (!IsRuleId(ruleId))
                return true;
            RuleFileEdit edit(RuleFilePath());
            std::optional<std::size_t> const from = edit.Find(HasIdText(ruleId));
            auto const run = ListedRun(mCallRecordList, ParseDecimal(ruleId), up, 1);
            if (!from || !IsRunInFile(edit, *from, up, run))
                return true;
            MoveIds(run);
            AttemptSave(
                mLastFailure,
                [&] {
                    edit.Move(*from, up ? *from - 1 : *from + 1);
                    edit.Save();
                });
            return true;
        });
}

bool CCallRecordingDB::MoveRule(std::string const& ruleId, std::size_t place) {
    return RunEdit(
        mLastFailure, TraceLine::ReorderingFailed,
        [&] {
            RuleFileEdit edit(RuleFilePath());
            std::optional<std::size_t> const from =
                IsRuleId(ruleId) ? edit.Find(HasIdText(ruleId)) : std::nullopt;
            if (!from)
                throw std::invalid_argument("no rule has the identifier \"" + ruleId + "\"");
            if (edit.At(place) == nullptr)
                throw std::out_of_range("there is no rule at place " + std::to_string(place));
            bool const up = place < *from;
            std::size_t const count = up ? *from - place : place - *from;
            auto const run = ListedRun(mCallRecordList, ParseDecimal(ruleId), up, count);
            if (!IsRunInFile(edit, *from, up, run))
                throw std::runtime_error(
                    "the rules in memory are not those of the file; reload them");
            if (count == 0)
                return true;
            edit.Move(*from, place);
            edit.Save();
            MoveIds(run);
            return true;
        });
}

bool CCallRecordingDB::SetRuleState(std::string const& ruleId, bool enable) {
    return RunEdit(
        mLastFailure, TraceLine::StateFailed,
        [&] {
            if (!IsRuleId(ruleId)) {
                KeepReason(mLastFailure, ("\"" + ruleId + "\" is no identifier").c_str());
                return false;
            }
            RuleFileEdit edit(RuleFilePath());
            CallRecordingRuleParams* const rule = FindRecord(ruleId);
            if (rule == nullptr)
                return true;
            rule->recording_rule_state = enable ? RULE_ENABLED : RULE_DISABLED;
            std::optional<std::size_t> const place = edit.Find(HasId(rule->callrecordingrule_id));
            if (place) {
                edit.Set(*place, {StateEntry(enable)});
                edit.Save();
            }
            return true;
        });
}

} // namespace CallRecordingUtils
