// The lock that keeps two clients from editing the rule file at once.

#include "edit/EditLock.h"

#include <cerrno>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Failure.h"

namespace callrecordingctl {
namespace {

using namespace std::chrono_literals;

[[noreturn]] void Fail(std::string const& path, char const* reason) {
    throw Failure(kExitUnsaved, fmt::format("{}: {}", path, reason));
}

} // namespace

EditLock::EditLock(std::string const& path, std::chrono::seconds patience)
    : file_(open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0644)) {
    if (file_ < 0)
        Fail(path, std::strerror(errno));
    // Edits take milliseconds; a wait as short as that is not worth a word.
    if (Try(path, 200ms))
        return;
    if (patience.count() > 0) {
        Say("{}: another client is editing; waiting up to {} s", path, patience.count());
        if (Try(path, patience))
            return;
    }
    close(file_);
    Fail(path, "the lock is still held by another client; nothing was changed");
}

EditLock::~EditLock() {
    close(file_);
}

bool EditLock::Try(std::string const& path, std::chrono::milliseconds patience) const {
    auto const end = std::chrono::steady_clock::now() + patience;
    while (flock(file_, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            int const error = errno;
            close(file_);
            Fail(path, std::strerror(error));
        }
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(5ms);
    }
    return true;
}

} // namespace callrecordingctl
