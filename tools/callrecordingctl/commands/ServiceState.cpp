// Compares digests, and the paths of rule files.

#include "commands/ServiceState.h"

#include <filesystem>

#include <host/AtomicFile.h>

#include "administration/inspection/Digest.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

/// A rule file may be missing; its directory is the same all the same.
bool IsSameFile(fs::path const& one, fs::path const& other) {
    std::error_code error;
    return one == other || fs::equivalent(one, other, error) ||
           (one.filename() == other.filename() &&
            fs::equivalent(one.parent_path(), other.parent_path(), error));
}

} // namespace

std::string DigestOfFile(std::string const& path) {
    return DigestOf(HostPlatform::ReadFile(path).text);
}

ServiceState StateOf(AskedService const& service, std::string const& path,
                     std::string const& digest) {
    if (!service.report)
        return ServiceState::Silent;
    ServiceReport const& report = *service.report;
    if (!IsSameFile(report.file, path))
        return ServiceState::OtherFile;
    if (!report.digest)
        return ServiceState::NoRules;
    return *report.digest == digest ? ServiceState::Current : ServiceState::Old;
}

} // namespace callrecordingctl
