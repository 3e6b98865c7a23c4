// Carries the requests: libmicrohttpd, a worker for what takes longer, and an orderly end.

#ifndef CALLRECORDINGD_HTTPSERVER_H
#define CALLRECORDINGD_HTTPSERVER_H

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <microhttpd.h>

#include "OpenConnections.h"
#include "Service.h"

namespace callrecordingd {

/// Answers on one thread for each socket, which never waits: not for a slow client, whose
/// connection is closed after half a minute of silence, or when it keeps others out, and not for a
/// page, which the worker makes.
class HttpServer {
  public:
    explicit HttpServer(Service& service);
    ~HttpServer();
    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    /// Answers requests on socket, which becomes the server's. Throws std::runtime_error.
    void Listen(int socket);

    /// Takes no new connections, answers what has come in, and ends; after two seconds in any case.
    void Drain();

  private:
    struct Exchange;
    static MHD_Result Handle(void* server, MHD_Connection* connection, char const* url,
                             char const* method, char const* version, char const* data,
                             std::size_t* size, void** context);
    static void Complete(void* server, MHD_Connection* connection, void** context,
                         MHD_RequestTerminationCode code);
    MHD_Result Respond(MHD_Connection* connection, Exchange& exchange);
    bool HandOver(MHD_Connection* connection, Exchange& exchange);
    void Work();

    Service& service_;
    OpenConnections connections_;
    std::vector<MHD_Daemon*> daemons_;
    std::atomic<bool> isDraining_{false};
    std::mutex mutex_; // Guards what follows.
    std::condition_variable changed_;
    std::deque<std::pair<MHD_Connection*, Exchange*>> waiting_;
    bool isStopping_ = false;
    std::thread worker_;
};

} // namespace callrecordingd

#endif
