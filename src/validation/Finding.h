// What a check found wrong, by its place in the text that was checked, and not yet in words.

#ifndef VALIDATION_FINDING_H
#define VALIDATION_FINDING_H

#include <cstddef>

#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

struct Finding {
    PatternFault fault;
    std::size_t position; // Of what the user should look at.
    std::size_t length;   // Of the part, from position on, that the message is about.
    char symbol = '\0';   // RepeatedSymbol only: the symbol, which may be inside a range.
};

} // namespace CallRecordingUtils

#endif
