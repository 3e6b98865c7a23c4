// Starts a process of its own session, and reads both of its streams until they end.

#include "administration/pull/Child.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <host/Posix.h>

namespace CallRecordingUtils {
namespace {

using Clock = std::chrono::steady_clock;
using HostPlatform::Descriptor;
using HostPlatform::FailOf;

/// What a program over a network needs of the environment. Not what tells git to do other things.
constexpr char const* kKept[] = {"HOME",
                                 "PATH",
                                 "USER",
                                 "LOGNAME",
                                 "TMPDIR",
                                 "SSH_AUTH_SOCK",
                                 "GIT_SSH_COMMAND",
                                 "XDG_CONFIG_HOME",
                                 "KRB5CCNAME",
                                 "SSL_CERT_FILE",
                                 "SSL_CERT_DIR",
                                 "http_proxy",
                                 "https_proxy",
                                 "HTTPS_PROXY",
                                 "all_proxy",
                                 "ALL_PROXY",
                                 "no_proxy",
                                 "NO_PROXY",
                                 "TZ"};

std::vector<std::string> CleanEnvironment() {
    std::vector<std::string> kept{"LC_ALL=C.UTF-8", "GIT_TERMINAL_PROMPT=0", "GIT_ASKPASS=false",
                                  "GIT_NO_REPLACE_OBJECTS=1", "GIT_GRAFT_FILE=/dev/null"};
    for (char const* const name : kKept)
        if (char const* const value = std::getenv(name))
            kept.push_back(std::string(name) + "=" + value);
    return kept;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

struct Pipe {
    Pipe() {
        if (pipe2(ends, O_CLOEXEC) != 0)
            FailOf("a pipe", "cannot be made");
    }
    int ends[2] = {-1, -1};
};

/// What the new process does until it is another program. It never returns.
[[noreturn]] void Become(std::vector<char*> const& words, std::vector<char*> const& environment,
                         int out, int err, pid_t parent) {
    setsid(); // Without a terminal nobody can be asked for a password.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent)
        _exit(127);
    rlimit const most{kLargestChildFile, kLargestChildFile};
    setrlimit(RLIMIT_FSIZE, &most);
    umask(077);
    std::signal(SIGPIPE, SIG_DFL);
    int const nothing = open("/dev/null", O_RDONLY);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0 ||
        dup2(err, STDERR_FILENO) < 0)
        _exit(127);
    environ = const_cast<char**>(environment.data());
    execvp(words[0], words.data());
    _exit(127);
}

std::string Trimmed(std::string const& text) {
    std::size_t const begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

/// Reads what is there; looks at file no more at its end. Returns false if it cannot be read: what
/// came so far is then not the whole.
bool ReadSome(pollfd& file, std::string& text) {
    char buffer[65536];
    ssize_t const count =
        HostPlatform::Uninterrupted([&] { return read(file.fd, buffer, sizeof buffer); });
    if (count > 0)
        text.append(buffer, static_cast<std::size_t>(count));
    if (count == 0)
        file.fd = -1;
    return count >= 0;
}

/// Reads both streams to their ends. Returns false if that takes longer than until end, there is
/// more output than wanted, or one cannot be read.
bool ReadBoth(int out, int err, Clock::time_point end, std::size_t mostOutput,
              ChildResult& result) {
    constexpr std::size_t kMostSaid = 4000;
    pollfd polled[] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    while (polled[0].fd >= 0 || polled[1].fd >= 0) {
        auto const left =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        result.isLate = left <= 0;
        if (result.isLate)
            return false;
        if (poll(polled, 2, static_cast<int>(std::min<std::int64_t>(left, 60000))) < 0)
            continue; // Interrupted.
        if ((polled[0].revents != 0 && !ReadSome(polled[0], result.out)) ||
            (polled[1].revents != 0 && !ReadSome(polled[1], result.said)))
            return false;
        if (result.out.size() > mostOutput)
            return false;
        if (result.said.size() > kMostSaid)
            result.said.erase(0, result.said.size() - kMostSaid);
    }
    return true;
}

} // namespace

ChildResult RunChild(std::vector<std::string> const& words, std::chrono::seconds patience,
                     std::size_t mostOutput) {
    std::vector<std::string> ownWords = words;
    std::vector<std::string> kept = CleanEnvironment();
    std::vector<char*> const arguments = Pointers(ownWords);
    std::vector<char*> const environment = Pointers(kept);
    Pipe const out, err;
    pid_t const parent = getpid();
    pid_t const child = fork();
    if (child == 0)
        Become(arguments, environment, out.ends[1], err.ends[1], parent);
    close(out.ends[1]);
    close(err.ends[1]);
    Descriptor const readOut(out.ends[0]), readErr(err.ends[0]);
    if (child < 0)
        FailOf(words[0], "cannot be started");
    ChildResult result;
    bool const isWhole =
        ReadBoth(out.ends[0], err.ends[0], Clock::now() + patience, mostOutput, result);
    if (!isWhole)
        kill(-child, SIGKILL); // With whatever it has started: they are a session of their own.
    int status = 0;
    bool const hasEnded =
        HostPlatform::Uninterrupted([&] { return waitpid(child, &status, 0); }) == child;
    if (isWhole && hasEnded && WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    result.said = Trimmed(result.said);
    return result;
}

} // namespace CallRecordingUtils
