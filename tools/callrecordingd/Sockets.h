// The sockets that the service listens on.

#ifndef CALLRECORDINGD_SOCKETS_H
#define CALLRECORDINGD_SOCKETS_H

#include <string>
#include <vector>

namespace callrecordingd {

/// Listens on a Unix socket at path, of mode 0660. A socket there that nobody listens on is
/// replaced; anything else is an error. Throws a std::runtime_error that names path.
int ListenAt(std::string const& path);

/// Listens on address, an IP address of the loopback interface and a port: 127.0.0.1:8080 or
/// [::1]:8080. Throws a std::runtime_error that names it.
int ListenOn(std::string const& address);

/// The sockets that systemd has opened for this process; none when it did not start it so.
std::vector<int> SocketsOfSystemd();

/// Tells systemd, if it wants to know, that the service is ready or stopping ("READY=1").
void NotifySystemd(char const* state);

} // namespace callrecordingd

#endif
