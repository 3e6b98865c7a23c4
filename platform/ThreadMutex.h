/// @file
/// A mutex.

#ifndef PLATFORM_THREADMUTEX_H
#define PLATFORM_THREADMUTEX_H

#include <mutex>

#include "PlatformExport.h"

inline namespace CallRecordingPlatform {

/// A mutual-exclusion lock, which need not be recursive. The library never locks it twice in one
/// thread, and unlocks it in the thread that locked it. One ThreadMutex is constructed when the
/// library is loaded, so the constructor must not need anything that is initialised later.
class PLATFORM_EXPORT ThreadMutex {
  public:
    ThreadMutex();
    ~ThreadMutex(); // NOLINT(performance-trivially-destructible): a device's need not be.

    ThreadMutex(ThreadMutex const&) = delete;
    ThreadMutex& operator=(ThreadMutex const&) = delete;

    void Lock();   ///< Waits until no other thread holds the lock and takes it.
    void Unlock(); ///< Releases the lock.

  private:
    std::mutex mMutex;
};

} // namespace CallRecordingPlatform

#endif
