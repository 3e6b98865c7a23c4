// Finds services, asks them, and reads their answers.

#include "administration/services/Services.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <system_error>

#include <nlohmann/json.hpp>

#include "administration/services/LocalHttp.h"

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;
using Deadline = std::chrono::steady_clock::time_point;

ServiceReport ReportOf(std::string const& text) {
    nlohmann::json const json = nlohmann::json::parse(text);
    ServiceReport report;
    report.file = json.at("file").get<std::string>();
    if (!json.at("digest").is_null()) {
        report.digest = json.at("digest").get<std::string>();
        report.loaded = json.at("loaded").get<std::int64_t>();
    }
    report.started = json.at("started").get<std::int64_t>();
    report.lastLoad = json.at("last_load").get<std::string>();
    report.lastLoadTime = json.at("last_load_time").get<std::int64_t>();
    report.hasLastLoadFailed = json.at("last_load_failed").get<bool>();
    return report;
}

/// What problem is called for a socket.
std::string ProblemOf(std::error_code code) {
    if (code == std::errc::connection_refused)
        return "no process listens there";
    if (code == std::errc::timed_out)
        return "no answer in time";
    return code.message();
}

AskedService Ask(std::string const& socket, Deadline deadline) {
    AskedService asked{socket, std::nullopt, "", true};
    try {
        asked.report = ReportOf(GetFromSocket(socket, "/state", deadline));
    } catch (std::system_error const& error) {
        asked.problem = ProblemOf(error.code());
        asked.isListening = error.code() != std::errc::connection_refused &&
                            error.code() != std::errc::no_such_file_or_directory;
    } catch (nlohmann::json::exception const&) {
        asked.problem = "its answer is not one of callrecordingd";
    } catch (std::exception const& error) {
        asked.problem = error.what();
    }
    return asked;
}

} // namespace

std::vector<std::string> ServiceSockets() {
    char const* const configured = std::getenv("CALLRECORDINGD_SOCKETS");
    fs::path const directory = configured != nullptr ? configured : "/run/callrecordingd";
    std::vector<std::string> sockets;
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code unknown;
        if (entry->is_socket(unknown))
            sockets.push_back(entry->path().string());
    }
    std::sort(sockets.begin(), sockets.end());
    return sockets;
}

std::vector<AskedService> AskServices(std::vector<std::string> const& sockets, Deadline deadline) {
    std::vector<std::future<AskedService>> answers;
    for (std::string const& socket : sockets)
        answers.push_back(std::async(std::launch::async, Ask, socket, deadline));
    std::vector<AskedService> asked;
    for (auto& answer : answers)
        asked.push_back(answer.get());
    return asked;
}

} // namespace CallRecordingUtils
