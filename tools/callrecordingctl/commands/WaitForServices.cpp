// Asks the services again and again until they have the new rules, or a second has passed.

#include "commands/WaitForServices.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "commands/ServiceState.h"

namespace callrecordingctl {
namespace {

using namespace std::chrono_literals;
using Services = std::vector<AskedService>;
constexpr char kReloadNote[] =
    "note: telephony processes decide by the old rules until they reload (see \"Reloading\" in "
    "\"callrecordingctl --help\")";
using Deadline = std::chrono::steady_clock::time_point;

/// Leaves out the sockets of services that have ended, and services with another rule file.
Services AskAbout(std::string const& path, std::string const& digest, Deadline deadline) {
    Services services = AskServices(ServiceSockets(), deadline);
    auto const isForeign = [&](AskedService const& service) {
        return !service.isListening || StateOf(service, path, digest) == ServiceState::OtherFile;
    };
    services.erase(std::remove_if(services.begin(), services.end(), isForeign), services.end());
    return services;
}

std::string Sentence(AskedService const& service, ServiceState state) {
    switch (state) {
    case ServiceState::Current: return "decides by the new rules";
    case ServiceState::NoRules: return "has no rules: " + service.report->lastLoad;
    case ServiceState::Silent: return "does not say which rules it decides by: " + service.problem;
    default: break;
    }
    return "still decides by other rules" +
           (service.report->hasLastLoadFailed ? ": " + service.report->lastLoad : "");
}

std::string Note(Services const& services, std::string const& path, std::string const& digest) {
    std::string note;
    for (AskedService const& service : services)
        note += fmt::format("{}the service at {} {}", note.empty() ? "note: " : "; ",
                            service.socket, Sentence(service, StateOf(service, path, digest)));
    return note;
}

} // namespace

std::string WhoDecidesByThem(std::string const& path) {
    try {
        auto const deadline = std::chrono::steady_clock::now() + 1s;
        for (;;) {
            std::string const digest = DigestOfFile(path);
            // A service that hangs must not make the reports of the others old.
            auto const now = std::chrono::steady_clock::now();
            Services const services = AskAbout(path, digest, std::min(deadline, now + 200ms));
            if (services.empty())
                return kReloadNote;
            bool const isDone =
                std::all_of(services.begin(), services.end(), [&](AskedService const& service) {
                    return StateOf(service, path, digest) == ServiceState::Current;
                });
            if (isDone || now + 250ms > deadline)
                return Note(services, path, digest);
            std::this_thread::sleep_for(20ms);
        }
    } catch (std::exception const&) {
        return kReloadNote; // The edit has been saved; the general note is true without services.
    }
}

} // namespace callrecordingctl
