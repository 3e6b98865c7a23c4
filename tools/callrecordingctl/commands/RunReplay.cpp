// Runs a replay between its preparation and its end.

#include "commands/RunReplay.h"

#include <filesystem>

#include <fmt/format.h>

#include "output/Progress.h"
#include "records/reading/CallFiles.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

volatile std::sig_atomic_t isInterrupted = 0;

/// While it lives the first interrupt is only noted; the second ends the process, as ever.
class InterruptNote {
  public:
    InterruptNote() {
        isInterrupted = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { isInterrupted = 1; };
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(SIGINT, &action, &before_);
    }
    ~InterruptNote() { sigaction(SIGINT, &before_, nullptr); }
    InterruptNote(InterruptNote const&) = delete;
    InterruptNote& operator=(InterruptNote const&) = delete;

  private:
    struct sigaction before_ {};
};

/// Opens what can be opened twice, so that a wrong name shows at once and not after an hour.
/// Returns the bytes of all files, 0 where one is no regular file.
std::uint64_t LookAt(std::vector<std::string> const& paths, CallFormat const& format) {
    std::uint64_t size = 0;
    bool isKnown = true;
    for (std::string const& path : paths) {
        std::error_code error;
        if (path != "-" && (fs::is_regular_file(path, error) || !fs::exists(path, error)))
            size += CallReader(path, format).File().Size();
        else
            isKnown = false;
    }
    return isKnown ? size : 0;
}

/// How much of all files has been read, and how many calls.
std::string ReadText(std::uint64_t taken, std::uint64_t calls, Progress const& progress) {
    constexpr double kMegabyte = 1e6;
    std::string text = fmt::format("{:.1f} MB", static_cast<double>(taken) / kMegabyte);
    if (progress.Size() > 0)
        text += fmt::format(" of {:.1f} MB", static_cast<double>(progress.Size()) / kMegabyte);
    return text +
           fmt::format(", {:.0f} calls a second", static_cast<double>(calls) / progress.Seconds());
}

} // namespace

CountedCalls RunReplay(std::vector<std::string> const& files, RulesOverTime const& rules,
                       RuleList const* others, Replay::Options options) {
    std::vector<std::string> const paths = CallFilesIn(files);
    Progress progress(LookAt(paths, options.format));
    options.onProgress = [&](std::uint64_t bytes, std::uint64_t records) {
        if (progress.IsDue())
            progress.Show(bytes, ReadText(bytes, records, progress));
    };
    options.stop = &isInterrupted;
    InterruptNote const note;
    return Replay(rules, others, std::move(options)).Run(paths);
}

} // namespace callrecordingctl
