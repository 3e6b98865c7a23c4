/// @file
/// Makes a chosen system call, or request for memory, go wrong, to see what is left of a file then.
///
/// For one source of an executable: what stands below takes the place of the C library's functions
/// for everything in the process, shared libraries included; the executable exports its symbols for
/// that. Calls that the C library makes itself are not seen.

#ifndef TESTS_SUPPORT_SYSCALLFAULTS_H
#define TESTS_SUPPORT_SYSCALLFAULTS_H

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

enum class Fault {
    FAIL,    ///< Nothing is done, and the error is reported; but close does close.
    NOTHING, ///< Nothing is done, and 0 is returned.
    ACT,     ///< The action is run first, and the call is made.
    CUT,     ///< A write takes the first half of what it is given.
    KILL     ///< The process is killed before the call, a write after half of it.
};

/// Counts the calls that are made while the object lives, and lets one of them go wrong. One object
/// at a time, in a process that does nothing else meanwhile.
struct SyscallFault {
    /// The occurrence is 1 for the first call of that name, open standing for openat as well, and
    /// so on; "" is any system call, "new" a request for memory. With 0 nothing goes wrong.
    SyscallFault(std::string name, int occurrence, Fault whatHappens, int error = EIO)
        : call(std::move(name)), callsToGo(occurrence), fault(whatHappens), errorNumber(error) {
        armed = this;
    }
    ~SyscallFault() { armed = nullptr; }

    /// Notes a call, and returns what is to become of it.
    static std::optional<Fault> Of(std::string_view name) {
        if (armed == nullptr || armed->wasHit || (name == "new") != (armed->call == "new"))
            return std::nullopt;
        if (name != "new")
            armed->calls.append(name).append(" ");
        if ((!armed->call.empty() && armed->call != name) || --armed->callsToGo != 0)
            return std::nullopt;
        armed->wasHit = true;
        if (armed->fault != Fault::ACT)
            return armed->fault;
        action();
        return std::nullopt;
    }
    /// Lets the call go wrong, and returns its result.
    static long Fail(Fault fault) {
        if (fault == Fault::KILL)
            kill(getpid(), SIGKILL);
        errno = armed->errorNumber;
        return fault == Fault::NOTHING ? 0 : -1;
    }
    template <typename... Arguments>
    static long Make(char const* name, long number, Arguments... arguments) {
        std::optional<Fault> const fault = Of(name);
        return fault ? Fail(*fault) : syscall(number, arguments...);
    }
    static long Write(int file, void const* data, size_t size) {
        std::optional<Fault> const fault = Of("write");
        bool const isDone = fault != Fault::FAIL && fault != Fault::NOTHING;
        long const written = isDone ? syscall(SYS_write, file, data, fault ? size / 2 : size) : 0;
        return fault && fault != Fault::CUT ? Fail(*fault) : written;
    }
    static long Close(int file) {
        std::optional<Fault> const fault = Of("close");
        long const result = fault == Fault::KILL ? 0 : syscall(SYS_close, file);
        return fault ? Fail(*fault) : result;
    }

    static inline SyscallFault* armed = nullptr;
    static inline std::function<void()> action;
    std::string const call;
    int callsToGo;
    Fault const fault;
    int const errorNumber;
    bool wasHit = false; // Whether the call in question has been made.
    std::string calls;   // Their names, each with a blank behind it, up to the one that went wrong.
};

void* operator new(std::size_t size) {
    void* const memory = SyscallFault::Of("new") ? nullptr : std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

// The symbols are given by name, so that it does not matter what the C library's headers make of
// the functions: aliases for large files, checked variants, attributes. The mode of a file is read
// even where the caller has given none: the kernel ignores it then.
#define REPLACE(symbol, name, parameters, result)                                                  \
    extern "C" long name parameters __asm__(symbol) __attribute__((visibility("default"), used));  \
    long name parameters {                                                                         \
        return SyscallFault::result;                                                               \
    }

REPLACE("open", Open, (char const* path, int flags, mode_t mode),
        Make("open", SYS_openat, AT_FDCWD, path, flags, mode))
REPLACE("open64", Open64, (char const* path, int flags, mode_t mode),
        Make("open", SYS_openat, AT_FDCWD, path, flags, mode))
REPLACE("openat", OpenAt, (int directory, char const* path, int flags, mode_t mode),
        Make("open", SYS_openat, directory, path, flags, mode))
REPLACE("openat64", OpenAt64, (int directory, char const* path, int flags, mode_t mode),
        Make("open", SYS_openat, directory, path, flags, mode))
REPLACE("read", Read, (int file, void* data, size_t size), Make("read", SYS_read, file, data, size))
REPLACE("write", Write, (int file, void const* data, size_t size), Write(file, data, size))
REPLACE("fchown", Fchown, (int file, uid_t owner, gid_t group),
        Make("fchown", SYS_fchown, file, owner, group))
REPLACE("fchmod", Fchmod, (int file, mode_t mode), Make("fchmod", SYS_fchmod, file, mode))
REPLACE("fsync", Fsync, (int file), Make("fsync", SYS_fsync, file))
REPLACE("close", Close, (int file), Close(file))
REPLACE("renameat", RenameAt, (int from, char const* name, int to, char const* newName),
        Make("rename", SYS_renameat, from, name, to, newName))

#endif
