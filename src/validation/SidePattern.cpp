// Checks and converts the pattern of a rule side, piece by piece where it is a SIP pattern.

#include "validation/SidePattern.h"

#include <string_view>

#include "common/DecimalNumber.h"
#include "language/Characters.h"
#include "language/Forms.h"
#include "model/SipAddress.h"
#include "validation/PatternCheck.h"
#include "validation/Suspicions.h"

namespace CallRecordingUtils {
namespace {

/// One pattern without structure of its own: a number, or a piece of a SIP pattern.
StoredPattern StorePiece(std::string_view entry) {
    if (auto const rejection = RejectPattern(entry))
        return {"", PatternProblem{rejection->position, rejection->message}};
    return {ToStoredForm(entry), std::nullopt};
}

StoredPattern Problem(std::size_t position, char const* message) {
    return {"", PatternProblem{position, message}};
}

StoredPattern ExplainNoSip(std::string_view entry) {
    std::size_t const at = entry.rfind('@');
    if (at == std::string_view::npos)
        return Problem(entry.size(),
                       "a SIP pattern is user@host or user@host:port, and *@* for every "
                       "SIP address");
    return Problem(entry.rfind(':'),
                   "the last \":\" begins the port, but no \"@\" stands before it; "
                   "leave out \"sip:\"");
}

/// Finds an escape that is stored as "@" or ":", where the matcher would take it for the end of a
/// piece.
StoredPattern ExplainMisread(SipAddress const& pieces, std::size_t hostBegin,
                             std::size_t portBegin) {
    constexpr auto kNone = std::string_view::npos;
    std::size_t const comma = pieces.host.find("\\,");
    if (comma != kNone)
        return Problem(hostBegin + comma,
                       "an escaped \",\" is stored as \"@\", which would end the "
                       "user part here; write ? instead");
    if (pieces.port && pieces.port->find("\\!") != kNone)
        return Problem(portBegin + pieces.port->find("\\!"),
                       "an escaped \"!\" is stored as \":\", which would begin the port here");
    std::size_t const inUser = pieces.user.find("\\!");
    std::size_t const inHost = pieces.host.find("\\!");
    if (pieces.port || (inUser == kNone && inHost == kNone))
        return {};
    return Problem(inUser != kNone ? inUser : hostBegin + inHost,
                   "an escaped \"!\" is stored as \":\", which would begin the port here; add the "
                   "port, :* for every port");
}

/// Stores one piece of a SIP pattern. A "@" or ":" in it is one too many. The check of the piece
/// would call it reserved, which misleads here, where these characters divide the address.
StoredPattern StoreSipPiece(std::string_view piece, std::size_t begin) {
    StoredPattern result = StorePiece(piece);
    if (!result.problem)
        return result;
    std::size_t const position = result.problem->position;
    char const culprit = position < piece.size() ? piece[position] : '\0';
    if (culprit == ':')
        return Problem(begin + position,
                       "\":\" stands only before the port; write ? for a \":\" "
                       "elsewhere, as in an IPv6 address, and leave out \"sip:\"");
    if (culprit == '@')
        return Problem(begin + position, "\"@\" stands only between user and host; write ? for "
                                         "another one");
    result.problem->position += begin;
    return result;
}

StoredPattern StoreSip(std::string_view entry) {
    auto const pieces = SplitSipAddress(entry);
    if (!pieces)
        return ExplainNoSip(entry);
    std::size_t const hostBegin = pieces->user.size() + 1;
    std::size_t const portBegin = hostBegin + pieces->host.size() + 1;
    StoredPattern const user = StoreSipPiece(pieces->user, 0);
    StoredPattern const host = StoreSipPiece(pieces->host, hostBegin);
    StoredPattern const port = StoreSipPiece(pieces->port.value_or(""), portBegin);
    StoredPattern const misread = ExplainMisread(*pieces, hostBegin, portBegin);
    for (StoredPattern const* part : {&user, &host, &port, &misread})
        if (part->problem)
            return *part;
    return {user.stored + '@' + host.stored + (pieces->port ? ':' + port.stored : ""),
            std::nullopt};
}

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

/// begin is where port begins in the pattern.
std::optional<PatternProblem> SuspectPort(std::string_view port, std::size_t begin) {
    std::size_t const foreign = FindForeign(port);
    if (foreign != std::string::npos)
        return PatternProblem{begin + foreign, "a port has digits only, so this matches no call; "
                                               "leave out what stands behind the port"};
    bool const isNumber = port.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && (port.size() > 9 || ParseDecimal(std::string(port)) > 65535))
        return PatternProblem{begin, "no port is greater than 65535, so this matches no call"};
    return std::nullopt;
}

std::optional<PatternProblem> SuspectSip(std::string_view entry) {
    auto const pieces = SplitSipAddress(entry);
    for (std::string_view const piece : {pieces->user, pieces->host, pieces->port.value_or("")}) {
        auto problem = FindSuspicion(piece);
        if (!problem)
            continue;
        problem->position += static_cast<std::size_t>(piece.data() - entry.data());
        return problem;
    }
    if (!pieces->HasPort())
        return std::nullopt;
    return SuspectPort(*pieces->port, entry.size() - pieces->port->size());
}

} // namespace

StoredPattern ToStored(std::string const& entry, CallType type) {
    if (type == CALL_TYPE_SIP)
        return StoreSip(entry);
    StoredPattern result = StorePiece(entry);
    bool const isAddress = result.problem && result.problem->position < entry.size() &&
                           entry[result.problem->position] == '@';
    if (isAddress)
        result.problem->message = "\"@\" stands only in patterns of call type sip";
    return result;
}

std::string ToEntry(std::string const& stored, CallType type) {
    if (stored.find_first_of(kEntryFormOnly) != std::string::npos)
        return stored;
    if (type != CALL_TYPE_SIP)
        return ToEntryForm(stored);
    auto const pieces = SplitSipAddress(stored);
    if (!pieces)
        return stored;
    return ToEntryForm(pieces->user) + '@' + ToEntryForm(pieces->host) +
           (pieces->port ? ':' + ToEntryForm(*pieces->port) : "");
}

std::optional<PatternProblem> SuspectEntry(std::string const& entry, CallType type) {
    if (ToStored(entry, type).problem)
        return std::nullopt;
    if (entry.empty())
        return PatternProblem{0, "an empty pattern matches nothing: write * for every number"};
    return type == CALL_TYPE_SIP ? SuspectSip(entry) : FindSuspicion(entry);
}

std::optional<PatternProblem> SuspectStored(std::string const& stored, CallType type) {
    return SuspectEntry(ToEntry(stored, type), type);
}

std::optional<PatternProblem> ExplainStored(std::string const& stored, CallType type) {
    std::size_t const place = stored.find_first_of(kEntryFormOnly);
    if (place == std::string::npos)
        return ToStored(ToEntry(stored, type), type).problem;
    if (stored[place] == '\\')
        return PatternProblem{place,
                              "the file holds escapes as # ^ @ % : and no \"\\\"; the matcher "
                              "stops here and takes any rest of the number"};
    return PatternProblem{place,
                          "the file holds range expressions between < and >; the matcher stops "
                          "here and takes any rest of the number"};
}

} // namespace CallRecordingUtils
