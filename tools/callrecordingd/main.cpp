// callrecordingd: answers over HTTP whether calls are to be recorded.

#include <csignal>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "AnswerFile.h"
#include "HttpServer.h"
#include "LiveRules.h"
#include "Service.h"
#include "Sockets.h"
#include "database/RuleFile.h"

namespace callrecordingd {
namespace {

constexpr char kHelp[] =
    R"(Answers, over HTTP, whether calls are to be recorded and under which rule:
  GET /decide?from=ADDR&to=ADDR    any spelling of an address; or from_host and
      from_port, to_host and to_port apart. &id=ID names the call in the file of
      --answers. The answer is JSON or, with &format=text, one line for dialplans:
      yes, no or undecided, identifier of the rule, duration, type, destination,
      with tabs between them. 503: no rules were read yet. 400: a bad question.
  GET /rules    the rules in JSON, as callrecordingctl prints them
  GET /state    in JSON, which rules decide, and what the last load said
  GET /metrics  for Prometheus
  GET /healthz  200 once rules were read, 503 before
  GET /         a page for people
Nothing can be changed. The rules are read again by themselves when their file
changes; while the new file is broken, the old ones stay in force. SIGHUP reads
them too, SIGTERM ends the service once it has answered what has come in.
)";

constexpr int kExitUsage = 2;
constexpr int kExitFailure = 1;

struct Options {
    std::string configDir = CallRecordingUtils::kDefaultDirectory;
    std::string socket;
    std::string listen;
    std::string answers;
};

void Say(std::string const& notice) {
    std::fputs(fmt::format("callrecordingd: {}\n", notice).c_str(), stderr);
}

/// Each connection takes a descriptor.
void RaiseLimitOfDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

/// Waits for the signals that end the service; SIGHUP has the rules read again.
void RunUntilSignalled(int signals, LiveRules& rules) {
    signalfd_siginfo signal{};
    while (read(signals, &signal, sizeof signal) == sizeof signal && signal.ssi_signo == SIGHUP)
        rules.Load();
}

int Run(Options const& options) {
    // Before there are other threads, which inherit the mask.
    sigset_t handled;
    sigemptyset(&handled);
    for (int const signal : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&handled, signal);
    sigprocmask(SIG_BLOCK, &handled, nullptr);
    int const signals = signalfd(-1, &handled, SFD_CLOEXEC);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // A file of --answers at its limit must not end the service.
    RaiseLimitOfDescriptors();

    std::vector<int> sockets = SocketsOfSystemd();
    if (sockets.empty() && options.socket.empty() && options.listen.empty())
        throw std::runtime_error("--socket or --listen is needed");
    std::string const slash = options.configDir.back() == '/' ? "" : "/";
    LiveRules rules(CallRecordingUtils::RuleFilePathIn(options.configDir + slash), Say);
    std::unique_ptr<AnswerFile> const answers =
        options.answers.empty() ? nullptr : std::make_unique<AnswerFile>(options.answers, Say);
    Service service(rules, answers.get());
    HttpServer server(service);
    bool const isOwnSocket = sockets.empty() && !options.socket.empty();
    if (isOwnSocket)
        sockets.push_back(ListenAt(options.socket));
    if (!options.listen.empty())
        sockets.push_back(ListenOn(options.listen));
    for (int const socket : sockets)
        server.Listen(socket);
    rules.Watch();
    NotifySystemd("READY=1");
    RunUntilSignalled(signals, rules);
    NotifySystemd("STOPPING=1");
    if (isOwnSocket)
        unlink(options.socket.c_str());
    server.Drain();
    close(signals);
    return 0;
}

} // namespace
} // namespace callrecordingd

int main(int argc, char** argv) {
    callrecordingd::Options options;
    CLI::App app("Answers, over HTTP, which calls are to be recorded.", "callrecordingd");
    app.footer(callrecordingd::kHelp);
    app.set_version_flag("--version", "callrecordingd " CALLRECORDINGD_VERSION);
    app.add_option("--config-dir", options.configDir,
                   "Directory with telephony/callrecordingdb, the rules (default: /etc/quva-conf/)")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory);
    app.add_option("--socket", options.socket, "Listen on a Unix socket at this path")
        ->type_name("PATH");
    app.add_option("--listen", options.listen,
                   "Listen on this port of the loopback interface: 127.0.0.1:PORT")
        ->type_name("ADDRESS");
    app.add_option("--answers", options.answers, "Append each answer to this file, as a JSON line")
        ->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : callrecordingd::kExitUsage;
    }
    try {
        return callrecordingd::Run(options);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "callrecordingd: %s\n", error.what());
        return callrecordingd::kExitFailure;
    }
}
