// Compares records.

#include "administration/exchange/RuleRecord.h"

#include <fmt/format.h>

namespace CallRecordingUtils {

std::string RuleRecord::AllFields() const {
    std::string all;
    for (auto const& [member, value] : values) // With their lengths: texts may hold anything.
        all += fmt::format("{}:{}:{}", static_cast<int>(member), value.text.size(), value.text);
    return all;
}

} // namespace CallRecordingUtils
