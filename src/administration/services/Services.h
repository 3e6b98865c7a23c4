// Asks running services by which rules they decide.

#ifndef ADMINISTRATION_SERVICES_SERVICES_H
#define ADMINISTRATION_SERVICES_SERVICES_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CallRecordingUtils {

/// What a service says about itself. Times are in seconds since 1970.
struct ServiceReport {
    std::string file;                  ///< The rule file that it reads.
    std::optional<std::string> digest; ///< Of the rules that it decides by; none: it has none yet.
    std::int64_t loaded = 0;           ///< When it read them.
    std::int64_t started = 0;
    std::string lastLoad; ///< What its last load said.
    std::int64_t lastLoadTime = 0;
    bool hasLastLoadFailed = false;
};

/// A service that was asked through its socket.
struct AskedService {
    std::string socket;
    std::optional<ServiceReport> report;
    std::string problem;      ///< Why there is no report; empty when there is one.
    bool isListening = false; ///< Whether a process listens on the socket, as far as is known.
};

/// The paths of the sockets in the directory CALLRECORDINGD_SOCKETS, or /run/callrecordingd when
/// that is not set, in order; none when there is no such directory.
std::vector<std::string> ServiceSockets();

/// Asks the services at these sockets at the same time. One that does not answer by the deadline
/// has a problem instead of a report.
std::vector<AskedService> AskServices(std::vector<std::string> const& sockets,
                                      std::chrono::steady_clock::time_point deadline);

} // namespace CallRecordingUtils

#endif
