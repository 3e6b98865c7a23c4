// The edits of the rule file. Each one states its check, its walk and its change; opening, saving
// and failing are the same for all.

#include <algorithm>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <utility>

#include <StringUtils.h>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/DecimalNumber.h"
#include "database/RuleFile.h"
#include "database/RuleFilePath.h"
#include "database/Trace.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

/// Runs an edit. Whatever it throws becomes the trace line failure and the result false.
template <typename Edit>
bool RunEdit(char const* failure, Edit edit) {
    try {
        return edit();
    } catch (...) {
        Trace(kTraceFailure, failure);
        return false;
    }
}

constexpr char kSaveSelectedFailed[] = "Save currently selected call recording rule failed\n";
constexpr char kRemovingFailed[] = "Removing recording rule failed\n";

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

/// The sides of the current section; a key that it lacks reads as the empty text, or 0.
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

void DeleteCurrent(RuleFile& file) {
    file.File().DeleteSection();
    file.Save();
}

/// Moves to the neighbouring section. Returns whether there is one.
bool GotoNeighbour(RuleFile& file, bool up) {
    return (up ? file.File().GotoPreviousSection() : file.File().GotoNextSection()) != 0;
}

/// Returns whether the neighbour of the current section carries the identifier id; the cursor ends
/// where it was.
bool HasNeighbour(RuleFile& file, bool up, std::int32_t id) {
    bool const found = GotoNeighbour(file, up) && file.Reader().ReadId() == id;
    GotoNeighbour(file, !up);
    return found;
}

/// The listed rule with the identifier id and its neighbour above or below; null where there is
/// none.
struct ListedPair {
    CallRecordingRuleParams* moved;
    CallRecordingRuleParams* neighbour;
};

ListedPair FindPair(std::list<CallRecordingRuleParams*> const& list, std::int32_t id, bool up) {
    for (auto at = list.begin(); at != list.end(); ++at) {
        if (*at == nullptr || (*at)->callrecordingrule_id != id)
            continue;
        auto const next = std::next(at);
        if (up)
            return {*at, at == list.begin() ? nullptr : *std::prev(at)};
        return {*at, next == list.end() ? nullptr : *next};
    }
    return {nullptr, nullptr};
}

/// Sets rule in the current section. A failure is reported as SaveSelectedRule's; some of the
/// entries may be set then.
bool TrySet(Configuration::MultiSectionFile& file, CallRecordingRuleParams const* rule) {
    return RunEdit(
        kSaveSelectedFailed,
        [&] {
            if (rule == nullptr)
                throw std::invalid_argument("there is no rule to save");
            SetEntries(file, RuleEntries(*rule));
            return true;
        });
}

/// Saves file. A failure is reported as SaveSelectedRule's.
bool TrySave(Configuration::MultiSectionFile& file) {
    return RunEdit(
        kSaveSelectedFailed,
        [&] {
            file.Save(true, nullptr);
            return true;
        });
}

/// Gives the first rule that mirrors previous the recording settings of rule.
void UpdateTwin(RuleFile& file, CallRecordingRuleParams const& previous,
                CallRecordingRuleParams const& rule) {
    RuleSides const twin = Crossed(SidesOf(previous));
    if (!file.Find([&](SectionReader& section) { return ReadSides(section).View() == twin; }))
        return;
    SetEntries(file.File(), RecordingSettings(rule));
    file.Save();
}

} // namespace

bool CCallRecordingDB::SaveSelectedRule(Configuration::MultiSectionFile* file,
                                        CallRecordingRuleParams const* rule) {
    return file == nullptr || (TrySet(*file, rule) && TrySave(*file));
}

std::int32_t CCallRecordingDB::GenerateRuleID(Configuration::MultiSectionFile* file) {
    SectionReader reader(*file);
    std::int32_t greatest = -1;
    file->Restart();
    while (file->GotoNextSection() != 0)
        greatest = std::max(greatest, reader.ReadId());
    if (greatest == std::numeric_limits<std::int32_t>::max())
        throw std::overflow_error("no identifier is left behind 2147483647");
    return greatest + 1;
}

