// Says who edits with which command.

#include "commands/RecordEdit.h"

#include <cstdlib>

#include "administration/history/SaveRecorded.h"

namespace callrecordingctl {

void SaveAndRecord(RuleEdit& edit, Context const& context,
                   std::optional<std::string> const& message) {
    char const* const usual = std::getenv("CALLRECORDINGCTL_MESSAGE");
    EditNote note;
    note.user = EditorName();
    note.command = context.line;
    note.message = message ? *message : usual != nullptr ? usual : "";
    note.undone = static_cast<std::int64_t>(edit.Undone());
    std::string const reason = SaveRecorded(edit.Path(), note, edit.TextBefore(), edit.TextAfter(),
                                            [&edit] { edit.Save(); });
    if (!reason.empty())
        Say("the edit was saved, but it is missing in the history: {}", reason);
}

} // namespace callrecordingctl
