/// @file
/// Errors, interruptions and descriptors of system calls, for the files of this folder.

#ifndef PLATFORM_HOST_POSIX_H
#define PLATFORM_HOST_POSIX_H

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace HostPlatform {

/// Throws a std::system_error about path: what, and the reason that the last system call gave.
[[noreturn]] inline void FailOf(std::string const& path, std::string const& what,
                                int error = errno) {
    throw std::system_error(error, std::generic_category(), path + ": " + what);
}

/// Throws a std::runtime_error about path, for what no system call reported.
[[noreturn]] inline void Refuse(std::string const& path, std::string const& what) {
    throw std::runtime_error(path + ": " + what);
}

/// Repeats a system call as long as signals interrupt it.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Owns an open file and closes it.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;
    ~Descriptor() {
        if (number_ >= 0)
            close(number_);
    }

    int Number() const { return number_; }

    /// Closes the file and returns the result. The descriptor is gone even after a failure: closing
    /// it again could close a file that another thread has just opened.
    int Close() { return close(std::exchange(number_, -1)); }

  private:
    int number_;
};

} // namespace HostPlatform

#endif
