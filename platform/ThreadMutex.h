/// @file
/// A plain mutex.

#ifndef PLATFORM_THREADMUTEX_H
#define PLATFORM_THREADMUTEX_H

#include <mutex>

#include "PlatformExport.h"

inline namespace CallRecordingPlatform {

/// A mutual-exclusion lock: not recursive, not copyable. A thread that holds it must not lock it
/// again, and only that thread may unlock it.
class PLATFORM_EXPORT ThreadMutex {
  public:
    ThreadMutex();
    ~ThreadMutex(); // NOLINT(performance-trivially-destructible): a device's need not be.

    ThreadMutex(ThreadMutex const&) = delete;
    ThreadMutex& operator=(ThreadMutex const&) = delete;

    void Lock();   ///< Waits until no other thread holds the lock, and takes it.
    void Unlock(); ///< Gives the lock back.

  private:
    std::mutex mMutex;
};

} // namespace CallRecordingPlatform

#endif
