// Finds columns by their names, and writes fields.

#include "administration/exchange/RuleColumns.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include <fmt/format.h>

#include "model/CallTypeNames.h"
#include "text/Similar.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

std::string PlainName(std::string const& name) {
    std::string plain;
    for (char const c : name)
        if (c != ' ')
            plain +=
                c == '-' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return plain;
}

template <typename IsWanted>
RuleColumn const* Find(IsWanted isWanted) {
    auto const found = std::find_if(kRuleColumns.begin(), kRuleColumns.end(), isWanted);
    return found != kRuleColumns.end() ? &*found : nullptr;
}

} // namespace

std::string FieldNames() {
    std::string names;
    for (RuleColumn const& column : kRuleColumns)
        names += fmt::format("{}{}", names.empty() ? "" : ",", column.name);
    return names;
}

RuleColumn const* ColumnOf(std::string const& name) {
    std::string const plain = PlainName(name);
    return Find([&plain](RuleColumn const& column) { return column.name == plain; });
}

RuleColumn const* SimilarColumn(std::string const& name) {
    constexpr std::size_t kShortest = 4; // Among shorter names all are similar.
    std::string const plain = PlainName(name);
    return Find([&plain](RuleColumn const& column) {
        std::size_t const size = std::strlen(column.name);
        return size >= kShortest && plain.size() >= kShortest &&
               Distance(plain, column.name) <= size / kShortest;
    });
}

std::array<std::string, kRuleColumns.size()> FieldsOf(Rule const& rule) {
    return {std::to_string(rule.callrecordingrule_id),
            ToEntry(rule.caller_pattern, rule.caller_call_type),
            CallTypeName(rule.caller_call_type),
            ToEntry(rule.called_pattern, rule.called_call_type),
            CallTypeName(rule.called_call_type),
            rule.record_to,
            rule.recording_duration,
            rule.description,
            std::to_string(rule.call_recording_type),
            rule.recording_rule_state == RULE_ENABLED ? "yes" : "no"};
}

} // namespace CallRecordingUtils
