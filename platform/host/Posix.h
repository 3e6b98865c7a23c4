/// @file
/// What the files of this folder share about system calls.

#ifndef PLATFORM_HOST_POSIX_H
#define PLATFORM_HOST_POSIX_H

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace HostPlatform {

/// Throws what the last system call reported about path.
[[noreturn]] inline void FailOf(std::string const& path, std::string const& what,
                                int error = errno) {
    throw std::system_error(error, std::generic_category(), path + ": " + what);
}

/// Throws what is wrong with path where no system call said so.
[[noreturn]] inline void Refuse(std::string const& path, std::string const& what) {
    throw std::runtime_error(path + ": " + what);
}

/// Repeats a system call for as long as a signal interrupts it.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// An open file, closed at the end of the object's life.
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

    /// Closes the file and returns the result. Whatever it is, the descriptor is gone then, and
    /// closing it again could hit a file that another thread has just opened.
    int Close() { return close(std::exchange(number_, -1)); }

  private:
    int number_;
};

} // namespace HostPlatform

#endif
