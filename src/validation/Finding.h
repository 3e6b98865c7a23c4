// What a check found wrong, in the text as it was checked and not yet in words.

#ifndef VALIDATION_FINDING_H
#define VALIDATION_FINDING_H

#include <cstddef>

#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {

struct Finding {
    PatternFault fault;
    std::size_t position; // Of what the user has to look at.
    std::size_t length;   // Of the text from position on that the sentence is about.
    char symbol = '\0';   // RepeatedSymbol: the symbol, which a range in the text only implies.
};

} // namespace CallRecordingUtils

#endif
