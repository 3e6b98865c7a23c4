// Opens the rule file, reads its rules, and finds an identifier for a new one.

#include "database/RuleFile.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace CallRecordingUtils {

std::string RuleFilePathIn(std::string_view directory) {
    return std::string(directory).append("telephony/").append("callrecordingdb");
}

std::int32_t NextRuleId(Configuration::MultiSectionFile& file) {
    SectionReader reader(file);
    std::int32_t greatest = -1;
    file.Restart();
    while (file.GotoNextSection() != 0)
        greatest = std::max(greatest, reader.ReadId().value_or(0));
    if (greatest == std::numeric_limits<std::int32_t>::max())
        throw std::overflow_error("no identifier is left after 2147483647");
    return greatest + 1;
}

RuleFile::RuleFile(std::string const& path)
    : file_(path.c_str(), true, false, false, nullptr, "{\n", "}\n", "=", "#", nullptr),
      reader_(file_) {
    file_.Restart();
}

CallRecordingRuleParams RuleFile::ReadRule() {
    CallRecordingRuleParams rule;
    rule.callrecordingrule_id = reader_.ReadId().value_or(rule.callrecordingrule_id);
    reader_.ReadRule(rule);
    return rule;
}

} // namespace CallRecordingUtils
