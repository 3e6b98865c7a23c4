// Delays the cancellation of the running thread until the end of a scope.

#ifndef COMMON_CANCELLATIONHELD_H
#define COMMON_CANCELLATIONHELD_H

#include <pthread.h>

namespace CallRecordingUtils {

/// A cancelled thread unwinds in the middle of a system call. That would leave an edit half done,
/// and end the process if the unwinding reached a noexcept function. Inside the scope a request
/// waits; it takes effect at the next cancellation point after it.
class CancellationHeld {
  public:
    CancellationHeld() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
    ~CancellationHeld() { pthread_setcancelstate(before_, nullptr); }

    CancellationHeld(CancellationHeld const&) = delete;
    CancellationHeld& operator=(CancellationHeld const&) = delete;

  private:
    int before_ = PTHREAD_CANCEL_ENABLE;
};

} // namespace CallRecordingUtils

#endif
