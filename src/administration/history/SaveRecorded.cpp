// Records an edit before and after its save.

#include "administration/history/SaveRecorded.h"

#include <cstdlib>
#include <optional>

#include <pwd.h>
#include <unistd.h>

#include <fmt/format.h>
#include <host/AtomicFile.h>

#include "administration/history/History.h"
#include "administration/history/HistoryFile.h"

namespace CallRecordingUtils {
namespace {

/// Runs what only saves work for whoever looks at the history next.
template <typename Action>
void Try(Action action) {
    try {
        action();
    } catch (std::exception const&) {
        // The entry is there, and the next one to look at it tells from the file what happened.
    }
}

} // namespace

std::string SaveRecorded(std::string const& path, EditNote const& note, std::string const& before,
                         std::string const& after, std::function<void()> const& save) {
    if (before == after) { // Nothing that could be told from the file, or undone.
        save();
        return "";
    }
    std::optional<HistoryWriter> history;
    std::string reason;
    try {
        history.emplace(path);
        history->Begin(note, before, after);
    } catch (std::exception const& error) {
        reason = error.what();
        history.reset();
    }
    try {
        save();
    } catch (...) {
        // It may have failed after the file was replaced.
        if (history)
            Try([&] { history->Settle(HostPlatform::ReadFile(path).text); });
        throw;
    }
    if (!history)
        return reason;
    Try([&] { history->Finish(); });
    history.reset();
    Try([&] { PrepareHistoryFile(path); }); // The first save has just created the rule file.
    return "";
}

std::string EditorName() {
    passwd const* const user = getpwuid(getuid());
    std::string const name = user != nullptr ? user->pw_name : std::to_string(getuid());
    char const* const caller = getuid() == 0 ? std::getenv("SUDO_USER") : nullptr;
    return caller != nullptr && name != caller ? fmt::format("{} as {}", caller, name) : name;
}

} // namespace CallRecordingUtils
