// A rule in words, and printed lists of rules.

#ifndef CALLRECORDINGCTL_OUTPUT_RULETEXT_H
#define CALLRECORDINGCTL_OUTPUT_RULETEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Rules.h"
#include "validation/SidePattern.h"
#include "json/RuleJson.h"

namespace callrecordingctl {

/// "on", "off", or "adv" for a rule that the basic view cannot show.
char const* StateText(Rule const& rule);

/// Call type and pattern in the entry form, marked when the pattern is malformed or empty.
std::string SideText(std::string const& stored, CallType type);

/// Both sides in words: from ... to ...
std::string SidesText(Rule const& rule);

/// Whether every call whose addresses are not empty satisfies both sides.
bool IsForEveryone(Rule const& rule);

/// The calls that a rule for everyone takes, in words.
char const* EveryoneText(Rule const& rule);

/// The destination; of a rule that forbids recording it says so.
std::string RecordToText(Rule const& rule);

/// The columns that list shows of a rule, and their headers.
std::vector<std::string> ListRow(Rule const& rule, std::size_t position);
std::vector<std::string> ListHeaders();

/// All of them, as list prints them.
nlohmann::ordered_json ListToJson(RuleList const& rules, std::string const& digest);

/// Prints all rules as list does, with the state of their file, which has this digest.
/// isNow: whether the file is in that state, and not only was.
void PrintRules(RuleList const& rules, std::string const& digest, bool json, bool isNow = true);

/// The same for some of the rules of the file, with their positions.
void PrintRules(RuleList const& rules, std::vector<std::size_t> const& positions,
                std::string const& digest, bool json, bool isNow = true);

/// Prints a document. Bytes that are not UTF-8 are printed as U+FFFD.
void PrintJson(nlohmann::ordered_json const& document);

} // namespace callrecordingctl

#endif
