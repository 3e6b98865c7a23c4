// Loads rules, and watches the file.

#include "LiveRules.h"

#include <ctime>
#include <exception>

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <fmt/format.h>

#include "json/RuleJson.h"

namespace callrecordingd {

using namespace CallRecordingUtils;

namespace {

std::shared_ptr<Snapshot const> MakeSnapshot(std::unique_ptr<LoadedRules const> loaded) {
    auto snapshot = std::make_shared<Snapshot>();
    snapshot->state = loaded->digest.substr(0, 8);
    std::size_t position = 0;
    for (CallRecordingRuleParams const& rule : loaded->rules.Rules())
        snapshot->texts.push_back(
            ToJson(rule, ++position)
                .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    snapshot->loaded = std::move(loaded);
    return snapshot;
}

/// Whether a change of the file from now on must show in its stamp: file systems count time in
/// steps.
bool IsSettled(FileStamp const& stamp) {
    constexpr std::int64_t kStep = 2'000'000'000;
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::int64_t const nanoseconds = std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
    return stamp.error != 0 || nanoseconds - stamp.changed > kStep;
}

std::string DirectoryOf(std::string const& path) {
    return path.substr(0, path.rfind('/') + 1);
}

} // namespace

LiveRules::LiveRules(std::string path, std::function<void(std::string const&)> notice)
    : path_(std::move(path)), notice_(std::move(notice)) {
    Load();
}

LiveRules::~LiveRules() {
    if (watcher_.joinable()) {
        char const byte = 0;
        while (write(stopPipe_[1], &byte, 1) < 0 && errno == EINTR) {
        }
        watcher_.join();
    }
    for (int const end : stopPipe_)
        if (end >= 0)
            close(end);
}

LoadHistory LiveRules::History() const {
    std::lock_guard<std::mutex> const lock(forHistory_);
    return history_;
}

void LiveRules::LoadIfChanged() {
    std::lock_guard<std::mutex> const lock(loading_);
    if (!isStampSettled_ || !(FileStamp::Of(path_) == stamp_))
        LoadNow();
}

void LiveRules::Load() {
    std::lock_guard<std::mutex> const lock(loading_);
    LoadNow();
}

void LiveRules::LoadNow() {
    try {
        auto loaded = ReadRulesOfFile(path_, stamp_);
        isStampSettled_ = IsSettled(stamp_);
        Succeed(std::move(loaded));
    } catch (...) {
        isStampSettled_ = IsSettled(stamp_);
        Fail(FailureOf(std::current_exception(), path_).text);
    }
}

void LiveRules::Succeed(std::unique_ptr<LoadedRules const> loaded) {
    auto const before = Now();
    bool const isSame = before != nullptr && before->loaded->digest == loaded->digest;
    if (isSame && History().lastFailure.empty())
        return; // Read once more only because the stamp was not settled.
    if (!isSame)
        std::atomic_store(&snapshot_, MakeSnapshot(std::move(loaded)));
    auto const now = Now();
    Remember(false,
             stamp_.error == ENOENT
                 ? fmt::format("{}: there is no such file, so there are no rules", path_)
                 : fmt::format("{}: {} {} loaded, state {}", path_, now->texts.size(),
                               now->texts.size() == 1 ? "rule" : "rules", now->state),
             "");
}

/// A file that stays broken while it is read again and again has failed once.
void LiveRules::Fail(std::string const& failure) {
    if (failure == History().lastFailure)
        return;
    Remember(true,
             fmt::format("{}; {}", failure,
                         Now() != nullptr ? "the rules loaded before stay in force"
                                          : "calls are undecided until it can be read"),
             failure);
}

void LiveRules::Remember(bool hasFailed, std::string const& notice, std::string const& failure) {
    constexpr std::size_t kMostRemembered = 8;
    {
        std::lock_guard<std::mutex> const lock(forHistory_);
        std::int64_t const time = std::time(nullptr);
        ++history_.loads;
        if (hasFailed)
            ++history_.failedLoads;
        else
            history_.lastTime = time;
        history_.lastFailure = failure;
        history_.latest.push_front({time, hasFailed, notice});
        if (history_.latest.size() > kMostRemembered)
            history_.latest.pop_back();
    }
    notice_(notice);
}

void LiveRules::Watch() {
    if (pipe2(stopPipe_, O_CLOEXEC) != 0)
        throw std::system_error(errno, std::generic_category(), "a pipe");
    watcher_ = std::thread([this] { WatchUntilStopped(); });
}

void LiveRules::WatchUntilStopped() {
    constexpr int kMilliseconds = 1000;
    int const events = inotify_init1(IN_CLOEXEC | IN_NONBLOCK); // Without it, the clock is enough.
    int watch = -1;
    for (;;) {
        if (events >= 0 && watch < 0)
            watch = inotify_add_watch(events, DirectoryOf(path_).c_str(),
                                      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                          IN_CREATE | IN_ATTRIB | IN_ONLYDIR);
        pollfd polled[] = {{stopPipe_[0], POLLIN, 0}, {events, POLLIN, 0}};
        poll(polled, events >= 0 ? 2 : 1, kMilliseconds);
        if (polled[0].revents != 0)
            break;
        alignas(inotify_event) char buffer[4096];
        while (events >= 0) {
            ssize_t const size = read(events, buffer, sizeof buffer);
            if (size <= 0)
                break;
            for (char const* at = buffer; at < buffer + size;) {
                auto const* const event = reinterpret_cast<inotify_event const*>(at);
                if ((event->mask & IN_IGNORED) != 0)
                    watch = -1; // The directory is gone; there may be another one by now.
                at += sizeof *event + event->len;
            }
        }
        LoadIfChanged();
    }
    if (events >= 0)
        close(events);
}

} // namespace callrecordingd
