// Folders of call files.

#ifndef RECORDS_READING_CALLFILES_H
#define RECORDS_READING_CALLFILES_H

#include <string>
#include <vector>

namespace CallRecordingUtils {

/// Returns paths with, in the place of each folder, the files in it and in the folders within, by
/// their names; those whose names begin with "." are left out. Throws an Error if there are none in
/// a folder, or if it cannot be read.
std::vector<std::string> CallFilesIn(std::vector<std::string> const& paths);

} // namespace CallRecordingUtils

#endif
