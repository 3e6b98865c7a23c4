// Records the edit that this process makes.

#include "commands/RecordEdit.h"

#include <cstdlib>
#include <ctime>

#include <pwd.h>
#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingctl {
namespace {

/// Who makes the edit; with sudo, who asked for it.
std::string UserName() {
    passwd const* const user = getpwuid(getuid());
    std::string const name = user != nullptr ? user->pw_name : std::to_string(getuid());
    char const* const behind = getuid() == 0 ? std::getenv("SUDO_USER") : nullptr;
    return behind != nullptr && name != behind ? fmt::format("{} as {}", behind, name) : name;
}

} // namespace

EditRecord::EditRecord(Context const& context, std::string const& before, std::size_t undone) {
    try {
        history_ = std::make_unique<History>(context.path, true);
        history_->Begin({0, std::time(nullptr), UserName(), context.line, "", "",
                         static_cast<std::int64_t>(undone)},
                        before);
    } catch (std::exception const& error) {
        Say(error);
    }
}

void EditRecord::Finish(std::string const& after) {
    try {
        if (history_ != nullptr)
            history_->Finish(after);
    } catch (std::exception const& error) {
        Say(error);
    }
}

void EditRecord::Say(std::exception const& error) {
    history_.reset();
    callrecordingctl::Say("this edit is missing in the history, so \"undo\" does not know it: {}",
                          error.what());
}

} // namespace callrecordingctl
