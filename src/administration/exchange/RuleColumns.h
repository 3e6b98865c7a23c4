// The names that fields of rules have where people write them: in tables and in blocks.

#ifndef ADMINISTRATION_EXCHANGE_RULECOLUMNS_H
#define ADMINISTRATION_EXCHANGE_RULECOLUMNS_H

#include <array>
#include <optional>
#include <string>

#include "model/RuleList.h"
#include "json/Names.h"

namespace CallRecordingUtils {

struct RuleColumn {
    char const* name;
    RuleMember member;
};

/// In the order in which they are written.
inline constexpr std::array<RuleColumn, 10> kRuleColumns{
    {{"id", RuleMember::Id},
     {"from", RuleMember::CallerEntry},
     {"from_type", RuleMember::CallerType},
     {"to", RuleMember::CalledEntry},
     {"to_type", RuleMember::CalledType},
     {"record_to", RuleMember::RecordTo},
     {"duration", RuleMember::Duration},
     {"description", RuleMember::Description},
     {"recording_type", RuleMember::RecordingType},
     {"enabled", RuleMember::Enabled}}};

/// All names, separated by commas.
std::string FieldNames();

/// The column with this name, null if there is none. Blanks and capitals make no difference, nor
/// does "-" for "_".
RuleColumn const* ColumnOf(std::string const& name);

/// The column of which name may be a mistyped form; null if there is none.
RuleColumn const* SimilarColumn(std::string const& name);

/// The fields of rule by the index of their column.
std::array<std::string, kRuleColumns.size()> FieldsOf(Rule const& rule);

} // namespace CallRecordingUtils

#endif
