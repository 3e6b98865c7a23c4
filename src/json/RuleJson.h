// A rule as JSON, under the names that "list --json" prints and import reads.

#ifndef JSON_RULEJSON_H
#define JSON_RULEJSON_H

#include <cstddef>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// The record under its field names, its position, and what its numbers mean; the man page lists
/// them. state is the token of the file that holds the rule, or empty to leave it out.
nlohmann::ordered_json ToJson(Rule const& rule, std::size_t position,
                              std::string const& state = "");

/// An array of rules at these positions.
nlohmann::ordered_json ToJson(RuleList const& rules, std::vector<std::size_t> const& positions,
                              std::string const& state);

} // namespace CallRecordingUtils

#endif
