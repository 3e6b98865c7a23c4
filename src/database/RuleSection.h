// The one encoding of a rule in a section of the rule file: read into a record, and written from
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

/// Reads the current section of a rule file, one entry at a time.
class SectionReader {
  public:
    /// file must outlive the reader.
    explicit SectionReader(Configuration::MultiSectionFile& file) : file_(file) {}

    /// Returns the text of key, valid until the next read; the empty text when the section lacks
    /// it. Null when the scratch buffer is not usable: there is no value then.
    char const* Read(RuleFileKeys key);

    /// Reads every field but the identifier into rule. A field without a value is left as it is.
    void ReadRule(CallRecordingRuleParams& rule);

    /// Reads the identifier as a number, 0 when the section lacks it. Nothing when the scratch
    /// buffer is not usable: such a section matches no identifier.
    std::optional<std::int32_t> ReadId();

  private:
    void ReadText(RuleFileKeys key, std::string& field);
    void ReadCallType(RuleFileKeys key, CallType& field);

    Configuration::MultiSectionFile& file_;
    SmartBuffer buffer_;
};

/// The value of one key of a section.
struct SectionEntry {
    RuleFileKeys key;
    std::string text;
};

/// The ten entries of a rule, in the order in which they are written.
std::vector<SectionEntry> RuleEntries(CallRecordingRuleParams const& rule);

/// The four of them that a rule and its mirrored twin share: type, destination, duration and state.
std::vector<SectionEntry> RecordingSettings(CallRecordingRuleParams const& rule);

/// The state alone.
SectionEntry StateEntry(bool enabled);

/// Sets entries in the current section of file; does not save. What a text may be is the file
/// class's to say, which throws; some of the entries may be set then. Only a NUL would pass it
/// unseen, as it takes C texts: a text with one throws before anything is set.
void SetEntries(Configuration::MultiSectionFile& file, std::vector<SectionEntry> const& entries);

} // namespace CallRecordingUtils

#endif
