// Records an edit before and after its save.

#include "administration/history/SaveRecorded.h"

#include <cstdlib>
#include <memory>

#include <pwd.h>
#include <unistd.h>

#include <fmt/format.h>
#include <host/AtomicFile.h>

#include "administration/history/History.h"
#include "administration/history/HistoryFile.h"

namespace CallRecordingUtils {
namespace {

/// What fails here is not lost: the entry is there, and whoever looks at the history next tells
/// from the file what happened.
template <typename Action>
bool Try(Action action) {
    try {
        action();
        return true;
    } catch (std::exception const&) {
        return false;
    }
}

/// Returns the history after it has begun to record the edit, or nothing if it cannot.
std::unique_ptr<HistoryWriter> Begin(std::string const& path, EditNote const& note,
                                     std::string const& before, std::string const& after) {
    try {
        auto history = std::make_unique<HistoryWriter>(path);
        history->Begin(note, before, after);
        return history;
    } catch (std::exception const&) {
        return nullptr; // There is another chance when the edit has been saved.
    }
}

/// Returns why the edit cannot be recorded.
std::string RecordSaved(std::string const& path, EditNote const& note, std::string const& before,
                        std::string const& after) {
    try {
        HistoryWriter(path).RecordSaved(note, before, after);
        return "";
    } catch (std::exception const& error) {
        return error.what();
    }
}

/// Saves what history has begun to record.
void SaveBegun(std::unique_ptr<HistoryWriter> history, std::string const& path,
               std::string const& after, std::function<void()> const& save) {
    try {
        save();
    } catch (...) {
        // It may have failed after the file was replaced.
        if (history)
            Try([&] { history->Settle(HostPlatform::ReadFile(path).text); });
        throw;
    }
    if (!history)
        return;
    bool const isFinished = Try([&] { history->Finish(); });
    history.reset();
    if (!isFinished)
        Try([&] { HistoryWriter(path).Settle(after); });
    Try([&] { PrepareHistoryFile(path); }); // The first save has just created the rule file.
}

} // namespace

std::string SaveRecorded(std::string const& path, EditNote const& note, std::string const& before,
                         std::string const& after, std::function<void()> const& save) {
    if (before == after) { // Nothing that could be told from the file, or undone.
        save();
        return "";
    }
    auto history = Begin(path, note, before, after);
    bool const hasBegun = history != nullptr;
    SaveBegun(std::move(history), path, after, save);
    return hasBegun ? "" : RecordSaved(path, note, before, after);
}

void SaveIfRecorded(std::string const& path, EditNote const& note, std::string const& before,
                    std::string const& after, std::function<void()> const& save) {
    auto history = std::make_unique<HistoryWriter>(path);
    history->Begin(note, before, after);
    SaveBegun(std::move(history), path, after, save);
}

std::string EditorName() {
    passwd const* const user = getpwuid(getuid());
    std::string const name = user != nullptr ? user->pw_name : std::to_string(getuid());
    char const* const caller = getuid() == 0 ? std::getenv("SUDO_USER") : nullptr;
    return caller != nullptr && name != caller ? fmt::format("{} as {}", caller, name) : name;
}

} // namespace CallRecordingUtils
