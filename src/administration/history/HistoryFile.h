// The file of the history: beside the rule file, and only for those who may have the rules.

#ifndef ADMINISTRATION_HISTORY_HISTORYFILE_H
#define ADMINISTRATION_HISTORY_HISTORYFILE_H

#include <cstdint>
#include <string>

namespace CallRecordingUtils {

/// The path of the history of the rule file at ruleFile.
std::string HistoryPath(std::string const& ruleFile);

/// Returns whether there is a history. Throws a std::exception that names the file and the reason
/// if what is there is refused: a symbolic link, a file with more than one name, one that is not
/// regular, and one that belongs to neither the owner nor the group of the rule file. Somebody else
/// put that there, and it would be given away.
bool HasHistoryFile(std::string const& ruleFile);

/// Creates the file if it is missing, and gives it owner, group and mode of the rule file, as far
/// as this process may do that. Throws as HasHistoryFile does. REQUIRES: no connection to the
/// database is open in this process, whose locks this would release.
void PrepareHistoryFile(std::string const& ruleFile);

/// When the rule file was last changed or replaced, in seconds since 1970. Not the date that the
/// file carries, which a copy takes along.
std::int64_t ChangeTimeOf(std::string const& ruleFile);

} // namespace CallRecordingUtils

#endif
