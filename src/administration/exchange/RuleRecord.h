// A rule as a file for import gives it, before anything in it is checked.

#ifndef ADMINISTRATION_EXCHANGE_RULERECORD_H
#define ADMINISTRATION_EXCHANGE_RULERECORD_H

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "administration/exchange/RuleColumns.h"
#include "model/RuleList.h"
#include "json/Names.h"

namespace CallRecordingUtils {

/// Something wrong in a file for import.
struct ImportFault {
    std::size_t line;
    std::string message;
};

/// The fields of a rule as texts. Fields that the file leaves out are missing.
struct RuleRecord {
    struct Value {
        std::string text;
        std::size_t line = 0;
        std::string name{}; ///< As the file calls the field.
    };
    std::size_t line = 0;
    std::map<RuleMember, Value> values{};

    /// All fields in one text: two records have the same text only if their fields are equal.
    std::string AllFields() const;
};

struct RuleRecords {
    std::vector<RuleRecord> records;
    std::vector<ImportFault> faults;  ///< What could not be read at all.
    std::vector<ImportFault> notes{}; ///< What was passed over.
};

/// Columns that a table calls otherwise, or that are meant by their number, counted from 1.
using RenamedColumns = std::vector<std::pair<RuleColumn const*, std::string>>;

/// Reads what "list --json" or "show --json" prints.
RuleRecords ReadJsonRules(std::string const& text);

/// Reads values separated by commas, semicolons or tabs below a row of column names.
RuleRecords ReadCsvRules(std::string const& text, RenamedColumns const& renamed);

/// Reads a rule file. Throws an Error with name, line and reason if it is malformed.
RuleRecords ReadRuleFileRules(std::string const& text, std::string const& name);

/// The record that is read from what export prints for rule.
RuleRecord JsonRecordOf(Rule const& rule);
RuleRecord CsvRecordOf(Rule const& rule);

} // namespace CallRecordingUtils

#endif
