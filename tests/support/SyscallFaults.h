/// @file
/// Makes a chosen system call or allocation fail, to see what becomes of a file.
///
/// To be included in one source of an executable: it replaces the C library's functions for the
/// whole process. The executable exports its symbols, so that shared libraries call these functions
/// too. Calls inside the C library are not seen.

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
    FAIL,    ///< The call does nothing and returns the error; only close does close.
    NOTHING, ///< The call does nothing and returns 0.
    ACT,     ///< The action runs before the call, which is made as usual.
    CUT,     ///< A write writes the first half only.
    KILL     ///< The process is killed before the call; in a write, after the first half.
};

/// Counts the calls during the lifetime of the object, and makes one of them fail. There may be one
/// object at a time, and one thread.
struct SyscallFault {
    /// name is that of a system call ("open" for openat too), "" for any of them, or "new" for an
    /// allocation; occurrence counts the calls of that name from 1. With 0, none fails.
    SyscallFault(std::string name, int occurrence, Fault whatHappens, int error = EIO)
        : call(std::move(name)), callsToGo(occurrence), fault(whatHappens), errorNumber(error) {
        armed = this;
    }
    ~SyscallFault() { armed = nullptr; }

    /// Counts a call, and returns the fault if it is the one.
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
    /// Returns the result of a failing call.
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
    bool wasHit = false; // Whether the call has been made.
    std::string calls;   // The names of the calls up to that one, each with a blank after it.
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

// The symbols are given by name, so that what the C library's headers do to the functions does not
// matter: aliases for large files, checked variants, attributes. The mode is read even if the
// caller passed none; the kernel ignores it then.
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
