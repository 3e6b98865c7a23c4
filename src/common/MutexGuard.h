// Holds a ThreadMutex in a scope, so that every way out of the scope unlocks it.

#ifndef COMMON_MUTEXGUARD_H
#define COMMON_MUTEXGUARD_H

#include <ThreadMutex.h>

namespace CallRecordingUtils {

class MutexGuard {
  public:
    explicit MutexGuard(ThreadMutex& mutex) : mutex_(mutex) { mutex_.Lock(); }
    ~MutexGuard() { mutex_.Unlock(); }

    MutexGuard(MutexGuard const&) = delete;
    MutexGuard& operator=(MutexGuard const&) = delete;

  private:
    ThreadMutex& mutex_;
};

} // namespace CallRecordingUtils

#endif
