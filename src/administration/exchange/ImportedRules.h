// The rules of a file for import, checked, and the rules that a rule file has after the import.

#ifndef ADMINISTRATION_EXCHANGE_IMPORTEDRULES_H
#define ADMINISTRATION_EXCHANGE_IMPORTEDRULES_H

#include <optional>
#include <string>
#include <vector>

#include "administration/exchange/RuleRecord.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

struct ImportedRule {
    Rule rule;
    bool hasId = false;     ///< Else the identifier of rule means nothing.
    bool isPresent = false; ///< The rule file has an equal rule already; see KeepPresent.
    std::size_t line = 0;
    std::optional<std::size_t> same{}; ///< The place of such a rule before; see FindSame.
    std::vector<ImportFault> faults{}; ///< Why it cannot be a rule.
};

enum class ImportFormat { Csv, Json, RuleFile };

/// A file for import.
struct ImportFile {
    std::string text;
    ImportFormat format = ImportFormat::Csv;
    std::vector<ImportFault> faults{}; ///< What could not be read at all.
    std::vector<ImportFault> notes{};  ///< What was passed over.
    std::vector<RuleRecord> records{};
    std::vector<ImportedRule> rules{}; ///< By the index of the record.
};

/// Reads and checks the rules in text, which is in one of the formats; name is what errors call it.
/// The columns of a table may be renamed. Throws an Error if it looks like a rule file but is
/// malformed, or is UTF-16 that is.
ImportFile ReadImport(std::string const& text, std::string const& name,
                      RenamedColumns const& renamed = {});

/// The rule that record gives, and what is wrong with it.
ImportedRule RuleOf(RuleRecord const& record);

/// For an import that replaces the rules before: a record that is exactly what export prints for
/// one of them, or that is equal to it in a rule file, is that rule, whatever is wrong with it.
void KeepPresent(RuleList const& before, ImportFile& file);

/// For an import that adds to the rules before: finds for each rule one of these that says the
/// same, apart from identifier and state.
void FindSame(RuleList const& before, ImportFile& file);

/// The rules after an import that replaces the rules before, or adds to them. A rule without an
/// identifier gets that of a rule before with the same fields, if it replaces, or else the next
/// free one; when rules are added all of them do. Throws an Error if no identifier is left.
RuleList RulesAfter(RuleList const& before, std::vector<ImportedRule> const& imported,
                    bool replaces);

} // namespace CallRecordingUtils

#endif
