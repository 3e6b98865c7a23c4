// Sends the request and reads the answer, without ever waiting longer than the deadline.

#include "administration/services/LocalHttp.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace CallRecordingUtils {
namespace {

using Deadline = std::chrono::steady_clock::time_point;

[[noreturn]] void Fail(int error) {
    throw std::system_error(error, std::generic_category());
}

class Connection {
  public:
    Connection(std::string const& path, Deadline deadline)
        : deadline_(deadline),
          socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        if (socket_ < 0)
            Fail(errno);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        int error = ENAMETOOLONG;
        if (path.size() < sizeof address.sun_path) {
            path.copy(address.sun_path, path.size());
            error = Connect(reinterpret_cast<sockaddr const*>(&address), sizeof address);
        }
        if (error != 0) {
            close(socket_);
            Fail(error);
        }
    }
    ~Connection() { close(socket_); }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    void Send(std::string const& text) {
        for (std::size_t sent = 0; sent < text.size();) {
            ssize_t const count =
                send(socket_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
            if (count > 0)
                sent += static_cast<std::size_t>(count);
            else
                WaitAfter(errno, POLLOUT);
        }
    }

    std::string ReceiveAll() {
        constexpr std::size_t kMost = std::size_t{1} << 20;
        std::string text;
        char buffer[4096];
        for (;;) {
            ssize_t const count = recv(socket_, buffer, sizeof buffer, 0);
            if (count == 0)
                return text;
            if (count < 0)
                WaitAfter(errno, POLLIN);
            else if (text.size() > kMost)
                Fail(EMSGSIZE);
            else
                text.append(buffer, static_cast<std::size_t>(count));
            if (std::chrono::steady_clock::now() >= deadline_) // Of an answer that trickles, too.
                Fail(ETIMEDOUT);
        }
    }

  private:
    /// Returns 0 or an error. While too many wait to be accepted, it tries again.
    int Connect(sockaddr const* address, socklen_t size) {
        constexpr useconds_t kPause = 10000;
        while (connect(socket_, address, size) != 0) {
            if (errno != EAGAIN && errno != EINTR)
                return errno;
            if (std::chrono::steady_clock::now() >= deadline_)
                return ETIMEDOUT;
            usleep(kPause);
        }
        return 0;
    }

    void WaitAfter(int error, short events) const {
        if (error == EINTR)
            return;
        if (error != EAGAIN)
            Fail(error);
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline_ - std::chrono::steady_clock::now());
        pollfd polled{socket_, events, 0};
        if (left.count() <= 0 || poll(&polled, 1, static_cast<int>(left.count()) + 1) == 0)
            Fail(ETIMEDOUT);
    }

    Deadline deadline_;
    int socket_;
};

} // namespace

std::string GetFromSocket(std::string const& socket, std::string const& path, Deadline deadline) {
    Connection connection(socket, deadline);
    connection.Send("GET " + path + " HTTP/1.0\r\n\r\n"); // The answer ends with the connection.
    std::string const answer = connection.ReceiveAll();
    std::size_t const status = answer.find(' ');
    std::size_t const body = answer.find("\r\n\r\n");
    if (answer.compare(0, 5, "HTTP/") != 0 || body == std::string::npos)
        throw std::runtime_error("what answers there does not speak HTTP");
    std::string const code = answer.substr(status + 1, 3);
    if (code != "200")
        throw std::runtime_error("the answer has HTTP status " + code);
    return answer.substr(body + 4);
}

} // namespace CallRecordingUtils
