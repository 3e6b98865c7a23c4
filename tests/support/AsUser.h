/// @file
/// Runs a part of a test with the rights of another user.

#ifndef TESTS_SUPPORT_ASUSER_H
#define TESTS_SUPPORT_ASUSER_H

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <grp.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

/// Returns what action returns in a child process that has the rights of user, the first of groups
/// being its own group. REQUIRES: the process is root's.
inline std::string AsUser(uid_t user, std::vector<gid_t> const& groups,
                          std::function<std::string()> const& action) {
    int ends[2];
    if (pipe(ends) != 0)
        return "no pipe";
    pid_t const child = fork();
    if (child == 0) {
        bool const isDone = setgroups(groups.size(), groups.data()) == 0 &&
                            setresgid(groups[0], groups[0], groups[0]) == 0 &&
                            setresuid(user, user, user) == 0;
        std::string const result = isDone ? action() : "the user cannot be changed";
        _exit(write(ends[1], result.data(), result.size()) < 0 ? 1 : 0);
    }
    close(ends[1]);
    std::string result(4096, '\0');
    ssize_t const length = read(ends[0], result.data(), result.size());
    close(ends[0]);
    int status = 0;
    bool const isDone = waitpid(child, &status, 0) == child && WIFEXITED(status) && status == 0;
    return isDone && length >= 0 ? result.substr(0, static_cast<std::size_t>(length))
                                 : "it crashed";
}

/// Returns user, group and mode of the file at path, as "1:7 664".
inline std::string OwnerAndMode(std::string const& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0)
        return "none";
    char mode[16];
    std::snprintf(mode, sizeof mode, " %o", status.st_mode & 07777U);
    return std::to_string(status.st_uid) + ":" + std::to_string(status.st_gid) + mode;
}

/// Gives the file at path a mode and an owner.
inline void Give(std::string const& path, mode_t mode, uid_t user, gid_t group) {
    if (chown(path.c_str(), user, group) != 0 || chmod(path.c_str(), mode) != 0)
        throw std::runtime_error(path + ": cannot be given away");
}

#endif
