// status: the rule file in one screen, and which rules the running services decide by.

#include <algorithm>
#include <chrono>
#include <memory>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "administration/history/When.h"
#include "administration/inspection/Digest.h"
#include "commands/ServiceState.h"
#include "commands/StatusReport.h"
#include "output/RuleText.h"
#include "output/Screen.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Shows the rule file and its state, how many rules there are, what "check" finds,
the last edit, and how far the history goes back. Then it asks each service
(callrecordingd) that has a socket in /run/callrecordingd, or in the directory
that CALLRECORDINGD_SOCKETS names: whether it decides by these rules, since when,
and what its last load said.
Exit status: 0 if every service decides by them, 1 if one does not or there is
none, 3 if the rules cannot be read.
Example: callrecordingctl status --socket /run/callrecordingd/socket
)";

char const* NameOf(ServiceState state) {
    switch (state) {
    case ServiceState::Current: return "current";
    case ServiceState::Old: return "old";
    case ServiceState::NoRules: return "no_rules";
    case ServiceState::OtherFile: return "other_file";
    case ServiceState::Silent: break;
    }
    return "silent";
}

std::string Sentence(AskedService const& service, ServiceState state) {
    if (state == ServiceState::Silent)
        return "cannot be asked: " + service.problem;
    ServiceReport const& report = *service.report;
    if (state == ServiceState::OtherFile)
        return fmt::format("reads another rule file, {}", report.file);
    if (state == ServiceState::NoRules)
        return "has no rules yet, so every call is undecided";
    return fmt::format("{} since {}, state {}",
                       state == ServiceState::Current
                           ? "decides by the rules that are in the file,"
                           : "does not decide by the rules that are in the file, but by others,",
                       WhenText(report.loaded), StateToken(*report.digest));
}

void PrintAsText(AskedService const& service, ServiceState state) {
    PrintLines("service    {}: {}\n", Printable(service.socket),
               Printable(Sentence(service, state)));
    if (service.report)
        PrintLines("           running since {}; the last load, {}: {}\n",
                   WhenText(service.report->started), WhenText(service.report->lastLoadTime),
                   Printable(service.report->lastLoad));
}

nlohmann::ordered_json ToJson(AskedService const& service, ServiceState state) {
    nlohmann::ordered_json json{{"socket", service.socket}, {"state", NameOf(state)}};
    for (char const* name : {"file", "file_state", "file_digest", "loaded", "started", "last_load",
                             "last_load_time", "last_load_failed"})
        json[name] = nullptr;
    json["problem"] = service.problem;
    if (!service.report)
        return json;
    ServiceReport const& report = *service.report;
    json["file"] = report.file;
    if (report.digest) {
        json["file_state"] = StateToken(*report.digest);
        json["file_digest"] = *report.digest;
        json["loaded"] = WhenText(report.loaded);
    }
    json["started"] = WhenText(report.started);
    json["last_load"] = report.lastLoad;
    json["last_load_time"] = WhenText(report.lastLoadTime);
    json["last_load_failed"] = report.hasLastLoadFailed;
    return json;
}

ExitCode Status(Context const& context, std::vector<std::string> const& named) {
    StatusReport const report = FindStatus(context.path);
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(1);
    std::vector<AskedService> const services =
        AskServices(named.empty() ? ServiceSockets() : named, deadline);
    bool areCurrent = !services.empty();
    nlohmann::ordered_json document = ToJson(report);
    document["services"] = nlohmann::ordered_json::array();
    if (!context.json)
        PrintStatus(report);
    for (AskedService const& service : services) {
        ServiceState const state = StateOf(service, context.path, report.digest);
        areCurrent = areCurrent && state == ServiceState::Current;
        if (context.json)
            document["services"].push_back(ToJson(service, state));
        else
            PrintAsText(service, state);
    }
    if (context.json)
        PrintJson(document);
    else if (services.empty())
        PrintLines("services   there is no socket of one\n");
    if (!report.problem.empty())
        return kExitUnreadable;
    return areCurrent ? kExitYes : kExitNo;
}

} // namespace

void AddStatus(CommandLine& line) {
    auto const sockets = std::make_shared<std::vector<std::string>>();
    CLI::App& status = line.AddCommand(
        "status", "Show the rules, their history and the services in short", kHelp,
        [sockets](Context const& context) { return Status(context, *sockets); });
    AddText(status, "--socket", "PATH", "Ask the service at this socket instead; repeatable",
            [sockets](std::string const& path) { sockets->push_back(path); })
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

} // namespace callrecordingctl
