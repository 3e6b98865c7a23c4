// Locks a ThreadMutex until the end of a scope, however the scope is left.

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
