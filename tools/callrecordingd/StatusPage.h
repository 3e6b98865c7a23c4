// The page of the service: what it decides by, what it decided, and a form to try a call.

#ifndef CALLRECORDINGD_STATUSPAGE_H
#define CALLRECORDINGD_STATUSPAGE_H

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Answers.h"
#include "LiveRules.h"
#include "administration/check/FileFindings.h"

namespace callrecordingd {

/// Any number of threads may ask for it at once.
class StatusPage {
  public:
    /// started is in seconds since 1970.
    StatusPage(LiveRules const& rules, AnswerCounts const& counts, std::int64_t started);

    /// A page in one file, without scripts. tried is the call of the form, if there is one; it is
    /// not counted.
    std::string Html(std::optional<Question> const& tried);

  private:
    /// What check finds in the rule file, for the state that it was found in.
    struct Findings {
        std::string digest;
        std::string failure; ///< Why the file cannot be checked; empty when it can.
        std::vector<CallRecordingUtils::FileFinding> list;
    };
    Findings FindingsOf(std::string const& digest);

    LiveRules const& rules_;
    AnswerCounts const& counts_;
    std::int64_t const started_;
    std::mutex mutex_; // Guards findings_.
    Findings findings_;
};

} // namespace callrecordingd

#endif
