// Finds what is surely not meant: what the language can tell, and ports that no call has.

#include "check/Suspicions.h"

#include <cstdlib>

#include "language/Characters.h"
#include "model/SipAddress.h"

namespace callrecordingctl {
namespace {

using namespace CallRecordingUtils;

/// The place of the first literal of port, in the entry form, that is no digit and in no group.
std::size_t FindForeign(std::string_view port) {
    int depth = 0;
    for (std::size_t at = 0; at < port.size(); ++at)
        if (Contains("[{", port[at]) || Contains("]}", port[at]))
            depth += Contains("[{", port[at]) ? 1 : -1;
        else if (depth == 0 && IsLiteral(port[at]) && !IsDigit(port[at]))
            return at;
    return std::string_view::npos;
}

std::optional<PatternProblem> SuspectPort(std::string const& entry) {
    auto const pieces = SplitSipAddress(entry);
    if (!pieces || !pieces->HasPort())
        return std::nullopt;
    std::string const port(*pieces->port);
    std::size_t const begin = entry.size() - port.size();
    std::size_t const foreign = FindForeign(port);
    if (foreign != std::string::npos)
        return PatternProblem{begin + foreign, "a port has digits only, so this matches no call; "
                                               "leave out what stands behind the port"};
    bool const isNumber = port.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && (port.size() > 9 || std::atol(port.c_str()) > 65535))
        return PatternProblem{begin, "no port is greater than 65535, so this matches no call"};
    return std::nullopt;
}

} // namespace

std::optional<PatternProblem> SurelyNotMeant(std::string const& stored, CallType type) {
    std::string const entry = ToEntry(stored, type);
    if (auto suspicion = SuspectEntry(entry, type))
        return suspicion;
    return type == CALL_TYPE_SIP ? SuspectPort(entry) : std::nullopt;
}

} // namespace callrecordingctl
