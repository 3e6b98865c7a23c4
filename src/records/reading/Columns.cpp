// The table of names. docs/replay.md lists them, too.

#include "records/reading/Columns.h"

#include <vector>

namespace CallRecordingUtils {
namespace {

struct Names {
    char const* option;
    std::vector<char const*> known; // The best first. Lower case, without blanks, "_", "-" and ".".
};

// NOLINTNEXTLINE(readability-function-size): a table of names.
std::array<Names, kColumnCount> const& Table() {
    static std::array<Names, kColumnCount> const table{{
        {"--from-column",
         {"from",
          "src",
          "source",
          "caller",
          "calleridnumber",
          "callernumber",
          "callingnumber",
          "callingpartynumber",
          "calling",
          "callingparty",
          "fromnumber",
          "sourcenumber",
          "srcnumber",
          "originator",
          "orignumber",
          "originatingnumber",
          "ani",
          "anumber",
          "cli",
          "fromuri",
          "calleruri",
          "fromuser",
          "callerid",
          "clid"}},
        {"--to-column",
         {"to",
          "dst",
          "destination",
          "callee",
          "destinationnumber",
          "calleenumber",
          "callednumber",
          "finalcalledpartynumber",
          "calledpartynumber",
          "originalcalledpartynumber",
          "called",
          "calledparty",
          "tonumber",
          "dstnumber",
          "destnumber",
          "dialednumber",
          "dialled",
          "dialed",
          "termnumber",
          "terminatingnumber",
          "dnis",
          "bnumber",
          "touri",
          "calleduri",
          "requesturi",
          "ruri",
          "touser",
          "dest"}},
        {"--from-type-column",
         {"fromtype", "fromcalltype", "callertype", "callercalltype", "srctype"}},
        {"--to-type-column", {"totype", "tocalltype", "calledtype", "calledcalltype", "dsttype"}},
        {"--time-column",
         {"time", "calldate", "start", "startstamp", "starttime", "startedat", "timestamp",
          "datetime", "callstart", "setuptime", "invitetime", "datetimeorigination", "callstarted",
          "startepoch", "startuepoch", "createdat", "created", "date"}},
    }};
    return table;
}

std::string Plain(std::string_view name) {
    std::string plain;
    for (char const c : name)
        if (c >= 'A' && c <= 'Z')
            plain += static_cast<char>(c - 'A' + 'a');
        else if (std::string_view(" _-.").find(c) == std::string_view::npos)
            plain += c;
    return plain;
}

} // namespace

std::size_t ColumnNames::Rank(Column column, std::string_view name) const {
    std::string const& given = given_[column];
    if (!given.empty())
        return name == given ? 0 : Plain(name) == Plain(given) ? 1 : kNone;
    std::string const plain = Plain(name);
    std::vector<char const*> const& known = Table()[column].known;
    for (std::size_t rank = 0; rank < known.size(); ++rank)
        if (plain == known[rank])
            return rank;
    return kNone;
}

char const* ColumnNames::Option(Column column) {
    return Table()[column].option;
}

std::string ColumnNames::KnownNames(Column column) {
    std::string names;
    for (char const* const name : Table()[column].known)
        names += (names.empty() ? "" : ", ") + std::string(name);
    return names;
}

} // namespace CallRecordingUtils
