// Saving an edit so that the history has it.

#ifndef ADMINISTRATION_HISTORY_SAVERECORDED_H
#define ADMINISTRATION_HISTORY_SAVERECORDED_H

#include <functional>
#include <string>

#include "administration/history/HistoryEntry.h"

namespace CallRecordingUtils {

/// Calls save, which changes the text of the rule file at path from before to after, and records
/// the edit. Throws what save throws. A history that cannot be written stops no edit: returns why
/// the edit is missing in it, or the empty text if it is not. REQUIRES: as for a HistoryWriter.
std::string SaveRecorded(std::string const& path, EditNote const& note, std::string const& before,
                         std::string const& after, std::function<void()> const& save);

/// The same for edits that must not be made without a record: throws, before save is called, what a
/// history throws that cannot be written. An edit that changes nothing is recorded, too.
void SaveIfRecorded(std::string const& path, EditNote const& note, std::string const& before,
                    std::string const& after, std::function<void()> const& save);

/// Who this process works for, for an EditNote: its user; under sudo, also who called that.
std::string EditorName();

} // namespace CallRecordingUtils

#endif
