// Finds the columns of calls in the rows of a file.

#include "records/reading/CsvRecords.h"

#include <algorithm>

#include <fmt/format.h>

#include "common/Error.h"
#include "records/reading/KnownFormats.h"
#include "records/reading/WrittenAddress.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kNone = ColumnNames::kNone;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

/// The index of the column that text numbers from 1; kNone when text is not a number.
std::size_t NumberOf(std::string const& text) {
    bool const isNumber = !text.empty() && text.size() < 7 && text[0] != '0' &&
                          text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoul(text) - 1 : kNone;
}

std::string Listed(std::vector<std::string> const& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size() && text.size() < 200; ++i)
        text += (i > 0 ? ", " : "") + names[i].substr(0, 40);
    return text;
}

bool HasDigit(std::string const& text) {
    return std::any_of(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

CsvRecords::CsvRecords(Lines& lines, CallFormat const& format, std::string path)
    : format_(format), path_(std::move(path)), rows_(lines, CsvRows::Tabs::Escaped) {
    bool const isThere = rows_.Next();
    bool const isCall =
        !format.hasHeader || (format.known != nullptr && !format.known->row.empty());
    if (isThere && !isCall && !rows_.Problem().empty())
        throw Error(
            Error::Kind::Unreadable,
            fmt::format("{}:{}: no row of column names: {}; --format if you know the format", path_,
                        rows_.Line(), rows_.Problem()));
    isFirstACall_ = isThere;
    if (rows_.Problem().empty())
        names_ = Fields();
    fieldCount_ = names_.size();
}

std::vector<std::string> CsvRecords::Fields() const {
    std::vector<std::string> fields;
    for (std::size_t i = 0; i < rows_.FieldCount(); ++i)
        fields.push_back(rows_.Field(i));
    if (!fields.empty() && fields[0].rfind(kUtf8Mark, 0) == 0)
        fields[0].erase(0, kUtf8Mark.size()); // Of a file behind another one.
    return fields;
}

bool CsvRecords::AreNames(std::vector<std::string> const& names) const {
    auto const isThere = [&](Column column) {
        return std::any_of(names.begin(), names.end(), [&](std::string const& name) {
            return format_.names.Rank(column, name) != kNone;
        });
    };
    return isThere(kColumnFrom) && isThere(kColumnTo);
}

/// The index of the column that fits best, by its name or number; kNone if none does.
std::size_t CsvRecords::Find(std::size_t place) const {
    bool const isColumn = place < kColumnCount;
    auto const column = static_cast<Column>(place);
    static std::vector<std::string> const none;
    std::vector<std::string> const& wanted =
        isColumn ? none : format_.wanted[place - kColumnCount].names;
    std::size_t best = kNone;
    std::size_t where = kNone;
    for (std::size_t at = 0; at < names_.size(); ++at) {
        std::size_t const rank =
            isColumn ? format_.names.Rank(column, names_[at]) : RankAmong(wanted, names_[at]);
        if (rank < best) {
            best = rank;
            where = at;
        }
    }
    if (isColumn && best == kNone)
        return NumberOf(format_.names.Given(column));
    for (std::size_t i = 0; i < wanted.size() && where == kNone; ++i)
        where = NumberOf(wanted[i]);
    return where;
}

/// Says that a column is missing.
std::string CsvRecords::NoColumn(std::size_t place) const {
    bool const isColumn = place < kColumnCount;
    std::string const option = isColumn ? ColumnNames::Option(static_cast<Column>(place))
                                        : format_.wanted[place - kColumnCount].option;
    if (names_.empty())
        return fmt::format("{}: without a row of names {} takes the number of a column, 1 is the "
                           "first",
                           path_, option);
    if (!isColumn)
        return fmt::format("{}:{}: {}: no column \"{}\" among: {}", path_, rows_.Line(), option,
                           format_.wanted[place - kColumnCount].names[0], Listed(names_));
    std::string const& given = format_.names.Given(static_cast<Column>(place));
    return fmt::format("{}:{}: no column \"{}\" among: {}\nname it with {} (a number will do); "
                       "--no-header if this is a call already, --format if you know the format",
                       path_, rows_.Line(),
                       given.empty() ? (place == kColumnFrom ? "from" : "to") : given,
                       Listed(names_), option);
}

/// Returns what is missing; empty when nothing is, and only then are the columns other ones.
std::string CsvRecords::FindColumns() {
    std::vector<std::size_t> where(kColumnCount + format_.wanted.size());
    for (std::size_t place = 0; place < where.size(); ++place) {
        where[place] = Find(place);
        bool const isNeeded =
            place >= kColumnCount
                ? !format_.wanted[place - kColumnCount].option.empty()
                : place <= kColumnTo || !format_.names.Given(static_cast<Column>(place)).empty();
        if (where[place] == kNone && isNeeded)
            return NoColumn(place);
    }
    if (where[kColumnDate] == where[kColumnTime])
        where[kColumnDate] = kNone;
    where_ = where;
    for (std::size_t place = 0; place < kColumnCount; ++place)
        used_[place] = where[place] == kNone          ? ""
                       : where[place] < names_.size() ? names_[where[place]]
                                                      : fmt::format("number {}", where[place] + 1);
    return "";
}

void CsvRecords::BeginBehindNames() {
    hasNames_ = true;
    isFirstACall_ = false;
    std::string const missing = FindColumns();
    if (!missing.empty())
        throw Error(Error::Kind::Unreadable, missing);
}

void CsvRecords::BeginWithCall(std::vector<std::string> names) {
    names_ = std::move(names);
    std::string const missing = FindColumns();
    if (!missing.empty())
        throw Error(Error::Kind::Unreadable, missing);
}

/// Files that were put together have rows of names among the calls. Such a row holds no digit.
bool CsvRecords::TakeNames() {
    if (!hasNames_)
        return false;
    for (std::size_t i = 0; i < rows_.FieldCount(); ++i)
        if (HasDigit(rows_.Field(i)) && (i >= names_.size() || rows_.Field(i) != names_[i]))
            return false;
    std::vector<std::string> fields = Fields();
    if (!AreNames(fields))
        return false;
    names_.swap(fields);
    lost_ = FindColumns();
    if (!lost_.empty())
        names_.swap(fields);
    return lost_.empty();
}

bool CsvRecords::IsNoCall() {
    KnownFormat const* const known = format_.known;
    bool const isKnownAsNone = known != nullptr && !known->noCall.empty() &&
                               rows_.FieldCount() > 0 && rows_.Field(0) == known->noCall;
    return isKnownAsNone || TakeNames();
}

/// A quote that somebody forgot goes on to the next one, and takes whole rows with it.
void CsvRecords::RefuseWhatAQuoteSwallowed() {
    for (std::size_t i = 0; i < kColumnCount; ++i)
        if (where_[i] < rows_.FieldCount() &&
            rows_.Field(where_[i]).find_first_of("\r\n") != std::string::npos)
            return rows_.Refuse(fmt::format("a quote is open at its end, and {} would have a line "
                                            "break",
                                            used_[i]));
    if (fieldCount_ > 2 && rows_.HoldsARow(fieldCount_))
        rows_.Refuse("a quote is open at its end, and the lines that follow are rows of their own");
}

/// Whether values between tabs are quoted, though the row of names is not, and hold a tab.
bool CsvRecords::HasSplitAQuote() const {
    if (!rows_.AreQuotesPlain() || !hasNames_ || rows_.FieldCount() <= names_.size())
        return false;
    for (std::size_t i = 0; i < rows_.FieldCount(); ++i)
        if (rows_.Field(i).rfind('"', 0) == 0)
            return true;
    return false;
}

void CsvRecords::Take(CallRecord& record) {
    if (HasSplitAQuote())
        record.problem = "it has more fields than there are names, and a quote begins one of them, "
                         "as if a tab stood within quotes";
    record.wanted.resize(where_.size() - kColumnCount);
    record.lacks = 0;
    for (std::size_t i = 0; i < where_.size(); ++i) {
        std::string& value = i < kColumnCount ? record.values[i] : record.wanted[i - kColumnCount];
        value.clear();
        if (where_[i] == kNone) {
            record.lacks |= i < kColumnCount ? 0 : 1U << (i - kColumnCount);
            continue;
        }
        if (where_[i] < rows_.FieldCount()) {
            value = rows_.Field(where_[i]);
            if (i <= kColumnTo && rows_.AreQuotesPlain())
                value = Unquoted(value);
        } else if (record.problem.empty())
            record.problem =
                fmt::format("it has {} fields, and {} is number {}", rows_.FieldCount(),
                            (i < kColumnCount ? ColumnNames::Option(static_cast<Column>(i))
                                              : format_.wanted[i - kColumnCount].option.c_str()) +
                                2,
                            where_[i] + 1);
    }
}

bool CsvRecords::Next(CallRecord& record) {
    do {
        if (!isFirstACall_ && !rows_.Next())
            return false;
        isFirstACall_ = false;
        if (rows_.Problem().empty() && rows_.SpansLines())
            RefuseWhatAQuoteSwallowed();
        record.line = rows_.Line();
    } while (rows_.Problem().empty() && IsNoCall());
    record.problem = !lost_.empty() ? lost_ : rows_.Problem();
    if (record.problem.empty())
        Take(record);
    if (!record.problem.empty())
        record.wanted.clear();
    return true;
}

} // namespace CallRecordingUtils
