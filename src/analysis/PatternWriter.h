// Writes a set of addresses down as patterns.

#ifndef ANALYSIS_PATTERNWRITER_H
#define ANALYSIS_PATTERNWRITER_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "analysis/SideLanguage.h"

namespace CallRecordingUtils {

/// The addresses that satisfy a rule side.
struct AddressPattern {
    std::string pattern; ///< In the stored form.
    CallType type;
    /// Only addresses of this call type are meant: of typed calls their own, of parties SIP for
    /// those with a host and number for those without. Without it, all that satisfy the side.
    std::optional<CallType> only;
};

/// Patterns that satisfy exactly the addresses of language, of parties or typed calls; no two of
/// them the same one. Nothing when no patterns of the form prefix or prefix* do, or more than most.
std::optional<std::vector<AddressPattern>> WritePatterns(SideLanguage const& language,
                                                         CallKind calls, std::size_t most);

} // namespace CallRecordingUtils

#endif
