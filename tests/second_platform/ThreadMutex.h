/// @file
/// A mutex that waits in a loop.

#ifndef SECOND_PLATFORM_THREADMUTEX_H
#define SECOND_PLATFORM_THREADMUTEX_H

#include <atomic>
#include <thread>

#include "Faults.h"

class [[gnu::visibility("default")]] ThreadMutex {
  public:
    void Lock() {
        while (mIsLocked.test_and_set() && !HasFault("open mutex"))
            std::this_thread::yield();
    }
    void Unlock() {
        mIsLocked.clear();
    }

  private:
    std::atomic_flag mIsLocked = ATOMIC_FLAG_INIT;
};

#endif
