// Rules as blocks of lines "name: value", which people change in an editor.

#ifndef ADMINISTRATION_EXCHANGE_RULEBLOCKS_H
#define ADMINISTRATION_EXCHANGE_RULEBLOCKS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "administration/edit/RuleEdit.h"
#include "administration/exchange/RuleRecord.h"

namespace CallRecordingUtils {

/// Rules of a list that are open in an editor.
struct OpenRules {
    RuleList rules;                  ///< All of the list.
    std::vector<std::size_t> places; ///< Of those that are open, ascending.
};

/// The blocks of the open rules, with the names of RuleColumns.h and a blank line between them.
/// Bytes that are no UTF-8 are written as ToUtf8 does; quotes keep blanks at the ends of a value.
std::string BlocksOf(OpenRules const& open);

/// A block that came back.
struct RuleBlock {
    std::optional<std::size_t> origin; ///< The place of the rule in the list; none for a new one.
    Rule rule;                         ///< A new one has no identifier yet.
    bool isChanged;                    ///< Always of a new one.
    std::size_t line;                  ///< Where it begins.
};

struct ReadBlocks {
    std::vector<RuleBlock> blocks;
    std::vector<ImportFault> faults;
};

/// Reads what became of the text of BlocksOf. A block says by its id which rule it is; without one
/// it is a new rule. Lines that begin with # are comments. A field that a block leaves out stays as
/// it is, or is that of a new rule. What is not changed is not checked.
ReadBlocks ReadRuleBlocks(std::string const& text, OpenRules const& open);

/// Returns text with the faults above their lines, as comments that begin with "#!"; those that
/// were there before are gone.
std::string WithFaults(std::string const& text, std::vector<ImportFault> const& faults);

/// Has edit make of the open rules what the blocks say: open rules without a block are deleted, new
/// ones follow the block above them, and rules whose blocks change their order exchange their
/// places. Throws an Error if the rules that are open are not in the file any more as they were.
void Apply(RuleEdit& edit, OpenRules const& open, std::vector<RuleBlock> const& blocks);

} // namespace CallRecordingUtils

#endif
