// The rule file at a path: opens it and reads its rules one after the other.

#ifndef DATABASE_RULEFILE_H
#define DATABASE_RULEFILE_H

#include <cstdint>
#include <string>
#include <string_view>

#include <MultiSectionFile.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "database/RuleSection.h"

namespace CallRecordingUtils {

/// The configuration directory when the environment does not name one.
inline constexpr char kDefaultDirectory[] = "/etc/quva-conf/";

/// Returns the path of the rule file in a configuration directory. The two are joined as plain
/// text, so directory has to end in "/".
std::string RuleFilePathIn(std::string_view directory);

/// Returns one more than the greatest identifier in file, at least 0, and leaves the cursor after
/// the last section. Throws std::overflow_error when 32 bits have no such number.
std::int32_t NextRuleId(Configuration::MultiSectionFile& file);

/// The rule file, opened with the cursor before the first section. Every operation, and the
/// constructor, may throw an exception derived from std::exception, whose text says path, line (if
/// there is one) and reason.
class RuleFile {
  public:
    explicit RuleFile(std::string const& path);

    Configuration::MultiSectionFile& File() { return file_; }
    SectionReader& Reader() { return reader_; }

    /// Moves to the next section; returns whether there is one.
    bool Next() { return file_.GotoNextSection() != 0; }

    /// Reads the rule in the current section, including the identifier.
    CallRecordingRuleParams ReadRule();

    /// Writes the file to disk.
    void Save() { file_.Save(true, nullptr); }

  private:
    Configuration::MultiSectionFile file_;
    SectionReader reader_;
};

} // namespace CallRecordingUtils

#endif
