// The exported checks of patterns and range expressions.

#include <callrecordingutils/PatternValidation.h>

#include "validation/PatternCheck.h"
#include "validation/RangeCheck.h"
#include "validation/RejectionMessage.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {

bool IsPatternIncorrect(std::string& pattern) {
    return CheckAndStoreEscapes(pattern).has_value();
}

std::optional<PatternRejection> ExplainPattern(std::string const& pattern) {
    return RejectPattern(pattern);
}

std::optional<PatternProblem> SuspectPattern(std::string const& pattern) {
    return SuspectEntry(pattern, CALL_TYPE_NUMBER);
}

bool IsRangeCorrect(std::string const& range) {
    return !CheckRange(range);
}

std::optional<PatternRejection> ExplainRange(std::string const& range) {
    if (auto const finding = CheckRange(range))
        return Reject(*finding, range, range);
    return std::nullopt;
}

} // namespace CallRecordingUtils
