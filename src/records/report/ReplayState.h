// What a replay counted, for another process to add to what it counted itself.

#ifndef RECORDS_REPORT_REPLAYSTATE_H
#define RECORDS_REPORT_REPLAYSTATE_H

#include <string>
#include <vector>

#include "records/report/ReplayFacts.h"

namespace CallRecordingUtils {

/// One line of JSON, without the line end, from which ReadStates makes the same state.
std::string StateLine(ReplayState const& state);

/// Reads the states in a file, one on each line; "-" is standard input. Throws an Error that names
/// the file and the line.
std::vector<ReplayState> ReadStates(std::string const& path);

/// Adds a state whose calls come after those of to. Throws an Error that names name, where it is
/// from, if it was counted by other rules or in another way.
void AddState(ReplayState& to, ReplayState&& state, std::string const& name);

} // namespace CallRecordingUtils

#endif
