// What the service answers to each request, whatever carries the requests.

#ifndef CALLRECORDINGD_SERVICE_H
#define CALLRECORDINGD_SERVICE_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Answers.h"
#include "LiveRules.h"
#include "StatusPage.h"

namespace callrecordingd {

class AnswerFile;

struct Request {
    std::string method;
    std::string path;
    std::vector<std::pair<std::string, std::string>> arguments; ///< Decoded, in their order.
};

struct Response {
    unsigned status = 0; ///< 0 until there is one.
    char const* type = "";
    std::string body;
};

/// Any number of threads may ask at once.
class Service {
  public:
    /// answers, unless null, gets a line for each answer.
    Service(LiveRules const& rules, AnswerFile* answers);

    Response Respond(Request const& request);

    static bool IsAllowed(std::string_view method) { return method == "GET" || method == "HEAD"; }

    /// Whether Respond may take so long that answers about calls would have to wait.
    static bool IsSlow(std::string_view path) { return path != "/decide" && path != "/healthz"; }

  private:
    Response RespondToDecide(Request const& request);
    Response State() const;
    Response Rules() const;
    Response Page(Request const& request);

    LiveRules const& rules_;
    AnswerFile* answers_;
    AnswerCounts counts_;
    std::int64_t const started_;
    StatusPage page_;
};

} // namespace callrecordingd

#endif
