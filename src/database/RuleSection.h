// How a section of the rule file holds a rule: reads it into a record, and makes its entries from
// one.

#ifndef DATABASE_RULESECTION_H
#define DATABASE_RULESECTION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <MultiSectionFile.h>
#include <SmartBuffer.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "database/RuleKeys.h"

namespace CallRecordingUtils {

/// Reads entries of the current section of a rule file.
class SectionReader {
  public:
    /// file must outlive the reader.
    explicit SectionReader(Configuration::MultiSectionFile& file) : file_(file) {}

    /// Returns the value of key, valid until the next read; the empty text when the section does
    /// not have the key, and null when the platform's buffer is not usable: then nothing was read.
    char const* Read(RuleFileKeys key);

    /// Reads every field but the identifier into rule. A field that cannot be read is unchanged.
    void ReadRule(CallRecordingRuleParams& rule);

    /// Returns the identifier as a number, 0 when the section has none. Returns nothing when the
    /// platform's buffer is not usable: then the section matches no identifier.
    std::optional<std::int32_t> ReadId();

  private:
    void ReadText(RuleFileKeys key, std::string& field);
    void ReadCallType(RuleFileKeys key, CallType& field);

    Configuration::MultiSectionFile& file_;
    SmartBuffer buffer_;
};

/// A key and its value.
struct SectionEntry {
    RuleFileKeys key;
    std::string text;
};

/// Returns the ten entries of a rule, in the order in which they are written.
std::vector<SectionEntry> RuleEntries(CallRecordingRuleParams const& rule);

/// Returns the four entries that a rule shares with its twin: recording type, destination, duration
/// and state.
std::vector<SectionEntry> RecordingSettings(CallRecordingRuleParams const& rule);

/// Returns the entry for the state of a rule.
SectionEntry StateEntry(bool enabled);

/// Sets entries in the current section of file; does not save. The file class decides which values
/// it can store, and throws for others; the entries before that one are set then. Since it takes C
/// strings it cannot see a NUL, so a value with a NUL throws here, before any entry is set.
void SetEntries(Configuration::MultiSectionFile& file, std::vector<SectionEntry> const& entries);

} // namespace CallRecordingUtils

#endif
