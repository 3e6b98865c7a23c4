// The two edits that delete rules: by record, the mirrored twin along with it, and by identifier.

#include <cstdint>
#include <optional>
#include <string>

#include <callrecordingutils/CCallRecordingDB.h>

#include "database/exported/EditSteps.h"
#include "database/exported/RuleFilePath.h"
#include "database/exported/StoredSides.h"

namespace CallRecordingUtils {
namespace {

/// Decides which sections a deletion by record removes; it is shown one after the other.
class Deletion {
  public:
    explicit Deletion(CallRecordingRuleParams const& rule)
        : own_(SidesOf(rule)), twin_(Crossed(own_)), id_(rule.callrecordingrule_id) {}

    /// Returns whether section is to be deleted.
    bool Takes(SectionReader& section) {
        StoredSides const sides(section);
        bool const looksLikeOwn = sides == own_;
        bool const looksLikeTwin = sides == twin_;
        if (!looksLikeOwn && !looksLikeTwin)
            return false;
        std::optional<std::int32_t> const id = section.ReadId();
        if (!id)
            return false; // The buffer is not usable, and what was read above is no value either.
        bool const isOwn = looksLikeOwn && *id == id_;
        bool const isTwin = looksLikeTwin && !isOwn;
        isOwnDeleted_ = isOwnDeleted_ || isOwn;
        // A rule that mirrors itself has no other twin.
        isTwinDeleted_ = isTwinDeleted_ || isTwin || (isOwn && looksLikeTwin);
        return isOwn || isTwin;
    }

    /// Whether both the rule and a twin have been deleted, so that no more are looked for.
    bool IsComplete() const { return isOwnDeleted_ && isTwinDeleted_; }

  private:
    RuleSides own_;
    RuleSides twin_;
    std::int32_t id_;
    bool isOwnDeleted_ = false;
    bool isTwinDeleted_ = false;
};

} // namespace

bool CCallRecordingDB::DeleteRule(CallRecordingRuleParams const* rule) {
    return RunEdit(
        mLastFailure, TraceLine::RemovingFailed,
        [&] {
            if (rule == nullptr)
                return true;
            RuleFileEdit edit(RuleFilePath());
            Deletion deletion(*rule);
            std::size_t place = 0;
            while (!deletion.IsComplete()) {
                SectionReader* const section = edit.At(place);
                if (section == nullptr)
                    break;
                if (!deletion.Takes(*section)) {
                    ++place;
                    continue;
                }
                edit.Delete(place);
                edit.Save(); // Each by itself: what is deleted stays so when a later step fails.
            }
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

} // namespace CallRecordingUtils
