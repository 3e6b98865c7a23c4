// Holds off the cancellation of the running thread for a scope.

#ifndef COMMON_CANCELLATIONHELD_H
#define COMMON_CANCELLATIONHELD_H

#include <pthread.h>

namespace CallRecordingUtils {

/// A cancelled thread unwinds in the middle of whatever system call it makes. That would leave an
/// edit half made, and end the process where the unwinding meets a function that lets nothing out.
/// Held off, a request waits for the next cancellation point behind the scope.
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
