/// @file
/// The telephony client's description of one side of a call.

#ifndef PLATFORM_CALLPARAMS_H
#define PLATFORM_CALLPARAMS_H

#include <cstdint>
#include <string>

/// One side of a call. The library is compiled against the client's declaration and reads the three
/// members user, host and port, all std::string. It never changes or copies the client's objects,
/// and makes its own without arguments, so a declaration may have any other members, in any order,
/// as long as CallParams() compiles. Library and client have to be compiled with the same one.
struct CallParams {
    /// The number; for a SIP address, its user part.
    std::string user;
    /// The client's own; not read by the library.
    std::intptr_t reserved[3] = {0, 0, 0};
    /// The host part of a SIP address.
    std::string host;
    /// The port of a SIP address in decimal; may be empty.
    std::string port;
};

#endif
