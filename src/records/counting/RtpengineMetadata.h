// The metadata that rtpengine writes about a recorded call with its recording method "pcap": a text
// whose first line is the path of the recording.

#ifndef RECORDS_COUNTING_RTPENGINEMETADATA_H
#define RECORDS_COUNTING_RTPENGINEMETADATA_H

#include <filesystem>

namespace CallRecordingUtils {

/// Whether a file is one that holds something: a pcap file has more than its header, which
/// rtpengine writes before any packet comes. Throws a filesystem_error if that cannot be told.
bool HoldsRecording(std::filesystem::path const& file);

bool HasNameOfMetadata(std::filesystem::path const& file);

/// Whether the metadata names a recording that is not there, or holds nothing. It is looked for at
/// its path and, since folders are moved, in the folder pcaps beside that of the metadata. False
/// for metadata that names none in the form above. Throws a filesystem_error.
bool HasLostItsRecording(std::filesystem::path const& metadata);

} // namespace CallRecordingUtils

#endif
