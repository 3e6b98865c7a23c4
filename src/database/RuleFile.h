// The rule file at a path: how it is opened, and its rules one after the other.

#ifndef DATABASE_RULEFILE_H
#define DATABASE_RULEFILE_H

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

    /// Walks from the first section on to the first one that wanted(Reader()) accepts. Returns
    /// whether there is one; it is then the current section.
    template <typename Wanted>
    bool Find(Wanted wanted) {
        file_.Restart();
        while (Next())
            if (wanted(reader_))
                return true;
        return false;
    }

    /// Writes the file to disk.
    void Save() { file_.Save(true, nullptr); }

  private:
    Configuration::MultiSectionFile file_;
    SectionReader reader_;
};

} // namespace CallRecordingUtils

#endif
