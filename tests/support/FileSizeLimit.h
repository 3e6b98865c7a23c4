/// @file
/// Limits the size of the files that the process writes, for a scope. At its end, checks that no
/// signal is pending or blocked.

#ifndef TESTS_SUPPORT_FILESIZELIMIT_H
#define TESTS_SUPPORT_FILESIZELIMIT_H

#include <csignal>

#include <gtest/gtest.h>
#include <sys/resource.h>

class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t size) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit const limit{size, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        sigset_t set;
        EXPECT_TRUE(sigpending(&set) == 0 && sigismember(&set, SIGXFSZ) == 0);
        EXPECT_TRUE(pthread_sigmask(SIG_BLOCK, nullptr, &set) == 0 &&
                    sigismember(&set, SIGXFSZ) == 0 && sigismember(&set, SIGPIPE) == 0);
    }
    FileSizeLimit(FileSizeLimit const&) = delete;
    FileSizeLimit& operator=(FileSizeLimit const&) = delete;

  private:
    rlimit before_{};
};

#endif
