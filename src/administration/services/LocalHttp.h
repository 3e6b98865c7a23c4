// One HTTP request over a Unix socket.

#ifndef ADMINISTRATION_SERVICES_LOCALHTTP_H
#define ADMINISTRATION_SERVICES_LOCALHTTP_H

#include <chrono>
#include <string>

namespace CallRecordingUtils {

/// The body of the answer to GET path, asked for on the Unix socket at `socket`. Throws
/// std::system_error with ECONNREFUSED when nobody listens there, with ETIMEDOUT when there is no
/// whole answer by the deadline, and with other codes likewise; throws std::runtime_error when the
/// answer is not one with status 200.
std::string GetFromSocket(std::string const& socket, std::string const& path,
                          std::chrono::steady_clock::time_point deadline);

} // namespace CallRecordingUtils

#endif
