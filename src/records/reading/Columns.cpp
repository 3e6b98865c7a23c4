// The table of names. docs/replay.md lists them, too.

#include "records/reading/Columns.h"

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
        {"--date-column", {"date", "startdate", "invitedate"}},
    }};
    return table;
}

} // namespace

std::string PlainName(std::string_view name) {
    std::string plain;
    for (char const c : name)
        if (c >= 'A' && c <= 'Z')
            plain += static_cast<char>(c - 'A' + 'a');
        else if (std::string_view(" _-.").find(c) == std::string_view::npos)
            plain += c;
    return plain;
}

std::size_t RankAmong(std::vector<std::string> const& names, std::string_view name) {
    for (std::size_t i = 0; i < names.size(); ++i)
        if (name == names[i])
            return 2 * i;
    std::string const plain = PlainName(name);
    for (std::size_t i = 0; i < names.size(); ++i)
        if (plain == PlainName(names[i]))
            return 2 * i + 1;
    return ColumnNames::kNone;
}

std::size_t ColumnNames::Rank(Column column, std::string_view name) const {
    if (!given_[column].empty())
        return RankAmong({given_[column]}, name);
    std::size_t const preferred = RankAmong(preferred_[column], name);
    if (preferred != kNone)
        return preferred;
    std::string const plain = PlainName(name);
    std::vector<char const*> const& known = Table()[column].known;
    for (std::size_t rank = 0; rank < known.size(); ++rank)
        if (plain == known[rank])
            return 2 * preferred_[column].size() + rank;
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
