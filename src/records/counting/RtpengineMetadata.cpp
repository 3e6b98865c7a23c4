// Reads the first line of metadata, and looks for the recording.

#include "records/counting/RtpengineMetadata.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string>
#include <system_error>

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;

constexpr char kSuffix[] = ".pcap";

/// The path in the first line; empty if there is none.
fs::path NamedRecording(fs::path const& metadata) {
    std::string line;
    std::ifstream file(metadata);
    if (!file)
        throw fs::filesystem_error("open", metadata,
                                   std::error_code(errno, std::generic_category()));
    std::getline(file, line);
    fs::path const named = line;
    return named.is_absolute() && named.extension() == kSuffix ? named : fs::path();
}

} // namespace

bool HoldsRecording(fs::path const& file) {
    std::error_code error;
    if (!fs::exists(file, error) && !error)
        return false;
    constexpr std::uintmax_t kHeaderOfPcap = 24;
    return fs::file_size(file) > (file.extension() == kSuffix ? kHeaderOfPcap : 0);
}

bool HasNameOfMetadata(fs::path const& file) {
    return file.filename().string().rfind("rtpengine-meta-", 0) == 0;
}

bool HasLostItsRecording(fs::path const& metadata) {
    fs::path const named = NamedRecording(metadata);
    return !named.empty() && !HoldsRecording(named) &&
           !HoldsRecording(metadata.parent_path().parent_path() / "pcaps" / named.filename());
}

} // namespace CallRecordingUtils
