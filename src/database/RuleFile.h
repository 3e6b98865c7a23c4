// The rule file at a path: how it is opened, and its rules one after the other.

#ifndef DATABASE_RULEFILE_H
#define DATABASE_RULEFILE_H

#include <cstdint>
#include <string>
#include <string_view>

#include <MultiSectionFile.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "database/RuleSection.h"

namespace CallRecordingUtils {

/// The configuration directory when the environment names none.
inline constexpr char kDefaultDirectory[] = "/etc/quva-conf/";

/// The path of the rule file in a configuration directory; joined as plain text, so directory ends
/// in "/".
std::string RuleFilePathIn(std::string_view directory);

/// Returns one more than the greatest identifier in file, at least 0, and leaves the cursor behind
/// the last section. Throws std::overflow_error when there is no such number.
std::int32_t NextRuleId(Configuration::MultiSectionFile& file);

/// The rule file, opened with the cursor before the first section. Every operation, the constructor
/// included, throws an exception derived from std::exception whose text says path, line (where
/// there is one) and reason.
class RuleFile {
  public:
    explicit RuleFile(std::string const& path);

    Configuration::MultiSectionFile& File() { return file_; }
    SectionReader& Reader() { return reader_; }

    /// Moves to the next section; returns whether there is one.
    bool Next() { return file_.GotoNextSection() != 0; }

    /// Reads the rule of the current section, the identifier included.
    CallRecordingRuleParams ReadRule();

    /// Writes the file to disk.
    void Save() { file_.Save(true, nullptr); }

  private:
    Configuration::MultiSectionFile file_;
    SectionReader reader_;
};

} // namespace CallRecordingUtils

#endif
