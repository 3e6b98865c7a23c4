// A database that a killed process left in the middle of a change, for those who may not write it.

#ifndef ADMINISTRATION_HISTORY_HOTJOURNAL_H
#define ADMINISTRATION_HISTORY_HOTJOURNAL_H

#include <string>

namespace CallRecordingUtils {

/// Returns the bytes that the database file had before the change that its rollback journal
/// describes; those that it has, if there is no journal. SQLite itself undoes such a change only
/// where it may write the file and remove the journal. Throws a std::exception that names the file
/// that cannot be read.
std::string ReadBeforeJournal(std::string const& file);

} // namespace CallRecordingUtils

#endif
