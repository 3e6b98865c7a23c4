/// @file
/// The functions that stand before those of the C library.

#include "SyscallFaults.h"

#include <csignal>
#include <cstdarg>
#include <optional>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool isArmed = false;
bool wasHit = false;
Call chosenCall = Call::ANY;
int callsToGo = 0;
Fault chosenFault = Fault::FAIL;
int chosenError = 0;
std::string calls;

/// Notes a call, and returns what is to become of it.
std::optional<Fault> FaultOf(Call call, char const* name) {
    if (!isArmed || wasHit)
        return std::nullopt;
    calls.append(name).append(" ");
    if ((chosenCall != Call::ANY && chosenCall != call) || --callsToGo != 0)
        return std::nullopt;
    wasHit = true;
    return chosenFault;
}

/// Lets a call go wrong, and returns its result.
int Fail(Fault fault) {
    if (fault == Fault::KILL)
        kill(getpid(), SIGKILL);
    if (fault == Fault::NOTHING)
        return 0;
    errno = fault == Fault::INTERRUPT ? EINTR : chosenError;
    return -1;
}

template <typename Function>
Function* Real(char const* symbol) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

template <typename Result, typename... Arguments>
Result Run(Call call, char const* name, char const* symbol, Arguments... arguments) {
    std::optional<Fault> const fault = FaultOf(call, name);
    return fault ? Fail(*fault) : Real<Result(Arguments...)>(symbol)(arguments...);
}

mode_t ModeOf(int flags, va_list arguments) {
    return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

SyscallFault::SyscallFault(Call call, int occurrence, Fault fault, int error) {
    wasHit = false;
    chosenCall = call;
    callsToGo = occurrence;
    chosenFault = fault;
    chosenError = error;
    calls.clear();
    isArmed = true;
}

SyscallFault::~SyscallFault() {
    isArmed = false;
}

bool SyscallFault::WasHit() const {
    return wasHit;
}

std::string const& SyscallFault::Calls() const {
    return calls;
}

// The symbols are given by name, so that it does not matter what the C library's headers make of
// the functions: aliases for large files, checked variants, attributes.
#define INTERPOSE(symbol) __asm__(symbol) __attribute__((visibility("default"), used))

extern "C" {
int InterposedOpen(char const* path, int flags, ...) INTERPOSE("open");
int InterposedOpen64(char const* path, int flags, ...) INTERPOSE("open64");
int InterposedOpenAt(int directory, char const* path, int flags, ...) INTERPOSE("openat");
int InterposedOpenAt64(int directory, char const* path, int flags, ...) INTERPOSE("openat64");
ssize_t InterposedRead(int file, void* data, size_t size) INTERPOSE("read");
ssize_t InterposedWrite(int file, void const* data, size_t size) INTERPOSE("write");
int InterposedFchown(int file, uid_t owner, gid_t group) INTERPOSE("fchown");
int InterposedFchmod(int file, mode_t mode) INTERPOSE("fchmod");
int InterposedFsync(int file) INTERPOSE("fsync");
int InterposedClose(int file) INTERPOSE("close");
int InterposedRename(char const* from, char const* to) INTERPOSE("rename");
int InterposedRenameAt(int fromDirectory, char const* from, int toDirectory, char const* to)
    INTERPOSE("renameat");
}

#define OPEN_WITH(symbol, ...)                                                                     \
    va_list arguments;                                                                             \
    va_start(arguments, flags);                                                                    \
    mode_t const mode = ModeOf(flags, arguments);                                                  \
    va_end(arguments);                                                                             \
    return Run<int>(Call::OPEN, "open", symbol, __VA_ARGS__, flags, mode)

int InterposedOpen(char const* path, int flags, ...) {
    OPEN_WITH("open", path);
}
int InterposedOpen64(char const* path, int flags, ...) {
    OPEN_WITH("open64", path);
}
int InterposedOpenAt(int directory, char const* path, int flags, ...) {
    OPEN_WITH("openat", directory, path);
}
int InterposedOpenAt64(int directory, char const* path, int flags, ...) {
    OPEN_WITH("openat64", directory, path);
}

ssize_t InterposedRead(int file, void* data, size_t size) {
    return Run<ssize_t>(Call::READ, "read", "read", file, data, size);
}

ssize_t InterposedWrite(int file, void const* data, size_t size) {
    auto* const real = Real<ssize_t(int, void const*, size_t)>("write");
    std::optional<Fault> const fault = FaultOf(Call::WRITE, "write");
    if (!fault)
        return real(file, data, size);
    bool const isHalf = *fault == Fault::CUT || *fault == Fault::KILL;
    ssize_t const written = isHalf ? real(file, data, size / 2) : 0;
    return *fault == Fault::CUT ? written : Fail(*fault);
}

int InterposedFchown(int file, uid_t owner, gid_t group) {
    return Run<int>(Call::FCHOWN, "fchown", "fchown", file, owner, group);
}

int InterposedFchmod(int file, mode_t mode) {
    return Run<int>(Call::FCHMOD, "fchmod", "fchmod", file, mode);
}

int InterposedFsync(int file) {
    return Run<int>(Call::FSYNC, "fsync", "fsync", file);
}

int InterposedClose(int file) {
    std::optional<Fault> const fault = FaultOf(Call::CLOSE, "close");
    if (fault == Fault::KILL)
        return Fail(*fault);
    int const result = Real<int(int)>("close")(file);
    return fault ? Fail(*fault) : result;
}

int InterposedRename(char const* from, char const* to) {
    return Run<int>(Call::RENAME, "rename", "rename", from, to);
}

int InterposedRenameAt(int fromDirectory, char const* from, int toDirectory, char const* to) {
    return Run<int>(Call::RENAME, "rename", "renameat", fromDirectory, from, toDirectory, to);
}
