/// @file
/// A library to load before a program (LD_PRELOAD): lets one of its system calls fail, or kills it
/// there. It sees the calls of the program and of the libraries that it uses, SQLite included, but
/// not those that the C library makes itself.
///
/// FAULT_CALL is the number of the call, from 1; with 0 nothing goes wrong. FAULT_KIND is "fail" or
/// "kill". The file FAULT_HIT is created once the call is reached. Nothing waits for the disk.

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

struct Plan {
    Plan()
        : call(std::getenv("FAULT_CALL") != nullptr ? std::atoi(std::getenv("FAULT_CALL")) : 0),
          kills(std::getenv("FAULT_KIND") != nullptr &&
                std::strcmp(std::getenv("FAULT_KIND"), "kill") == 0) {}

    int call;
    bool kills;
    int calls = 0;
};

/// Counts a call. Returns whether it is the one to go wrong.
bool IsHit() {
    static Plan plan;
    return ++plan.calls == plan.call;
}

bool Kills() {
    static Plan const plan;
    return plan.kills;
}

long Break() {
    char const* const file = std::getenv("FAULT_HIT");
    if (file != nullptr)
        syscall(SYS_close, syscall(SYS_openat, AT_FDCWD, file, O_CREAT | O_WRONLY, 0600));
    if (Kills())
        kill(getpid(), SIGKILL);
    errno = EIO;
    return -1;
}

template <typename... Arguments>
long Make(long number, Arguments... arguments) {
    return IsHit() ? Break() : syscall(number, arguments...);
}

/// A killed write has written half.
long Write(long number, int file, char const* data, size_t size, long offset = 0) {
    if (!IsHit())
        return syscall(number, file, data, size, offset);
    if (Kills())
        syscall(number, file, data, size / 2, offset);
    return Break();
}

long Close(int file) {
    bool const isHit = IsHit();
    if (isHit && Kills())
        Break();
    long const result = syscall(SYS_close, file);
    return isHit ? Break() : result;
}

long Sync() {
    return IsHit() ? Break() : 0;
}

} // namespace

// By their symbols, so that the headers' own declarations do not matter.
#define REPLACE(symbol, name, parameters, result)                                                  \
    extern "C" long name parameters __asm__(symbol) __attribute__((visibility("default"), used));  \
    long name parameters {                                                                         \
        return result;                                                                             \
    }

REPLACE("open", Open, (char const* path, int flags, mode_t mode),
        Make(SYS_openat, AT_FDCWD, path, flags, mode))
REPLACE("open64", Open64, (char const* path, int flags, mode_t mode),
        Make(SYS_openat, AT_FDCWD, path, flags, mode))
REPLACE("openat", OpenAt, (int directory, char const* path, int flags, mode_t mode),
        Make(SYS_openat, directory, path, flags, mode))
REPLACE("openat64", OpenAt64, (int directory, char const* path, int flags, mode_t mode),
        Make(SYS_openat, directory, path, flags, mode))
REPLACE("read", Read, (int file, void* data, size_t size), Make(SYS_read, file, data, size))
REPLACE("pread", PRead, (int file, void* data, size_t size, long offset),
        Make(SYS_pread64, file, data, size, offset))
REPLACE("pread64", PRead64, (int file, void* data, size_t size, long offset),
        Make(SYS_pread64, file, data, size, offset))
REPLACE("write", WriteCall, (int file, char const* data, size_t size),
        Write(SYS_write, file, data, size))
REPLACE("pwrite", PWrite, (int file, char const* data, size_t size, long offset),
        Write(SYS_pwrite64, file, data, size, offset))
REPLACE("pwrite64", PWrite64, (int file, char const* data, size_t size, long offset),
        Write(SYS_pwrite64, file, data, size, offset))
REPLACE("lseek", Seek, (int file, long offset, int whence), Make(SYS_lseek, file, offset, whence))
REPLACE("lseek64", Seek64, (int file, long offset, int whence),
        Make(SYS_lseek, file, offset, whence))
REPLACE("close", CloseCall, (int file), Close(file))
REPLACE("fsync", FSync, (int), Sync())
REPLACE("fdatasync", FDataSync, (int), Sync())
REPLACE("ftruncate", Truncate, (int file, long size), Make(SYS_ftruncate, file, size))
REPLACE("ftruncate64", Truncate64, (int file, long size), Make(SYS_ftruncate, file, size))
REPLACE("fchown", FChown, (int file, uid_t owner, gid_t group),
        Make(SYS_fchown, file, owner, group))
REPLACE("fchmod", FChmod, (int file, mode_t mode), Make(SYS_fchmod, file, mode))
REPLACE("fcntl", FControl, (int file, int command, long argument),
        Make(SYS_fcntl, file, command, argument))
REPLACE("fcntl64", FControl64, (int file, int command, long argument),
        Make(SYS_fcntl, file, command, argument))
REPLACE("flock", FLock, (int file, int operation), Make(SYS_flock, file, operation))
REPLACE("mkdir", MakeDirectory, (char const* path, mode_t mode),
        Make(SYS_mkdirat, AT_FDCWD, path, mode))
REPLACE("rename", Rename, (char const* from, char const* to),
        Make(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0))
REPLACE("renameat", RenameAt, (int from, char const* name, int to, char const* newName),
        Make(SYS_renameat2, from, name, to, newName, 0))
REPLACE("unlink", Unlink, (char const* path), Make(SYS_unlinkat, AT_FDCWD, path, 0))
REPLACE("unlinkat", UnlinkAt, (int directory, char const* path, int flags),
        Make(SYS_unlinkat, directory, path, flags))
REPLACE("memfd_create", MemoryFile, (char const* name, unsigned flags),
        Make(SYS_memfd_create, name, flags))
