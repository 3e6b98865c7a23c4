// Opens the rule file, and reads its rules.

#include "database/RuleFile.h"

#include "common/DecimalNumber.h"

namespace CallRecordingUtils {

std::string RuleFilePathIn(std::string_view directory) {
    return std::string(directory).append("telephony/").append("callrecordingdb");
}

RuleFile::RuleFile(std::string const& path)
    : file_(path.c_str(), true, false, false, nullptr, "{\n", "}\n", "=", "#", nullptr),
      reader_(file_) {
    file_.Restart();
}

CallRecordingRuleParams RuleFile::ReadRule() {
    CallRecordingRuleParams rule;
    if (char const* const id = reader_.Read(KEY_CALLRECORDINGRULE_ID))
        rule.callrecordingrule_id = ParseDecimal(id);
    reader_.ReadRule(rule);
    return rule;
}

} // namespace CallRecordingUtils
