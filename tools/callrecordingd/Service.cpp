// Routes requests, and reads questions out of their arguments.

#include "Service.h"

#include <ctime>
#include <optional>
#include <stdexcept>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "AnswerFile.h"
#include "Metrics.h"

namespace callrecordingd {

using namespace CallRecordingUtils;

namespace {

constexpr unsigned kOk = 200;
constexpr unsigned kBadRequest = 400;
constexpr unsigned kNotFound = 404;
constexpr unsigned kNotAllowed = 405;
constexpr unsigned kUnavailable = 503;
constexpr char kJson[] = "application/json";
constexpr char kText[] = "text/plain; charset=utf-8";

/// A request that cannot be answered. what() is for whoever wrote it.
class BadRequest : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

std::string Dumped(nlohmann::ordered_json const& json) {
    return json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

Response Error(unsigned status, std::string const& reason) {
    return {status, kJson, Dumped({{"error", reason}})};
}

/// Takes the arguments of a request one by one, so that what nobody takes is noticed.
class Arguments {
  public:
    explicit Arguments(Request const& request) : left_(request.arguments) {}

    std::optional<std::string> Take(std::string const& name) {
        std::optional<std::string> value;
        for (auto at = left_.begin(); at != left_.end();) {
            if (at->first != name) {
                ++at;
                continue;
            }
            if (value)
                throw BadRequest(name + " is given twice");
            value = at->second;
            at = left_.erase(at);
        }
        return value;
    }

    void RequireNoneLeft() const {
        if (!left_.empty())
            throw BadRequest("there is no parameter " + left_.front().first);
    }

  private:
    std::vector<std::pair<std::string, std::string>> left_;
};

AskedParty TakeParty(Arguments& arguments, std::string const& name) {
    auto const address = arguments.Take(name);
    if (!address)
        throw BadRequest(name + " is missing");
    if (!address->empty() && address->front() == ' ')
        throw BadRequest(name + " begins with a blank; write a \"+\" as %2B");
    return {*address, arguments.Take(name + "_host"), arguments.Take(name + "_port")};
}

Question TakeQuestion(Arguments& arguments) {
    Question question;
    question.from = TakeParty(arguments, "from");
    question.to = TakeParty(arguments, "to");
    question.id = arguments.Take("id").value_or("");
    return question;
}

std::string TextOf(AskedParty const& party) {
    if (!party.host && !party.port)
        return party.address;
    return party.address + "@" + party.host.value_or("") +
           (party.port && !party.port->empty() ? ":" + *party.port : "");
}

std::string LineOf(Question const& question, Answer const& answer) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    nlohmann::ordered_json line{
        {"time", fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(now.tv_sec),
                             now.tv_nsec / 1000000)},
        {"id", question.id},
        {"from", TextOf(question.from)},
        {"to", TextOf(question.to)},
        {"recorded", nullptr},
        {"rule", nullptr},
        {"state", nullptr}};
    if (answer.verdict != Verdict::Undecided) {
        line["recorded"] = answer.verdict == Verdict::Recorded;
        line["state"] = answer.rules->state;
    }
    if (answer.Rule() != nullptr)
        line["rule"] = answer.Rule()->callrecordingrule_id;
    return line.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

Service::Service(LiveRules const& rules, AnswerFile* answers)
    : rules_(rules), answers_(answers), started_(std::time(nullptr)),
      page_(rules, counts_, started_) {}

Response Service::Respond(Request const& request) {
    if (!IsAllowed(request.method))
        return Error(kNotAllowed, "only GET is allowed: nothing can be changed here");
    try {
        if (request.path == "/decide")
            return RespondToDecide(request);
        if (request.path == "/metrics")
            return {kOk, "text/plain; version=0.0.4; charset=utf-8",
                    MetricsText(rules_, counts_, answers_ != nullptr ? answers_->LostLines() : 0)};
        if (request.path == "/healthz")
            return rules_.Now() != nullptr
                       ? Response{kOk, kText, "ok\n"}
                       : Response{kUnavailable, kText, "no rules were read yet\n"};
        if (request.path == "/state")
            return State();
        if (request.path == "/rules")
            return Rules();
        if (request.path == "/")
            return Page(request);
    } catch (BadRequest const& bad) {
        return Error(kBadRequest, bad.what());
    }
    return Error(kNotFound,
                 "there are /decide, /rules, /state, /metrics, /healthz and, for people, /");
}

Response Service::RespondToDecide(Request const& request) {
    Arguments arguments(request);
    Question const question = TakeQuestion(arguments);
    std::string const format = arguments.Take("format").value_or("json");
    if (format != "json" && format != "text")
        throw BadRequest("format is json or text");
    arguments.RequireNoneLeft();
    auto const begin = std::chrono::steady_clock::now();
    Answer const answer = Decide(rules_, question);
    counts_.Count(answer, std::chrono::steady_clock::now() - begin);
    if (answers_ != nullptr)
        answers_->Append(LineOf(question, answer));
    unsigned const status = answer.verdict == Verdict::Undecided ? kUnavailable : kOk;
    return format == "text" ? Response{status, kText, answer.Line() + "\n"}
                            : Response{status, kJson, answer.Json() + "\n"};
}

/// What callrecordingctl status asks for.
Response Service::State() const {
    auto const now = rules_.Now();
    LoadHistory const history = rules_.History();
    nlohmann::ordered_json state{{"file", rules_.Path()},
                                 {"state", nullptr},
                                 {"digest", nullptr},
                                 {"rules", nullptr},
                                 {"loaded", nullptr},
                                 {"started", started_},
                                 {"loads", history.loads},
                                 {"failed_loads", history.failedLoads},
                                 {"last_load", history.latest.front().notice},
                                 {"last_load_time", history.latest.front().time},
                                 {"last_load_failed", history.latest.front().hasFailed}};
    if (now != nullptr) {
        state["state"] = now->state;
        state["digest"] = now->loaded->digest;
        state["rules"] = now->texts.size();
        state["loaded"] = now->loaded->time;
    }
    return {kOk, kJson, Dumped(state)};
}

Response Service::Rules() const {
    auto const now = rules_.Now();
    if (now == nullptr)
        return Error(kUnavailable, "no rules were read yet");
    std::string body = "[";
    for (std::string const& rule : now->texts) {
        body += body.size() > 1 ? ",\n" : "\n";
        body.append(rule, 0, rule.size() - 1); // Without the brace.
        body += ",\"file_state\":\"" + now->state + "\",\"file_digest\":\"" + now->loaded->digest +
                "\"}";
    }
    return {kOk, kJson, body + "\n]\n"};
}

Response Service::Page(Request const& request) {
    Arguments arguments(request);
    std::optional<Question> tried;
    if (!request.arguments.empty())
        tried = TakeQuestion(arguments);
    arguments.RequireNoneLeft();
    return {kOk, "text/html; charset=utf-8", page_.Html(tried)};
}

} // namespace callrecordingd
