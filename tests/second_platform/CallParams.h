/// @file
/// A telephony client's description of a call side, with more members than the library knows.

#ifndef SECOND_PLATFORM_CALLPARAMS_H
#define SECOND_PLATFORM_CALLPARAMS_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

struct CallParams {
    std::string user;
    std::uintptr_t session = 0, channel = 0, trunk = 0;
    std::string host;
    std::string port;
    std::string displayName;
    std::vector<std::string> codecs;
    std::map<std::string, std::string> headers;
    std::unique_ptr<int> line; // So that it cannot be copied.
    double startTime = 0;
    bool isEncrypted = false;
    CallParams* transferredBy = nullptr;
};

#endif
