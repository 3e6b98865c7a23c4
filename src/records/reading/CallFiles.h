// Folders of call files.

#ifndef RECORDS_READING_CALLFILES_H
#define RECORDS_READING_CALLFILES_H

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace CallRecordingUtils {

/// Returns paths with, in the place of each folder, the files in it and in the folders within, by
/// their names; those whose names begin with "." are left out, as are pipes and devices. Throws an
/// Error if there are none in a folder, or if it cannot be read.
std::vector<std::string> CallFilesIn(std::vector<std::string> const& paths);

using VisitFile = std::function<void(std::filesystem::directory_entry const& file)>;

/// Visits all but the folders in a folder and in those within, also where links lead to one; each
/// folder once. Those whose names begin with "." only withHidden. Throws a filesystem_error.
void VisitFolder(std::string const& folder, bool withHidden, VisitFile const& visit);

} // namespace CallRecordingUtils

#endif
