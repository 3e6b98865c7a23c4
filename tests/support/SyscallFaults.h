/// @file
/// Makes a chosen system call go wrong, to see what is left of a file then.
///
/// Linked into a test's executable, SyscallFaults.cpp takes the place of the C library's functions
/// below for everything in the process, shared libraries included; the executable exports its
/// symbols for that. Calls that the C library makes itself are not seen.

#ifndef TESTS_SUPPORT_SYSCALLFAULTS_H
#define TESTS_SUPPORT_SYSCALLFAULTS_H

#include <cerrno>
#include <string>

enum class Fault {
    FAIL,    ///< Nothing is done, and the error is reported; but close does close.
    NOTHING, ///< Nothing is done, and 0 is returned.
    CUT,     ///< A write takes the first half of what it is given.
    KILL     ///< The process is killed before the call, a write after half of it.
};

/// Counts the calls that are made while the object lives, and lets one of them go wrong. One object
/// at a time, in a process that does nothing else meanwhile.
struct SyscallFault {
    /// The occurrence is 1 for the first call of that name ("": of any), open standing for openat
    /// as well, and so on; with 0 nothing goes wrong.
    SyscallFault(std::string name, int occurrence, Fault whatHappens, int error = EIO);
    ~SyscallFault();
    SyscallFault(SyscallFault const&) = delete;
    SyscallFault& operator=(SyscallFault const&) = delete;

    std::string const call;
    int callsToGo;
    Fault const fault;
    int const errorNumber;
    bool wasHit = false; // Whether the call in question has been made.
    std::string calls;   // Their names, each with a blank behind it, up to the one that went wrong.
};

#endif
