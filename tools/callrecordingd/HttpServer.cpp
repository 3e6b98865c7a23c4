// The functions that libmicrohttpd calls.

#include "HttpServer.h"

#include <cstring>
#include <stdexcept>

#include <unistd.h>

namespace callrecordingd {
namespace {

constexpr unsigned kTimeoutSeconds = 30;
constexpr unsigned kMostConnections = 65536; // OpenConnections closes some before that.
constexpr std::size_t kMostRequestBytes = std::size_t{16} * 1024;
constexpr std::size_t kMostWaiting = 16; // Requests for pages; more are turned away.

MHD_Result AddArgument(void* request, MHD_ValueKind, char const* name, std::size_t nameSize,
                       char const* value, std::size_t valueSize) {
    static_cast<Request*>(request)->arguments.emplace_back(
        std::string(name, nameSize), value != nullptr ? std::string(value, valueSize) : "");
    return MHD_YES;
}

MHD_Result Queue(MHD_Connection* connection, Response const& response, bool closes) {
    MHD_Response* const queued = MHD_create_response_from_buffer(
        response.body.size(), const_cast<char*>(response.body.data()), MHD_RESPMEM_MUST_COPY);
    if (queued == nullptr)
        return MHD_NO;
    MHD_add_response_header(queued, MHD_HTTP_HEADER_CONTENT_TYPE, response.type);
    MHD_add_response_header(queued, MHD_HTTP_HEADER_CACHE_CONTROL, "no-store");
    MHD_add_response_header(queued, "Content-Security-Policy",
                            "default-src 'none'; style-src 'unsafe-inline'; img-src data:; "
                            "form-action 'self'; frame-ancestors 'none'");
    if (closes)
        MHD_add_response_header(queued, MHD_HTTP_HEADER_CONNECTION, "close");
    MHD_Result const result = MHD_queue_response(connection, response.status, queued);
    MHD_destroy_response(queued);
    return result;
}

/// A page from elsewhere must not read this one through a name of its own for 127.0.0.1.
bool IsForThisHost(MHD_Connection* connection) {
    MHD_ConnectionInfo const* const info =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    bool const isIp =
        info != nullptr && info->client_addr != nullptr &&
        (info->client_addr->sa_family == AF_INET || info->client_addr->sa_family == AF_INET6);
    char const* const value =
        MHD_lookup_connection_value(connection, MHD_HEADER_KIND, MHD_HTTP_HEADER_HOST);
    if (!isIp || value == nullptr)
        return true;
    std::string host = value;
    std::size_t const colon = host.rfind(':');
    if (colon != std::string::npos && host.find(']', colon) == std::string::npos)
        host.erase(colon);
    return host == "localhost" || host == "[::1]" || host.compare(0, 4, "127.") == 0;
}

} // namespace

/// A request, and its response once the worker has made it.
struct HttpServer::Exchange {
    Request request;
    Response response; // Written before the connection is resumed, and read after that.
};

HttpServer::HttpServer(Service& service) : service_(service), worker_([this] { Work(); }) {}

HttpServer::~HttpServer() {
    Drain();
}

void HttpServer::Listen(int socket) {
    MHD_Daemon* const daemon = MHD_start_daemon(
        MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ITC, 0, nullptr, nullptr,
        Handle, this, MHD_OPTION_LISTEN_SOCKET, socket, MHD_OPTION_CONNECTION_TIMEOUT,
        kTimeoutSeconds, MHD_OPTION_CONNECTION_LIMIT, kMostConnections,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, kMostRequestBytes, MHD_OPTION_NOTIFY_COMPLETED,
        Complete, this, MHD_OPTION_NOTIFY_CONNECTION, OpenConnections::Notice, &connections_,
        MHD_OPTION_END);
    if (daemon == nullptr) {
        close(socket);
        throw std::runtime_error("the HTTP server cannot be started");
    }
    daemons_.push_back(daemon);
}

MHD_Result HttpServer::Handle(void* self, MHD_Connection* connection, char const* url,
                              char const* method, char const*, char const*, std::size_t* size,
                              void** context) {
    auto& server = *static_cast<HttpServer*>(self);
    try {
        if (*context == nullptr) {
            server.connections_.Touch(connection);
            // libmicrohttpd closes a connection whose request is answered in the first call, before
            // its body is read: right for what is refused anyway.
            auto exchange = std::make_unique<Exchange>(Exchange{{method, url, {}}, {}});
            if (!Service::IsAllowed(exchange->request.method))
                return Queue(connection, server.service_.Respond(exchange->request), true);
            *context = exchange.release(); // Complete deletes it.
            return MHD_YES;
        }
        if (*size != 0)
            return MHD_NO; // Nobody needs a body with GET.
        auto& exchange = *static_cast<Exchange*>(*context);
        return exchange.response.status != 0
                   ? Queue(connection, exchange.response, server.isDraining_) // By the worker.
                   : server.Respond(connection, exchange);
    } catch (std::exception const&) { // No memory: this connection ends, and the service goes on.
        return MHD_NO;
    }
}

MHD_Result HttpServer::Respond(MHD_Connection* connection, Exchange& exchange) {
    if (!IsForThisHost(connection))
        return Queue(connection, {421, "text/plain", "this service answers for localhost only\n"},
                     true);
    Request& request = exchange.request;
    MHD_get_connection_values_n(connection, MHD_GET_ARGUMENT_KIND, AddArgument, &request);
    if (!Service::IsSlow(request.path))
        return Queue(connection, service_.Respond(request), isDraining_);
    if (HandOver(connection, exchange))
        return MHD_YES;
    return Queue(
        connection,
        {503, "text/plain",
         isDraining_ ? "the service is stopping\n" : "too many pages are asked for at once\n"},
        true);
}

void HttpServer::Complete(void*, MHD_Connection*, void** context, MHD_RequestTerminationCode) {
    delete static_cast<Exchange*>(*context);
    *context = nullptr;
}

bool HttpServer::HandOver(MHD_Connection* connection, Exchange& exchange) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (isStopping_ || waiting_.size() >= kMostWaiting)
        return false;
    waiting_.emplace_back(connection, &exchange);
    MHD_suspend_connection(connection);
    changed_.notify_one();
    return true;
}

/// A suspended connection lives until it is resumed.
void HttpServer::Work() {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return isStopping_ || !waiting_.empty(); });
        if (waiting_.empty())
            return;
        auto const [connection, exchange] = waiting_.front();
        waiting_.pop_front();
        lock.unlock();
        try {
            exchange->response = service_.Respond(exchange->request);
        } catch (std::exception const&) {
            exchange->response = {503, "text/plain", "there is not enough memory for this page\n"};
        }
        MHD_resume_connection(connection);
        lock.lock();
    }
}

void HttpServer::Drain() {
    if (isDraining_.exchange(true))
        return;
    for (MHD_Daemon* const daemon : daemons_) {
        int const socket = MHD_quiesce_daemon(daemon);
        if (socket >= 0)
            close(socket);
    }
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isStopping_ = true;
    }
    changed_.notify_one();
    worker_.join();
    constexpr int kSteps = 100;
    constexpr unsigned kStepMicroseconds = 20000;
    auto const isBusy = [this] {
        for (MHD_Daemon* const daemon : daemons_)
            if (MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_CURRENT_CONNECTIONS)->num_connections >
                0)
                return true;
        return false;
    };
    for (int step = 0; step < kSteps && isBusy(); ++step)
        usleep(kStepMicroseconds);
    for (MHD_Daemon* const daemon : daemons_)
        MHD_stop_daemon(daemon);
    daemons_.clear();
}

} // namespace callrecordingd
