// The table of formats, and how they are recognised. docs/replay.md describes them for people.

#include "records/reading/KnownFormats.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <sstream>

#include "records/reading/CallTime.h"
#include "records/reading/Columns.h"

namespace CallRecordingUtils {
namespace {

constexpr char kTable[] = R"(
format asterisk
title Asterisk's cdr_csv
row accountcode src dst dcontext clid channel dstchannel lastapp lastdata start:time answer end
row duration:digits billsec:digits disposition:capitals amaflags
more uniqueid userfield linkedid peeraccount sequence
time start

format asterisk-custom
title Asterisk's cdr_custom
row clid src dst dcontext channel dstchannel lastapp lastdata start:time answer end
row duration:digits billsec:digits disposition:capitals amaflags
more accountcode uniqueid userfield sequence
time start

format freeswitch
title FreeSWITCH's cdr_csv
row caller_id_name caller_id_number destination_number context start_stamp:time answer_stamp
row end_stamp duration:digits billsec:digits hangup_cause:capitals
more uuid bleg_uuid accountcode read_codec write_codec

format freeswitch-json
title FreeSWITCH's json_cdr
kind json
encoded
marks "callflow" "core-uuid"
from callflow.caller_profile.caller_id_number variables.caller_id_number variables.sip_from_user
to callflow.caller_profile.destination_number variables.destination_number variables.sip_to_user
time variables.start_uepoch variables.start_epoch variables.start_stamp
time callflow.times.created_time

format cucm
title Cisco CUCM's call detail records
marks cdrRecordType callingPartyNumber
from callingPartyNumber
to finalCalledPartyNumber originalCalledPartyNumber
time dateTimeOrigination
nocall INTEGER

format teams
title Microsoft Teams' direct routing calls
marks caller_number callee_number
from caller_number
to callee_number
time invite_time start_time failure_time time
date date invite_date start_date
timeformat %m/%d/%Y %H:%M:%S

format teams
title Microsoft Teams' PSTN calls
marks caller_id destination_number
from caller_id
to destination_dialed destination_number
time start_time time
date date start_date
timeformat %m/%d/%Y %H:%M:%S

format acc
title Kamailio's and OpenSIPS' acc
compared
marks method src_user dst_user
from src_user
to dst_user dst_ouser
time time
where method=INVITE

format voipmonitor
title VoIPmonitor's call detail records
marks sipcallerip caller called
from caller
to called
time calldate

format radius
title RADIUS detail
compared
kind attributes
from Calling-Station-Id User-Name
to Called-Station-Id
time Timestamp Record-Time
timeformat %a %b %d %H:%M:%S %Y
where Acct-Status-Type!=Accounting-On Acct-Status-Type!=Accounting-Off
distinct Acct-Unique-Session-Id Acct-Session-Id
)";

KnownFormat::Field FieldOf(std::string const& word) {
    std::size_t const colon = std::min(word.find(':'), word.size());
    return {word.substr(0, colon), word.substr(std::min(colon + 1, word.size()))};
}

/// Adds a line of the table to what is said of a format.
void Take(KnownFormat& format, std::string const& key, std::string const& rest) {
    std::istringstream stream(rest);
    KnownFormat::Words words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    auto const add = [&words](KnownFormat::Words& to) {
        to.insert(to.end(), words.begin(), words.end());
    };
    if (key == "title")
        format.title = rest;
    else if (key == "kind")
        format.kind = rest == "json" ? KnownFormat::Kind::Json : KnownFormat::Kind::Attributes;
    else if (key == "compared")
        format.isDocumented = false;
    else if (key == "encoded")
        format.isEncoded = true;
    else if (key == "nocall")
        format.noCall = rest;
    else if (key == "timeformat")
        format.timeFormat = rest;
    else if (key == "row" || key == "more")
        std::transform(words.begin(), words.end(), std::back_inserter(format.row), FieldOf);
    else
        add(key == "marks"      ? format.marks
            : key == "where"    ? format.conditions
            : key == "distinct" ? format.distinct
            : key == "from"     ? format.columns[kColumnFrom]
            : key == "to"       ? format.columns[kColumnTo]
            : key == "date"     ? format.columns[kColumnDate]
                                : format.columns[kColumnTime]);
    if (key == "row")
        format.least = format.row.size();
}

std::vector<KnownFormat> ReadTable() {
    std::vector<KnownFormat> formats;
    std::istringstream table(kTable);
    for (std::string line; std::getline(table, line);) {
        std::size_t const blank = std::min(line.find(' '), line.size());
        std::string const key = line.substr(0, blank);
        std::string const rest = line.substr(std::min(blank + 1, line.size()));
        if (key == "format")
            formats.emplace_back().name = rest;
        else if (!key.empty())
            Take(formats.back(), key, rest);
    }
    return formats;
}

bool Consists(std::string const& value, std::string const& of) {
    if (of == "time")
        return value.find(':') != std::string::npos && ReadCallTime(value);
    constexpr char kDigits[] = "0123456789";
    constexpr char kCapitals[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ_ 0123456789";
    return of.empty() ||
           (!value.empty() &&
            value.find_first_not_of(of == "digits" ? kDigits : kCapitals) == std::string::npos);
}

bool IsRowOf(KnownFormat const& format, std::vector<std::string> const& fields) {
    if (format.row.empty() || fields.size() < format.least || fields.size() > format.row.size())
        return false;
    for (std::size_t i = 0; i < format.least; ++i)
        if (!Consists(fields[i], format.row[i].consists))
            return false;
    return true;
}

bool HasMarks(KnownFormat const& format, std::vector<std::string> const& fields) {
    auto const isThere = [&fields](std::string const& mark) {
        return std::any_of(fields.begin(), fields.end(), [&mark](std::string const& field) {
            return PlainName(field) == PlainName(mark);
        });
    };
    return format.kind == KnownFormat::Kind::Rows && !format.marks.empty() &&
           std::all_of(format.marks.begin(), format.marks.end(), isThere);
}

template <typename Fits>
KnownFormat const* FirstThat(Fits fits) {
    auto const& formats = KnownFormats();
    auto const found = std::find_if(formats.begin(), formats.end(), fits);
    return found != formats.end() ? &*found : nullptr;
}

} // namespace

std::vector<KnownFormat> const& KnownFormats() {
    static std::vector<KnownFormat> const formats = ReadTable();
    return formats;
}

KnownFormat const* FormatNamed(std::string_view name) {
    return FirstThat([name](KnownFormat const& format) { return format.name == name; });
}

KnownFormat const* FormatOfRow(std::vector<std::string> const& fields, bool& isHeader) {
    isHeader = true;
    if (auto const* format =
            FirstThat([&](KnownFormat const& known) { return HasMarks(known, fields); }))
        return format;
    isHeader = false;
    return FirstThat([&](KnownFormat const& known) { return IsRowOf(known, fields); });
}

KnownFormat const* FormatOfJson(std::string_view text) {
    return FirstThat([text](KnownFormat const& format) {
        auto const isThere = [text](std::string const& mark) {
            return text.find(mark) != std::string_view::npos;
        };
        return format.kind == KnownFormat::Kind::Json &&
               std::any_of(format.marks.begin(), format.marks.end(), isThere);
    });
}

/// A record of RADIUS detail begins with a date as "Mon Nov  2 08:02:11 2026".
KnownFormat const* FormatOfLine(std::string_view line) {
    std::tm parts{};
    std::string const text(line);
    char const* const rest = strptime(text.c_str(), "%a %b %d %H:%M:%S %Y", &parts);
    return rest != nullptr && *rest == '\0' ? FirstThat([](KnownFormat const& format) {
        return format.kind == KnownFormat::Kind::Attributes;
    })
                                            : nullptr;
}

} // namespace CallRecordingUtils
