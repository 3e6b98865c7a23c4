// Keeps the connections in order, and shuts down the first when there are too many.

#include "OpenConnections.h"

#include <algorithm>
#include <memory>

#include <sys/resource.h>
#include <sys/socket.h>

namespace callrecordingd {
namespace {

std::size_t MostConnections() {
    constexpr rlim_t kMost = 30000;
    constexpr rlim_t kForFiles = 32;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur > kMost + kForFiles)
        return kMost;
    return limit.rlim_cur > 2 * kForFiles ? limit.rlim_cur - kForFiles : limit.rlim_cur / 2;
}

} // namespace

OpenConnections::OpenConnections() : most_(std::max<std::size_t>(MostConnections(), 2)) {}

void OpenConnections::Notice(void* self, MHD_Connection* connection, void** context,
                             MHD_ConnectionNotificationCode code) {
    auto& connections = *static_cast<OpenConnections*>(self);
    if (code == MHD_CONNECTION_NOTIFY_CLOSED)
        return connections.Remove(context);
    try {
        connections.Add(
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd,
            context);
    } catch (std::exception const&) { // No memory: this one is not counted.
    }
}

void OpenConnections::Add(int socket, void** context) {
    auto place = std::make_unique<Place>();
    std::lock_guard<std::mutex> const lock(mutex_);
    *place = silent_.insert(silent_.end(), {socket, &silent_});
    *context = place.release();
    if (silent_.size() + used_.size() <= most_)
        return;
    auto& list = silent_.size() > 1 ? silent_ : used_;
    shutdown(list.front().socket, SHUT_RDWR); // libmicrohttpd sees the end, and closes it.
    MoveTo(closing_, list.begin());
}

void OpenConnections::MoveTo(std::list<Entry>& list, Place place) {
    list.splice(list.end(), *place->list, place);
    place->list = &list;
}

void OpenConnections::Remove(void** context) {
    std::unique_ptr<Place> const place(static_cast<Place*>(*context));
    *context = nullptr;
    if (place == nullptr)
        return;
    std::lock_guard<std::mutex> const lock(mutex_);
    (*place)->list->erase(*place);
}

void OpenConnections::Touch(MHD_Connection* connection) {
    auto const* const place = static_cast<Place const*>(
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
    if (place == nullptr)
        return;
    std::lock_guard<std::mutex> const lock(mutex_);
    if ((*place)->list != &closing_)
        MoveTo(used_, *place);
}

} // namespace callrecordingd
