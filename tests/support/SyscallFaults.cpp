/// @file
/// The functions that stand before those of the C library, and make the system calls themselves.

#include "SyscallFaults.h"

#include <csignal>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

SyscallFault* armed = nullptr;

/// Notes a call, and returns what is to become of it.
std::optional<Fault> FaultOf(char const* name) {
    if (armed == nullptr || armed->wasHit)
        return std::nullopt;
    armed->calls.append(name).append(" ");
    if ((!armed->call.empty() && armed->call != name) || --armed->callsToGo != 0)
        return std::nullopt;
    armed->wasHit = true;
    return armed->fault;
}

/// Lets a call go wrong, and returns its result.
int Fail(Fault fault) {
    if (fault == Fault::KILL)
        kill(getpid(), SIGKILL);
    errno = armed->errorNumber;
    return fault == Fault::NOTHING ? 0 : -1;
}

template <typename... Arguments>
int Run(char const* name, long number, Arguments... arguments) {
    std::optional<Fault> const fault = FaultOf(name);
    return fault ? Fail(*fault) : static_cast<int>(syscall(number, arguments...));
}

} // namespace

SyscallFault::SyscallFault(std::string name, int occurrence, Fault whatHappens, int error)
    : call(std::move(name)), callsToGo(occurrence), fault(whatHappens), errorNumber(error) {
    armed = this;
}

SyscallFault::~SyscallFault() {
    armed = nullptr;
}

// The symbols are given by name, so that it does not matter what the C library's headers make of
// the functions: aliases for large files, checked variants, attributes.
#define INTERPOSED(symbol) __asm__(symbol) __attribute__((visibility("default"), used))

extern "C" {
int Open(char const* path, int flags, mode_t mode) INTERPOSED("open");
int Open64(char const* path, int flags, mode_t mode) INTERPOSED("open64");
int OpenAt(int directory, char const* path, int flags, mode_t mode) INTERPOSED("openat");
int OpenAt64(int directory, char const* path, int flags, mode_t mode) INTERPOSED("openat64");
ssize_t Read(int file, void* data, size_t size) INTERPOSED("read");
ssize_t Write(int file, void const* data, size_t size) INTERPOSED("write");
int Fchown(int file, uid_t owner, gid_t group) INTERPOSED("fchown");
int Fchmod(int file, mode_t mode) INTERPOSED("fchmod");
int Fsync(int file) INTERPOSED("fsync");
int Close(int file) INTERPOSED("close");
int RenameAt(int fromDirectory, char const* from, int toDirectory, char const* to)
    INTERPOSED("renameat");
}

// The mode is read even where the caller has given none: the kernel ignores it then.
int OpenAt(int directory, char const* path, int flags, mode_t mode) {
    return Run("open", SYS_openat, directory, path, flags, mode);
}
int OpenAt64(int directory, char const* path, int flags, mode_t mode) {
    return OpenAt(directory, path, flags, mode);
}
int Open(char const* path, int flags, mode_t mode) {
    return OpenAt(AT_FDCWD, path, flags, mode);
}
int Open64(char const* path, int flags, mode_t mode) {
    return OpenAt(AT_FDCWD, path, flags, mode);
}

ssize_t Read(int file, void* data, size_t size) {
    return Run("read", SYS_read, file, data, size);
}

ssize_t Write(int file, void const* data, size_t size) {
    std::optional<Fault> const fault = FaultOf("write");
    if (!fault)
        return syscall(SYS_write, file, data, size);
    bool const isHalf = *fault == Fault::CUT || *fault == Fault::KILL;
    ssize_t const written = isHalf ? syscall(SYS_write, file, data, size / 2) : 0;
    return *fault == Fault::CUT ? written : Fail(*fault);
}

int Fchown(int file, uid_t owner, gid_t group) {
    return Run("fchown", SYS_fchown, file, owner, group);
}

int Fchmod(int file, mode_t mode) {
    return Run("fchmod", SYS_fchmod, file, mode);
}

int Fsync(int file) {
    return Run("fsync", SYS_fsync, file);
}

int Close(int file) {
    std::optional<Fault> const fault = FaultOf("close");
    if (fault != Fault::KILL)
        syscall(SYS_close, file);
    return fault ? Fail(*fault) : 0;
}

int RenameAt(int fromDirectory, char const* from, int toDirectory, char const* to) {
    return Run("rename", SYS_renameat, fromDirectory, from, toDirectory, to);
}
