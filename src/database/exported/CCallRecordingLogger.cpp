// The trace log: makes a line and passes it to the platform's log.

#include <callrecordingutils/CCallRecordingLogger.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

#include <sys/time.h>

#include <LogStream.h>

#include "common/CancellationHeld.h"
#include "common/MutexGuard.h"

namespace CallRecordingUtils {
namespace {

/// Appends the local date and time and the milliseconds, with which a trace line begins.
void AppendTimestamp(std::string& line) {
    timeval now{};
    gettimeofday(&now, nullptr);
    tzset(); // The time zone may have changed, and localtime_r need not notice.
    std::tm local{};
    char text[64] = "";
    if (localtime_r(&now.tv_sec, &local) != nullptr && asctime_r(&local, text) != nullptr)
        line += text;
    line.erase(std::min(line.find('\n'), line.size()));
    char milliseconds[16];
    std::snprintf(milliseconds, sizeof milliseconds, "\t.%03d ",
                  static_cast<int>(now.tv_usec / 1000));
    line += milliseconds;
}

} // namespace

CCallRecordingLogger::CCallRecordingLogger() : mpLogStream(nullptr), mIsEnabled(false) {
    auto stream =
        std::make_unique<LogStream>("callrecording.log", false, true, 0x7FFFFFFF, 1, 2048U, false);
    GetLogLevel(&mIsEnabled, nullptr);
    mpLogStream = stream.release();
}

CCallRecordingLogger::~CCallRecordingLogger() {
    delete mpLogStream;
}

void CCallRecordingLogger::TRACE(unsigned char level, bool withTimestamp, char const* format,
                                 ...) noexcept {
    if (!mIsEnabled)
        return;
    CancellationHeld const held;
    std::va_list arguments;
    va_start(arguments, format);
    try {
        std::string line;
        if (withTimestamp)
            AppendTimestamp(line);
        line += format;
        MutexGuard const guard(mMutex);
        mpLogStream->TRACE(level, line.c_str(), arguments, 0);
        mpLogStream->Flush();
    } catch (...) {
        // There is no memory, and the entry is lost. It may even be about that.
    }
    va_end(arguments);
}

} // namespace CallRecordingUtils
