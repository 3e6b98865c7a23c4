// Rules for import, checked.

#ifndef ADMINISTRATION_EXCHANGE_IMPORTEDRULES_H
#define ADMINISTRATION_EXCHANGE_IMPORTEDRULES_H

#include <optional>
#include <string>
#include <vector>

#include "administration/exchange/RuleRecord.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

struct ImportedRule {
    Rule rule; ///< The identifier is -1 where the file names none.
    std::size_t line;
    std::vector<ImportFault> faults;
};

/// Reads and checks the rules in the file at path, "-" for standard input: JSON, or else
/// comma-separated values. faults gets what is no rule at all. Throws an Error when path cannot be
/// read.
std::vector<ImportedRule> ReadImport(std::string const& path, std::vector<ImportFault>& faults);

} // namespace CallRecordingUtils

#endif
