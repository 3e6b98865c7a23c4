// What a service answered when calls were set up, from the file of its --answers.

#ifndef RECORDS_COUNTING_ANSWERSGIVEN_H
#define RECORDS_COUNTING_ANSWERSGIVEN_H

#include <string>
#include <unordered_map>

#include "records/counting/Reconciliation.h"

namespace CallRecordingUtils {

/// Takes memory for each call that has an identifier. Any number of threads may ask at once.
class AnswersGiven {
  public:
    /// Throws an Error that names the file and the line.
    explicit AnswersGiven(std::string const& path);

    /// What was answered for the call with this identifier; the last time, if there were several.
    Answer To(std::string const& id) const {
        auto const found = byId_.find(id);
        return found == byId_.end() ? Answer::None : found->second;
    }

  private:
    std::unordered_map<std::string, Answer> byId_;
};

} // namespace CallRecordingUtils

#endif
