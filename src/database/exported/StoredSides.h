// The sides of a section of the rule file, in the form in which edits look for a rule and its twin.

#ifndef DATABASE_STOREDSIDES_H
#define DATABASE_STOREDSIDES_H

#include <cstdint>
#include <string>

#include "common/DecimalNumber.h"
#include "database/RuleSection.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {

/// Patterns as text, and call types as the numbers in the file, which need not be call types.
class StoredSides {
  public:
    /// Reads the sides of a section. A missing key counts as an empty pattern or as type 0.
    explicit StoredSides(SectionReader& section)
        : callerPattern_(Text(section, KEY_CALLER_PATTERN)),
          calledPattern_(Text(section, KEY_CALLED_PATTERN)),
          callerType_(ParseDecimal(Text(section, KEY_CALLER_CALL_TYPE))),
          calledType_(ParseDecimal(Text(section, KEY_CALLED_CALL_TYPE))) {}

    bool operator==(RuleSides const& sides) const {
        return RuleSides{{callerPattern_, callerType_}, {calledPattern_, calledType_}} == sides;
    }

  private:
    static std::string Text(SectionReader& section, RuleFileKeys key) {
        char const* const value = section.Read(key);
        return value != nullptr ? value : "";
    }

    std::string callerPattern_;
    std::string calledPattern_;
    std::int32_t callerType_;
    std::int32_t calledType_;
};

} // namespace CallRecordingUtils

#endif
