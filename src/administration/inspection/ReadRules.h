// Reads the rules of a rule file, or of a text that could be one.

#ifndef ADMINISTRATION_INSPECTION_READRULES_H
#define ADMINISTRATION_INSPECTION_READRULES_H

#include <string>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// The rules of the file at path; none when there is no such file. Throws a std::exception with
/// path, line and reason.
RuleList ReadRules(std::string const& path);

/// The rules of a rule file with this text. Throws an Error with name, line and reason.
RuleList RulesOf(std::string const& text, std::string const& name);

/// The bytes of the file at path, "-" for standard input. Throws an Error that names it.
std::string ReadInput(std::string const& path);

} // namespace CallRecordingUtils

#endif
