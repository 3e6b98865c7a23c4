// Finds the recordings of a call in a folder.

#ifndef RECORDS_COUNTING_RECORDINGFOLDER_H
#define RECORDS_COUNTING_RECORDINGFOLDER_H

#include <string>
#include <string_view>

#include "records/counting/NameIndex.h"
#include "records/counting/Reconciliation.h"

namespace CallRecordingUtils {

/// Any number of threads may ask at once.
class RecordingFolder {
  public:
    /// Looks at the files in the folder and in all folders within. Empty files are no recordings,
    /// nor is metadata of rtpengine whose recording is not there. Throws an Error that names what
    /// cannot be read.
    explicit RecordingFolder(std::string const& path);

    /// Whether the name of a recording, or of metadata with one, holds id; Lost where only that of
    /// metadata without one does.
    WasRecorded WasCallRecorded(std::string_view id) const;

  private:
    NameIndex recordings_;
    NameIndex lost_; // Metadata whose recording is not there.
};

} // namespace CallRecordingUtils

#endif
