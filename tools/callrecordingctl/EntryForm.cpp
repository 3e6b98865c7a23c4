/// @file
/// Conversion between the two forms of a pattern, and the splitting of SIP patterns.

#include "EntryForm.h"

#include <algorithm>

#include <callrecordingutils/PatternValidation.h>

namespace callrecordingctl {
namespace {

constexpr std::string_view ESCAPED = "*?,-!";
constexpr std::string_view CODES = "#^@%:";
constexpr char const* ENTRY_ONLY = "{}\\";

/// One pattern without structure of its own: a number, or a piece of a SIP pattern.
StoredPattern StorePiece(std::string_view entry) {
    std::string text(entry);
    if (auto const rejection = CallRecordingUtils::ExplainPattern(text))
        return {"", PatternProblem{rejection->position, rejection->message}};
    CallRecordingUtils::IsPatternIncorrect(text); // For the rewriting of the escapes.
    std::replace(text.begin(), text.end(), '{', '<');
    std::replace(text.begin(), text.end(), '}', '>');
    return {text, std::nullopt};
}

std::string EnterPiece(std::string_view stored) {
    std::string entry;
    for (char const c : stored) {
        std::size_t const code = CODES.find(c);
        if (code != std::string_view::npos)
            entry.append({'\\', ESCAPED[code]});
        else
            entry += c == '<' ? '{' : c == '>' ? '}' : c;
    }
    return entry;
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

/// The escapes whose stored code the library would take for the structure of the address.
StoredPattern ExplainMisread(SipPieces const& pieces, std::size_t hostBegin,
                             std::size_t portBegin) {
    constexpr auto none = std::string_view::npos;
    std::size_t const comma = pieces.host.find("\\,");
    if (comma != none)
        return Problem(hostBegin + comma,
                       "an escaped \",\" is stored as \"@\", which would end the "
                       "user part here; write ? instead");
    if (pieces.port && pieces.port->find("\\!") != none)
        return Problem(portBegin + pieces.port->find("\\!"),
                       "an escaped \"!\" is stored as \":\", which would begin the port here");
    std::size_t const inUser = pieces.user.find("\\!");
    std::size_t const inHost = pieces.host.find("\\!");
    if (pieces.port || (inUser == none && inHost == none))
        return {};
    return Problem(inUser != none ? inUser : hostBegin + inHost,
                   "an escaped \"!\" is stored as \":\", which would begin the port here; add the "
                   "port, :* for every port");
}

/// Stores one piece. What the check of the piece says of "@" and ":" would mislead: here they are
/// structure, met once too often.
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
    auto const pieces = SplitSip(entry);
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

} // namespace

std::optional<SipPieces> SplitSip(std::string_view pattern) {
    std::size_t const colon = pattern.rfind(':');
    std::string_view const address = pattern.substr(0, colon);
    std::size_t const at = address.rfind('@');
    if (at == std::string_view::npos)
        return std::nullopt;
    SipPieces pieces{address.substr(0, at), address.substr(at + 1), std::nullopt};
    if (colon != std::string_view::npos)
        pieces.port = pattern.substr(colon + 1);
    return pieces;
}

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
    if (stored.find_first_of(ENTRY_ONLY) != std::string::npos)
        return stored;
    if (type != CALL_TYPE_SIP)
        return EnterPiece(stored);
    auto const pieces = SplitSip(stored);
    if (!pieces)
        return stored;
    return EnterPiece(pieces->user) + '@' + EnterPiece(pieces->host) +
           (pieces->port ? ':' + EnterPiece(*pieces->port) : "");
}

std::optional<PatternProblem> ExplainStored(std::string const& stored, CallType type) {
    std::size_t const place = stored.find_first_of(ENTRY_ONLY);
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

} // namespace callrecordingctl
