// Rules as JSON, under the names of Names.h.

#ifndef JSON_RULEJSON_H
#define JSON_RULEJSON_H

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// All fields of rule, its position, and what its numbers mean. digest is that of the file that
/// holds the rule, or empty to leave it out; its first digits are the state. Bytes that are no
/// UTF-8 are written as ToUtf8 does.
nlohmann::ordered_json ToJson(Rule const& rule, std::size_t position,
                              std::string const& digest = "");

/// What the rule does with a call that it decides, without its sides and state.
nlohmann::ordered_json OutcomeToJson(Rule const& rule, std::size_t position);

/// An array of rules that have these positions.
nlohmann::ordered_json ToJson(RuleList const& rules, std::vector<std::size_t> const& positions,
                              std::string const& digest);

} // namespace CallRecordingUtils

#endif
