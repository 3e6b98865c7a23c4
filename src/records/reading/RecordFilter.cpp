// Compares values.

#include "records/reading/RecordFilter.h"

#include <stdexcept>

namespace CallRecordingUtils {

Condition ReadCondition(std::string const& text) {
    std::size_t const sign = text.find('=');
    if (sign == std::string::npos)
        throw std::invalid_argument("it takes COLUMN=VALUE or COLUMN!=VALUE");
    bool const isEqual = sign == 0 || text[sign - 1] != '!';
    std::string const column = text.substr(0, isEqual ? sign : sign - 1);
    if (column.empty())
        throw std::invalid_argument("no column is named before the \"=\"");
    return {column, isEqual, text.substr(sign + 1)};
}

void RecordFilter::Begin(CallFormat& format, std::vector<std::string> const& distinct,
                         SeenValues* seen) {
    conditions_ = format.where;
    first_ = format.wanted.size();
    for (Condition const& condition : conditions_)
        format.wanted.push_back({{condition.column}, "--where"});
    isDistinct_ = !distinct.empty();
    if (isDistinct_)
        format.wanted.push_back({distinct, "--distinct"});
    seen_ = seen != nullptr ? seen : &own_;
}

bool RecordFilter::Takes(CallRecord const& record) {
    if (record.wanted.empty())
        return true;
    for (std::size_t i = 0; i < conditions_.size(); ++i)
        if ((record.wanted[first_ + i] == conditions_[i].value) != conditions_[i].isEqual)
            return false;
    if (!isDistinct_ || !record.problem.empty())
        return true;
    std::string const& value = record.wanted[first_ + conditions_.size()];
    return value.empty() || seen_->insert(value).second;
}

} // namespace CallRecordingUtils
