/// @file
/// The telephony client's record of one side of a call.

#ifndef PLATFORM_CALLPARAMS_H
#define PLATFORM_CALLPARAMS_H

#include <cstdint>
#include <string>

/// One side of a call. The library reads user, host and port, and writes nothing.
struct CallParams {
    /// The number; for a SIP side the user part of its address.
    std::string user;
    /// Three words of the telephony client's own, which the library never reads.
    std::intptr_t reserved[3] = {0, 0, 0};
    /// The host part of a SIP side's address.
    std::string host;
    /// The port of a SIP side's address as text; may be empty.
    std::string port;
};

#endif