bool CCallRecordingDB::AddRule(CallRecordingRuleParams* rule) {
    if (rule == nullptr || !mIsLoaded)
        return false;
    return RunEdit("Adding new call recording rule failed\n", [&] {
        RuleFile file(RuleFilePath());
        rule->callrecordingrule_id = GenerateRuleID(&file.File());
        file.File().Restart();
        return file.File().AddSection(false) != 0 && SaveSelectedRule(&file.File(), rule);
    });
}

bool CCallRecordingDB::ModifyRule(CallRecordingRuleParams const* rule, bool updateTwin) {
    if (rule == nullptr || !mIsLoaded)
        return true;
    return RunEdit("Save call recording rule failed\n", [&] {
        RuleFile file(RuleFilePath());
        if (!file.Find(HasId(rule->callrecordingrule_id)))
            return true;
        CallRecordingRuleParams previous;
        if (updateTwin)
            GetCurrentSection(&file.File(), previous);
        bool const isSet = TrySet(file.File(), rule);
        bool const isSaved = isSet && TrySave(file.File());
        if (updateTwin && isSet) {
            UpdateTwin(file, previous, *rule);
        } else if (updateTwin) {
            // The save for the twin must not take a rule along that is only half set.
            RuleFile unchanged(RuleFilePath());
            UpdateTwin(unchanged, previous, *rule);
        }
        return isSaved;
    });
}

bool CCallRecordingDB::DeleteRule(CallRecordingRuleParams const* rule) {
    if (rule == nullptr)
        return true;
    return RunEdit(kRemovingFailed, [&] {
        RuleSides const own = SidesOf(*rule);
        RuleSides const twin = Crossed(own);
        bool ownDeleted = false;
        bool twinDeleted = false;
        RuleFile file(RuleFilePath());
        while (file.Next()) {
            StoredSides const stored = ReadSides(file.Reader());
            RuleSides const sides = stored.View();
            char const* const id = file.Reader().Read(KEY_CALLRECORDINGRULE_ID);
            if (id == nullptr)
                continue; // Nothing of the section is known, and it only looks like a match.
            if (sides == own && ParseDecimal(id) == rule->callrecordingrule_id) {
                DeleteCurrent(file);
                ownDeleted = true;
                // A rule that mirrors itself has no other twin.
                twinDeleted = twinDeleted || own == twin;
            } else if (sides == twin) {
                DeleteCurrent(file);
                twinDeleted = true;
            }
            if (ownDeleted && twinDeleted)
                break;
        }
        return true;
    });
}

bool CCallRecordingDB::DeleteRule(std::string const& ruleId) {
    return RunEdit(
        kRemovingFailed,
        [&] {
            if (!IsRuleId(ruleId))
                return true;
            RuleFile file(RuleFilePath());
            if (file.Find(HasIdText(ruleId)))
                DeleteCurrent(file);
            return true;
        });
}

bool CCallRecordingDB::ReOrderRule(std::string const& ruleId, bool up) {
    return RunEdit(
        "Reordering recording rule failed\n",
        [&] {
            if (!IsRuleId(ruleId))
                return true;
            RuleFile file(RuleFilePath());
            if (!file.Find(HasIdText(ruleId)))
                return true;
            auto const [moved, neighbour] = FindPair(mCallRecordList, ParseDecimal(ruleId), up);
            if (moved == nullptr || neighbour == nullptr ||
                !HasNeighbour(file, up, neighbour->callrecordingrule_id))
                return true;
            std::swap(moved->callrecordingrule_id, neighbour->callrecordingrule_id);
            // Both sections are set before the one save, so the file holds the old order or the
            // new.
            if (TrySet(file.File(), neighbour) && GotoNeighbour(file, up))
                SaveSelectedRule(&file.File(), moved);
            return true;
        });
}

bool CCallRecordingDB::SetRuleState(std::string const& ruleId, bool enable) {
    return RunEdit(
        "Set call recording rule state failed\n",
        [&] {
            if (!IsRuleId(ruleId))
                return false;
            RuleFile file(RuleFilePath());
            CallRecordingRuleParams* const rule = GetSelectedRule(ruleId);
            if (rule == nullptr)
                return true;
            rule->recording_rule_state = enable ? RULE_ENABLED : RULE_DISABLED;
            if (file.Find(HasId(rule->callrecordingrule_id))) {
                SetEntries(file.File(), {StateEntry(enable)});
                file.Save();
            }
            return true;
        });
}

} // namespace CallRecordingUtils
