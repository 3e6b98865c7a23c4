// Checks and converts the pattern of a rule side. A SIP pattern is taken piece by piece.

#include "validation/SidePattern.h"

#include <string_view>

#include "language/Forms.h"
#include "model/SipAddress.h"
#include "validation/PatternCheck.h"
#include "validation/Sentence.h"
#include "validation/Suspicions.h"

namespace CallRecordingUtils {
namespace {

/// Checks and converts a number, or a piece of a SIP pattern.
StoredPattern StorePiece(std::string_view entry) {
    if (auto const rejection = RejectPattern(entry))
        return {"", PatternProblem{rejection->position, rejection->message}};
    return {ToStoredForm(entry), std::nullopt};
}

StoredPattern Problem(std::size_t position, std::string const& message) {
    return {"", PatternProblem{position, message}};
}

StoredPattern ExplainMissingAt(std::string_view entry) {
    std::size_t const at = entry.rfind('@');
    if (at == std::string_view::npos)
        return Problem(entry.size(),
                       "a SIP pattern is user@host or user@host:port; write *@* for every address");
    std::size_t const colon = entry.rfind(':');
    return Problem(colon,
                   "the last \":\" begins the port, but there is no \"@\" before it; leave out " +
                       Quoted(entry.substr(0, colon + 1)));
}

/// Finds an escape that is stored as "@" or ":" and would then end a piece.
StoredPattern ExplainMisread(SipAddress const& pieces, std::size_t hostBegin,
                             std::size_t portBegin) {
    constexpr auto kNone = std::string_view::npos;
    std::size_t const comma = pieces.host.find("\\,");
    if (comma != kNone)
        return Problem(hostBegin + comma, "an escaped \",\" is stored as \"@\", which would end "
                                          "the user part here; write ? instead");
    if (pieces.port && pieces.port->find("\\!") != kNone)
        return Problem(portBegin + pieces.port->find("\\!"),
                       "an escaped \"!\" is stored as \":\", which would begin the port here");
    std::size_t const inUser = pieces.user.find("\\!");
    std::size_t const inHost = pieces.host.find("\\!");
    if (pieces.port || (inUser == kNone && inHost == kNone))
        return {};
    return Problem(inUser != kNone ? inUser : hostBegin + inHost,
                   "an escaped \"!\" is stored as \":\", which would begin the port here; add the "
                   "port, or :* for every port");
}

/// Checks and converts one piece of a SIP pattern. The check of the piece would call a "@" or ":"
/// in it reserved, which would be misleading, since these characters divide the address.
StoredPattern StoreSipPiece(std::string_view piece, std::size_t begin) {
    StoredPattern result = StorePiece(piece);
    if (!result.problem)
        return result;
    std::size_t const position = result.problem->position;
    char const culprit = position < piece.size() ? piece[position] : '\0';
    if (culprit == ':')
        return Problem(
            begin + position,
            "\":\" is allowed only before the port; write ? for a \":\" elsewhere, as in an "
            "IPv6 address, and leave out a \"sip:\" in front");
    if (culprit == '@')
        return Problem(begin + position,
                       "\"@\" is allowed only between user and host; write ? for another \"@\"");
    result.problem->position += begin;
    return result;
}

StoredPattern StoreSip(std::string_view entry) {
    auto const pieces = SplitSipAddress(entry);
    if (!pieces)
        return ExplainMissingAt(entry);
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

} // namespace

StoredPattern ToStored(std::string const& entry, CallType type) {
    if (type == CALL_TYPE_SIP)
        return StoreSip(entry);
    StoredPattern result = StorePiece(entry);
    bool const isAddress = result.problem && result.problem->position < entry.size() &&
                           entry[result.problem->position] == '@';
    if (isAddress)
        result.problem->message = "\"@\" is allowed only in a pattern of call type sip";
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
    return ToStored(entry, type).problem ? std::nullopt : FindSuspicion(entry, type);
}

std::optional<PatternProblem> SuspectStored(std::string const& stored, CallType type) {
    return SuspectEntry(ToEntry(stored, type), type);
}

std::optional<PatternProblem> ExplainStored(std::string const& stored, CallType type) {
    std::size_t const place = stored.find_first_of(kEntryFormOnly);
    if (place == std::string::npos)
        return ToStored(ToEntry(stored, type), type).problem;
    std::string const message =
        stored[place] == '\\'
            ? "the file has escapes as # ^ @ % : and no \"\\\""
            : "the file has range expressions between < and >, not between { and }";
    return PatternProblem{place, message + WhatStopMeans(stored, type, place)};
}

std::string WhatStopMeans(std::string const& stored, CallType type, std::size_t place) {
    bool const isAddress = type != CALL_TYPE_SIP || SplitSipAddress(stored);
    if (!isAddress || PlaceOfStop(stored) != place)
        return "";
    return "; the matcher stops here and takes any rest of the address";
}

} // namespace CallRecordingUtils
