// Where it is known which calls were recorded, and what was answered about them.

#ifndef CALLRECORDINGCTL_COMMANDS_REPLAYTRUTH_H
#define CALLRECORDINGCTL_COMMANDS_REPLAYTRUTH_H

#include <optional>
#include <string>

#include "CommandLine.h"
#include "Names.h"
#include "records/counting/AnswersGiven.h"
#include "records/counting/RecordingFolder.h"
#include "records/counting/Replay.h"

namespace callrecordingctl {

struct TruthOptions {
    std::string recordedColumn;
    std::string folder;
    std::string idColumn;
    std::string answers;
    bool isStrict = false;
};

void AddTruth(CLI::App& replay, TruthOptions& options);

/// Lives as long as the replay that asks it.
class ReplayTruth {
  public:
    /// Reads what is asked for, and adds what the replay needs to how. Throws an Error.
    ReplayTruth(TruthOptions const& options, Replay::Options& how);
    ReplayTruth(ReplayTruth const&) = delete;
    ReplayTruth& operator=(ReplayTruth const&) = delete;

  private:
    std::optional<RecordingFolder> folder_;
    std::optional<AnswersGiven> answers_;
};

} // namespace callrecordingctl

#endif
