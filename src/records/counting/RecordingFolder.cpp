// Sorts files into recordings and metadata that has lost its recording.

#include "records/counting/RecordingFolder.h"

#include <filesystem>

#include <fmt/format.h>

#include "common/Error.h"
#include "records/counting/RtpengineMetadata.h"
#include "records/reading/CallFiles.h"

namespace CallRecordingUtils {

namespace fs = std::filesystem;

RecordingFolder::RecordingFolder(std::string const& path) {
    try {
        VisitFolder(
            path, true,
            [this](fs::directory_entry const& entry) {
                if (!entry.is_regular_file())
                    return;
                fs::path const& file = entry.path();
                if (HasNameOfMetadata(file) && HasLostItsRecording(file))
                    lost_.Add(file.filename().string());
                else if (HoldsRecording(file))
                    recordings_.Add(file.filename().string());
            });
    } catch (fs::filesystem_error const& error) {
        throw Error(Error::Kind::Unreadable,
                    fmt::format("{}: cannot be read: {}",
                                error.path1().empty() ? path : error.path1().string(),
                                error.code().message()));
    }
    recordings_.Sort();
    lost_.Sort();
}

WasRecorded RecordingFolder::WasCallRecorded(std::string_view id) const {
    return recordings_.HasNameWith(id) ? WasRecorded::Yes
           : lost_.HasNameWith(id)     ? WasRecorded::Lost
                                       : WasRecorded::No;
}

} // namespace CallRecordingUtils
