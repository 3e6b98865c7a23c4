// Writes metrics in the text format of Prometheus.

#include "administration/pull/PullMetrics.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

constexpr char kSuccess[] = "callrecording_pull_success_timestamp_seconds";

std::string Family(char const* name, char const* help, std::string const& labels,
                   std::int64_t value) {
    return fmt::format("# HELP {} {}\n# TYPE {} gauge\n{}{} {}\n", name, help, name, name,
                       labels.empty() ? "" : "{" + labels + "}", value);
}

std::string Label(char const* name, std::string const& value) {
    std::string escaped;
    for (char const c : value)
        escaped += c == '\\' || c == '"' ? std::string{'\\', c} : std::string{c};
    return fmt::format("{}=\"{}\"", name, escaped);
}

/// When a pull last succeeded, by the file that the last one wrote; 0 for never.
std::int64_t LastSuccess(std::string const& path) {
    std::ifstream file(path);
    std::string name;
    std::int64_t seconds = 0;
    for (std::string line; std::getline(file, line);)
        if (line.compare(0, sizeof kSuccess - 1, kSuccess) == 0)
            seconds = std::atoll(line.c_str() + sizeof kSuccess);
    return seconds;
}

std::string Text(PullMetrics const& metrics, std::int64_t success) {
    std::string text =
        Family("callrecording_pull_status",
               "Exit status of the last pull: 0 taken or nothing new, 1 refused, 3 not fetched or "
               "malformed, 4 not saved, 7 a local edit.",
               "", metrics.status) +
        Family("callrecording_pull_timestamp_seconds", "When the last pull ended.", "",
               std::time(nullptr)) +
        Family(kSuccess, "When a pull last ended with status 0; 0 for never.", "", success);
    if (metrics.taken)
        text += Family("callrecording_pull_commit_info",
                       "Always 1; the labels are the commit that was taken last, and its branch.",
                       Label("commit", metrics.taken->commit) + "," +
                           Label("branch", metrics.taken->branch.name),
                       1) +
                Family("callrecording_pull_commit_timestamp_seconds",
                       "When that commit was made, by the clock of whoever made it.", "",
                       metrics.taken->note.seconds) +
                Family("callrecording_pull_taken_timestamp_seconds", "When it was taken.", "",
                       metrics.takenSeconds);
    if (!metrics.digest.empty())
        text += Family("callrecording_file_info",
                       "Always 1; the label is the SHA-256 of the rule file as the last pull left "
                       "it.",
                       Label("digest", metrics.digest), 1);
    return text;
}

} // namespace

void WritePullMetrics(std::string const& path, PullMetrics const& metrics) {
    std::string const file =
        std::filesystem::is_directory(path) ? path + "/callrecording.prom" : path;
    // It need not outlive a loss of power, so nobody waits for the disk. Another pull may end now.
    std::string const unfinished = fmt::format("{}.{}.tmp", file, getpid());
    std::ofstream out(unfinished);
    out << Text(metrics, metrics.status == 0 ? std::time(nullptr) : LastSuccess(file));
    out.close();
    if (!out || std::rename(unfinished.c_str(), file.c_str()) != 0) {
        std::string const reason = std::strerror(errno);
        (void)unlink(unfinished.c_str());
        throw std::runtime_error(file + ": " + reason);
    }
}

} // namespace CallRecordingUtils
