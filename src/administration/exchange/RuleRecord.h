// A rule as a file of rules for import tells it, before anything of it is checked.

#ifndef ADMINISTRATION_EXCHANGE_RULERECORD_H
#define ADMINISTRATION_EXCHANGE_RULERECORD_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace CallRecordingUtils {

/// Something wrong with a file for import.
struct ImportFault {
    std::size_t line;
    std::string message;
};

/// The names of the values are those of the options of add, with "_" for "-", and id and enabled.
/// Where JSON says a thing twice there are also from_stored, to_stored, from_type_name,
/// to_type_name, state and state_name.
struct RuleRecord {
    struct Value {
        std::string text;
        std::size_t line;
        std::string name; // As the file calls it.
    };
    std::size_t line = 0;
    std::map<std::string, Value> values;
};

struct RuleRecords {
    std::vector<RuleRecord> records;
    std::vector<ImportFault> faults; // What could not be read at all.
};

/// Reads what list --json or show --json prints.
RuleRecords ReadJsonRules(std::string const& text);

/// Reads comma- or semicolon-separated values under a row of names. source names them in faults.
RuleRecords ReadCsvRules(std::string const& path);

} // namespace CallRecordingUtils

#endif
