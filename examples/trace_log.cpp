// Switches the trace log on, adds a line of its own, and shows the log.
// Usage: trace_log DIRECTORY (of which a copy is used; the log goes there as well)

#include <cstdlib>
#include <fstream>
#include <iostream>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingLogger.h>

#include "SampleCopy.h"

int main(int, char** argv) {
    SampleCopy const copy(argv[1]);
    // Both are read when the first reference of the process is taken, and not again.
    setenv("QUVA_LOG_LEVEL", "3", 1); // Failures (0) and notices (3). Unset, nothing is traced.
    setenv("QUVA_LOG_PATH", copy.Path().c_str(), 1);
    {
        CallRecordingUtils::CCallRecordingAssistant assistant(true);
        assistant.ReloadCallRecordingRules();
        if (auto* const logger = assistant.GetLogger())
            logger->TRACE(3, true, "%d lines of the library stand above\n", 3);
    } // The last reference: the log is closed.
    std::ifstream log(copy.Path() + "callrecording.log");
    std::cout << log.rdbuf();
    return log ? 0 : 1;
}
