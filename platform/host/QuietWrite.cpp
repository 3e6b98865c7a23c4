/// @file
/// Holds off the signals of a write in the writing thread, and takes what has come before it lets
/// them through again. The process's own handling of them is left alone.

#include "QuietWrite.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include <pthread.h>
#include <unistd.h>

namespace HostPlatform {

namespace {

sigset_t SetOf(int signal) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    return set;
}

bool IsPending(int signal) {
    sigset_t pending;
    return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

/// Takes the signal that a write has just raised in this thread.
void Take(int signal) {
    sigset_t const set = SetOf(signal);
    timespec const now{0, 0};
    while (sigtimedwait(&set, nullptr, &now) == -1 && errno == EINTR) {
    }
}

} // namespace

ssize_t QuietWrite(int file, void const* data, std::size_t size) {
    sigset_t held = SetOf(SIGXFSZ);
    sigaddset(&held, SIGPIPE);
    sigset_t before;
    if (pthread_sigmask(SIG_BLOCK, &held, &before) != 0)
        return -1;
    // One that waited here already is somebody else's.
    bool const hadLimit = IsPending(SIGXFSZ);
    bool const hadPipe = IsPending(SIGPIPE);
    ssize_t const count = write(file, data, size);
    int const error = errno;
    if (count < 0 && error == EFBIG && !hadLimit)
        Take(SIGXFSZ);
    if (count < 0 && error == EPIPE && !hadPipe)
        Take(SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return count;
}

} // namespace HostPlatform
