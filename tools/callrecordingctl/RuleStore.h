/// @file
/// The rule file as the commands see it: where it lies, whether it is there, and its rules.

#ifndef CALLRECORDINGCTL_RULESTORE_H
#define CALLRECORDINGCTL_RULESTORE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <MultiSectionFile.h>

#include <callrecordingutils/CCallRecordingDB.h>

namespace callrecordingctl {

using Rule = CallRecordingUtils::CallRecordingRuleParams;
/// The rules in the order of evaluation; a rule's position is its index plus 1.
using RuleList = std::vector<Rule>;

/// Makes directory the configuration directory of this process.
void UseConfiguration(std::string const& directory);

/// The path of the rule file.
std::string RuleFilePath();

/// The file as the library opens it. Throws as MultiSectionFile does.
std::unique_ptr<Configuration::MultiSectionFile> OpenRuleFile();

/// Whether there is a rule file. Throws a Failure when there is no configuration directory either.
bool HasRuleFile();

/// A reference on the library's database, held for the life of the object.
class RuleStore {
  public:
    RuleStore();
    ~RuleStore();
    RuleStore(RuleStore const&) = delete;
    RuleStore& operator=(RuleStore const&) = delete;

    CallRecordingUtils::CCallRecordingDB& Database() { return *mpDatabase; }

    /// Reads the file, in basic view if asked. A file that is missing has no rules, which is said
    /// on standard error. Throws a Failure with path, line and reason.
    RuleList Load(bool basicView = false);

    /// Load without that word.
    RuleList Reload();

  private:
    CallRecordingUtils::CCallRecordingDB* mpDatabase;
};

/// The index of the rule with the identifier id. Throws a Failure when there is none or more than
/// one.
std::size_t FindRule(RuleList const& rules, std::int32_t id);

/// Throws the Failure that says that several rules have the identifier id.
[[noreturn]] void FailAmbiguous(std::int32_t id);

} // namespace callrecordingctl

#endif
