// Opens sockets.

#include "Sockets.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <fmt/format.h>

namespace callrecordingd {
namespace {

constexpr int kBacklog = 1024;

[[noreturn]] void Fail(std::string const& name, char const* what) {
    throw std::runtime_error(fmt::format("{}: {}: {}", name, what, std::strerror(errno)));
}

sockaddr_un UnixAddress(std::string const& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        throw std::runtime_error(fmt::format("{}: the path of a socket has 1 to {} bytes", path,
                                             sizeof address.sun_path - 1));
    path.copy(address.sun_path, path.size());
    return address;
}

int Socket(int family) {
    int const made = socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (made < 0)
        throw std::runtime_error(fmt::format("a socket: {}", std::strerror(errno)));
    return made;
}

template <typename Address>
sockaddr const* Generic(Address const& address) {
    return reinterpret_cast<sockaddr const*>(&address);
}

/// Removes a socket that a process has left behind.
void RemoveStale(std::string const& path, sockaddr_un const& address) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0)
        return;
    if (!S_ISSOCK(status.st_mode))
        throw std::runtime_error(fmt::format("{}: is there already, and is not a socket", path));
    int const probe = Socket(AF_UNIX);
    bool const isUsed = connect(probe, Generic(address), sizeof address) == 0 || errno == EAGAIN;
    close(probe);
    if (isUsed)
        throw std::runtime_error(fmt::format("{}: another process listens there already", path));
    if (unlink(path.c_str()) != 0)
        Fail(path, "the old socket cannot be removed");
}

} // namespace

int ListenAt(std::string const& path) {
    sockaddr_un const address = UnixAddress(path);
    RemoveStale(path, address);
    int const made = Socket(AF_UNIX);
    mode_t const before = umask(0117); // Nobody connects before the mode is right.
    int const bound = bind(made, Generic(address), sizeof address);
    int const error = errno;
    umask(before);
    errno = error;
    if (bound != 0 || listen(made, kBacklog) != 0)
        Fail(path, "cannot listen");
    return made;
}

int ListenOn(std::string const& address) {
    std::size_t const colon = address.rfind(':');
    std::string host = address.substr(0, colon);
    std::string const port = colon == std::string::npos ? "" : address.substr(colon + 1);
    bool const isPort = !port.empty() && port.size() <= 5 &&
                        port.find_first_not_of("0123456789") == std::string::npos &&
                        std::stoul(port) <= 65535;
    if (host.size() > 1 && host.front() == '[' && host.back() == ']')
        host = host.substr(1, host.size() - 2);
    sockaddr_in v4{};
    sockaddr_in6 v6{};
    bool const isV4 = inet_pton(AF_INET, host.c_str(), &v4.sin_addr) == 1;
    bool const isV6 = inet_pton(AF_INET6, host.c_str(), &v6.sin6_addr) == 1;
    bool const isLoopback = (isV4 && ntohl(v4.sin_addr.s_addr) >> 24 == IN_LOOPBACKNET) ||
                            (isV6 && IN6_IS_ADDR_LOOPBACK(&v6.sin6_addr));
    if (!isPort || !isLoopback)
        throw std::runtime_error(fmt::format(
            "{}: is not an address of the loopback interface and a port, such as 127.0.0.1:8080",
            address));
    int const made = Socket(isV4 ? AF_INET : AF_INET6);
    int const on = 1;
    setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    v4.sin_family = AF_INET;
    v6.sin6_family = AF_INET6;
    v4.sin_port = v6.sin6_port = htons(static_cast<std::uint16_t>(std::stoul(port)));
    int const bound =
        isV4 ? bind(made, Generic(v4), sizeof v4) : bind(made, Generic(v6), sizeof v6);
    if (bound != 0 || listen(made, kBacklog) != 0)
        Fail(address, "cannot listen");
    return made;
}

std::vector<int> SocketsOfSystemd() {
    constexpr int kFirst = 3;
    char const* const process = std::getenv("LISTEN_PID");
    char const* const count = std::getenv("LISTEN_FDS");
    std::vector<int> sockets;
    if (process == nullptr || count == nullptr || std::atol(process) != getpid())
        return sockets;
    for (int i = 0; i < std::atoi(count); ++i) {
        fcntl(kFirst + i, F_SETFD, FD_CLOEXEC);
        fcntl(kFirst + i, F_SETFL, O_NONBLOCK);
        sockets.push_back(kFirst + i);
    }
    return sockets;
}

void NotifySystemd(char const* state) {
    char const* const path = std::getenv("NOTIFY_SOCKET");
    if (path == nullptr || (path[0] != '/' && path[0] != '@'))
        return;
    sockaddr_un address = UnixAddress(path);
    if (path[0] == '@')
        address.sun_path[0] = '\0';
    int const notifier = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    auto const size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + std::strlen(path));
    if (notifier >= 0)
        sendto(notifier, state, std::strlen(state), MSG_NOSIGNAL, Generic(address), size);
    close(notifier);
}

} // namespace callrecordingd
