// Opens a call file with the reader for its format, and reads what the values of its records mean.

#include "records/reading/CallReader.h"

#include <algorithm>

#include <fmt/format.h>

#include "common/Error.h"
#include "model/CallTypeNames.h"
#include "records/reading/AttributeRecords.h"
#include "records/reading/CsvRecords.h"
#include "records/reading/JsonRecords.h"
#include "records/reading/KnownFormats.h"
#include "records/reading/WrittenAddress.h"

namespace CallRecordingUtils {
namespace {

/// Whether text is a time of the day: 08:02:11, 8:02 PM.
bool IsTimeOfDay(std::string const& text) {
    std::size_t const colon = text.find(':');
    return colon == 1 || colon == 2;
}

std::string AsText(Condition const& condition) {
    return condition.column + (condition.isEqual ? "=" : "!=") + condition.value;
}

} // namespace

CallReader::CallReader(std::string const& path, CallFormat const& format, SeenValues* seen,
                       std::function<void()> wait)
    : input_(path), lines_(input_), format_(format), seen_(seen) {
    input_.BeforeReading(std::move(wait));
    mayGuess_ = format.mayGuess && format.known == nullptr;
    reading_.format = "columns";
    try {
        Open(path);
    } catch (Error const&) {
        throw;
    } catch (std::runtime_error const& error) {
        throw Error(Error::Kind::Unreadable, path + ": cannot be read: " + error.what());
    }
}

/// Reads on as the known format says, or without one by the names of columns.
void CallReader::Adopt(KnownFormat const* known) {
    format_.known = known;
    reading_.isGuessed = mayGuess_ && known != nullptr;
    KnownFormat::Words distinct;
    if (!format_.distinct.empty())
        distinct.push_back(format_.distinct);
    if (known != nullptr) {
        reading_.format = known->name;
        reading_.title = known->title;
        reading_.isDocumented = known->isDocumented;
        for (std::size_t i = 0; i < kColumnCount; ++i)
            format_.names.Prefer(static_cast<Column>(i), known->columns[i]);
        if (format_.where.empty() && distinct.empty()) {
            for (std::string const& condition : known->conditions)
                format_.where.push_back(ReadCondition(condition));
            distinct = known->distinct;
        }
    }
    filter_.Begin(format_, distinct, seen_);
    for (Condition const& condition : format_.where)
        reading_.conditions.push_back(AsText(condition));
    if (!distinct.empty())
        reading_.distinct = fmt::format("{}", fmt::join(distinct, " or else "));
}

/// The first line shows the format; the reader for that format then reads the line again.
void CallReader::Open(std::string const& path) {
    std::size_t first = std::string_view::npos;
    while (first == std::string_view::npos) {
        if (!lines_.Next())
            return Adopt(format_.known);
        first = lines_.Text().find_first_not_of(" \t");
    }
    char const mark = lines_.Text()[first];
    KnownFormat const* const known = mayGuess_ ? FormatOfLine(lines_.Text()) : format_.known;
    lines_.Again();
    if (known != nullptr && known->kind == KnownFormat::Kind::Attributes) {
        Adopt(known);
        records_ = std::make_unique<AttributeRecords>(lines_, format_);
    } else if (mark == '{' || mark == '[') {
        records_ = std::make_unique<JsonRecords>(lines_, format_, [this](std::string_view text) {
            Adopt(mayGuess_ ? FormatOfJson(text) : format_.known);
        });
        reading_.title = "JSON";
    } else {
        OpenRows(path);
    }
}

void CallReader::OpenRows(std::string const& path) {
    auto records = std::make_unique<CsvRecords>(lines_, format_, path);
    bool isHeader = format_.hasHeader;
    KnownFormat const* known = format_.known;
    if (mayGuess_ && isHeader)
        known = FormatOfRow(records->FirstRow(), isHeader);
    reading_.title = "separated values";
    Adopt(known);
    // Names are taken where they are, also of a format that has none.
    if (format_.hasHeader &&
        (known == nullptr || known->row.empty() || records->AreNames(records->FirstRow())))
        records->BeginBehindNames();
    else {
        std::vector<std::string> names;
        for (std::size_t i = 0; known != nullptr && i < known->row.size(); ++i)
            names.push_back(known->row[i].name);
        records->BeginWithCall(std::move(names));
    }
    records_ = std::move(records);
}

/// Reads the next record or line as the file has it.
bool CallReader::Read(CallRecord& record) {
    if (records_ == nullptr)
        return false;
    try {
        return records_->Next(record);
    } catch (std::runtime_error const& error) {
        used_ = records_->Used();
        records_.reset();
        record.line = lines_.Number() + 1;
        record.problem = std::string("the file ends here: ") + error.what();
        record.wanted.clear();
        return true;
    }
}

bool CallReader::Next(CallRecord& record) {
    while (Read(record)) {
        record.time.reset();
        record.instant.reset();
        if (record.problem.empty() || !record.wanted.empty())
            Interpret(record);
        if (filter_.Takes(record))
            return true;
        ++reading_.leftOut;
    }
    return false;
}

void CallReader::Interpret(CallRecord& record) {
    if (format_.known != nullptr && format_.known->isEncoded) {
        for (std::string& value : record.values)
            value = UrlDecoded(value);
        for (std::string& value : record.wanted)
            value = UrlDecoded(value);
    }
    ReadSide(record, kColumnFrom, kColumnFromType, record.from);
    ReadSide(record, kColumnTo, kColumnToType, record.to);
    ReadTime(record);
}

void CallReader::ReadSide(CallRecord& record, Column address, Column type, CallRecord::Side& side) {
    std::string const& written = record.values[address];
    std::string_view const number = WithoutName(written);
    side.hadName = number.size() < written.size();
    side.address = side.hadName ? number : written;
    if (IsUrlEncoded(side.address))
        side.address = UrlDecoded(side.address);
    if (record.problem.empty() && written.find_first_of("\r\n") != std::string::npos)
        record.problem = "an address has a line break";
    side.type.reset();
    std::string const& typeText = record.values[type];
    TypeColumn& column = typeColumns_[type];
    if (typeText.empty() || column == TypeColumn::Other)
        return;
    side.type = ParseCallType(typeText);
    if (column == TypeColumn::Unknown)
        column =
            side.type || !format_.names.Given(type).empty() ? TypeColumn::Types : TypeColumn::Other;
    if (column == TypeColumn::Other)
        reading_.notes.push_back("the column " + records_->Used()[type] +
                                 " is not used: its first value, \"" + typeText +
                                 "\", is no call type");
    else if (side.type.value_or(CALL_TYPE_ANY) == CALL_TYPE_ANY && record.problem.empty())
        record.problem = "\"" + typeText + "\" is not the type of an address";
}

void CallReader::ReadTime(CallRecord& record) const {
    std::string& text = record.values[kColumnTime];
    std::string const& date = record.values[kColumnDate];
    if (!date.empty() && (IsTimeOfDay(text) || !format_.names.Given(kColumnDate).empty()))
        text = date + " " + text;
    if (text.find('%') != std::string::npos)
        text = UrlDecoded(text);
    std::optional<WrittenTime> time;
    if (!format_.timeFormat.empty())
        time = ReadCallTimeAs(text, format_.timeFormat);
    else if (format_.known != nullptr && !format_.known->timeFormat.empty())
        time = ReadCallTimeAs(text, format_.known->timeFormat);
    if (!time && format_.timeFormat.empty())
        time = ReadCallTime(text);
    if (!time)
        return;
    record.time = time->shown;
    record.instant = time->instant;
}

CallReading CallReader::Reading() const {
    CallReading reading = reading_;
    reading.columns = records_ != nullptr ? records_->Used() : used_;
    for (Column const type : {kColumnFromType, kColumnToType})
        if (typeColumns_[type] == TypeColumn::Other)
            reading.columns[type].clear();
    return reading;
}

} // namespace CallRecordingUtils
