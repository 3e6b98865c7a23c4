// Holds off the cancellation of the current thread in a scope.

#ifndef COMMON_CANCELLATIONHELD_H
#define COMMON_CANCELLATIONHELD_H

#include <pthread.h>

namespace CallRecordingUtils {

/// A cancelled thread unwinds from whichever system call it makes next. That would leave an edit
/// half made, and end the process if a noexcept function is unwound. While it is held off, a
/// request waits for the first cancellation point after the scope.
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
