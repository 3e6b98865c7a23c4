// What is wrong with a rule file, in words and in JSON.

#ifndef CALLRECORDINGCTL_OUTPUT_FINDINGTEXT_H
#define CALLRECORDINGCTL_OUTPUT_FINDINGTEXT_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "administration/check/FileFindings.h"
#include "model/RuleList.h"

namespace callrecordingctl {

nlohmann::ordered_json FindingToJson(FileFinding const& finding, RuleList const& rules);

/// Prints findings about the rules of the file that is called name; the notes among them only
/// withNotes.
void PrintFindings(std::vector<FileFinding> const& findings, RuleList const& rules,
                   std::string const& name, bool withNotes);

/// Prints how many there are; they are about calls of the one kind.
void PrintSummary(std::vector<FileFinding> const& findings, RuleList const& rules, CallKind calls,
                  bool withNotes);

} // namespace callrecordingctl

#endif
