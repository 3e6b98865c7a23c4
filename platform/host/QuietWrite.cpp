/// @file
/// Blocks the signals in the writing thread and consumes those that the write raised before it
/// unblocks them. How the process handles these signals is not touched.

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

/// Consumes the signal that a write has just raised in this thread.
void Consume(int signal) {
    sigset_t const set = SetOf(signal);
    timespec const now{0, 0};
    while (sigtimedwait(&set, nullptr, &now) == -1 && errno == EINTR) {
    }
}

} // namespace

ssize_t QuietWrite(int file, void const* data, std::size_t size) {
    sigset_t blocked = SetOf(SIGXFSZ);
    sigaddset(&blocked, SIGPIPE);
    sigset_t before;
    if (pthread_sigmask(SIG_BLOCK, &blocked, &before) != 0)
        return -1;
    // A signal that was pending before is not ours to consume.
    bool const hadLimit = IsPending(SIGXFSZ);
    bool const hadPipe = IsPending(SIGPIPE);
    ssize_t const count = write(file, data, size);
    int const error = errno;
    if (count < 0 && error == EFBIG && !hadLimit)
        Consume(SIGXFSZ);
    if (count < 0 && error == EPIPE && !hadPipe)
        Consume(SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return count;
}

} // namespace HostPlatform
