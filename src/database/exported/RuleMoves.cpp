// The two edits that change the order of the rules.

#include <cstddef>
#include <iterator>
#include <list>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/DecimalNumber.h"
#include "database/exported/EditSteps.h"
#include "database/exported/RuleFilePath.h"

namespace CallRecordingUtils {
namespace {

/// Returns the listed rule with the identifier id, followed by the count rules above or below it,
/// nearest first; nothing when the list has fewer.
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

/// Returns whether the sections from place on, going up or down, have the identifiers of run: only
/// then does a move in the file move what the caller sees in the list.
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

/// Passes the identifiers on in memory as the move does in the file: the first rule of run takes
/// the last one's, and every other rule that of the rule before it.
void MoveIds(std::vector<CallRecordingRuleParams*> const& run) {
    for (std::size_t next = 1; next < run.size(); ++next)
        std::swap(run.front()->callrecordingrule_id, run[next]->callrecordingrule_id);
}

} // namespace

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
            auto const save = [&] {
                edit.Move(*from, up ? *from - 1 : *from + 1);
                edit.Save();
            };
            AttemptSave(mLastFailure, save);
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
                throw std::runtime_error("the rules in memory differ from the file; reload them");
            if (count == 0)
                return true;
            edit.Move(*from, place);
            edit.Save();
            MoveIds(run);
            return true;
        });
}

} // namespace CallRecordingUtils
