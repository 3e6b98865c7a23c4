// Makes room for new connections by closing the one that has been silent longest.

#ifndef CALLRECORDINGD_OPENCONNECTIONS_H
#define CALLRECORDINGD_OPENCONNECTIONS_H

#include <cstddef>
#include <list>
#include <mutex>

#include <microhttpd.h>

namespace callrecordingd {

/// The open connections. Clients that open connections and ask nothing cannot keep others out:
/// theirs are closed first, the oldest before the others. Any number of threads may use it.
class OpenConnections {
  public:
    /// Leaves some of the descriptors that this process may have for files.
    OpenConnections();

    /// What libmicrohttpd calls when a connection begins or ends; connections is an
    /// OpenConnections.
    static void Notice(void* connections, MHD_Connection* connection, void** context,
                       MHD_ConnectionNotificationCode code);

    /// connection has sent a whole request.
    void Touch(MHD_Connection* connection);

  private:
    struct Entry {
        int socket;
        std::list<Entry>* list; // That it is in.
    };
    using Place = std::list<Entry>::iterator;
    void Add(int socket, void** context);
    void Remove(void** context);
    static void MoveTo(std::list<Entry>& list, Place place); // REQUIRES: mutex_ is held.

    std::size_t const most_;
    std::mutex mutex_;        // Guards what follows.
    std::list<Entry> silent_; // Without a request yet; the oldest first.
    std::list<Entry> used_;   // The one whose last request is oldest first.
    std::list<Entry> closing_;
};

} // namespace callrecordingd

#endif
