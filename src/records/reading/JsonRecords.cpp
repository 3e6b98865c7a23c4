// Reads an object of JSON value by value, without building it.

#include "records/reading/JsonRecords.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace CallRecordingUtils {

/// Receives the events of the parser, and hands each value on with its name.
class JsonHandler {
  public:
    JsonHandler(JsonRecords& records, CallRecord& record) : records_(records), record_(record) {}

    // The names are those that the parser calls.
    // NOLINTBEGIN(readability-identifier-naming)
    bool null() { return Value(""); }
    bool boolean(bool value) { return Value(value ? "true" : "false"); }
    bool number_integer(std::int64_t value) { return Value(fmt::format_int(value).c_str()); }
    bool number_unsigned(std::uint64_t value) { return Value(fmt::format_int(value).c_str()); }
    bool number_float(double, std::string const& text) { return Value(text); }
    bool string(std::string const& text) { return Value(text); }
    bool binary(std::vector<std::uint8_t> const&) { return true; }
    bool start_object(std::size_t) {
        starts_.push_back(name_.size());
        if (!name_.empty())
            name_ += '.';
        prefixes_.push_back(name_.size());
        return true;
    }
    bool key(std::string const& key) {
        name_.resize(prefixes_.back());
        name_ += key;
        return true;
    }
    bool end_object() {
        name_.resize(starts_.back());
        starts_.pop_back();
        prefixes_.pop_back();
        return true;
    }
    bool start_array(std::size_t) {
        ++lists_;
        return true;
    }
    bool end_array() {
        --lists_;
        return true;
    }
    bool parse_error(std::size_t, std::string const&, nlohmann::json::exception const& error) {
        std::string const text = error.what();
        std::size_t const column = text.find("column ");
        record_.problem = "not JSON: " + text.substr(column == std::string::npos ? 0 : column);
        return false;
    }
    // NOLINTEND(readability-identifier-naming)

  private:
    bool Value(std::string_view text) {
        constexpr std::size_t kMost = 200; // No column has a longer name.
        if (lists_ == 0 && name_.size() <= kMost)
            records_.Take(name_, text);
        return true;
    }

    JsonRecords& records_;
    CallRecord& record_;
    std::string name_; // From the outermost object to this value.
    std::vector<std::size_t> starts_;
    std::vector<std::size_t> prefixes_;
    std::size_t lists_ = 0;
};

std::vector<JsonRecords::Fit> const& JsonRecords::FitsOf(std::string const& name) {
    auto const known = fits_.find(name);
    if (known != fits_.end())
        return known->second;
    // The records of one system have few names. A hostile file with ever new ones must not fill
    // memory.
    if (fits_.size() > 1000)
        fits_.clear();
    std::vector<Fit> fits;
    for (std::size_t i = 0; i < kColumnCount; ++i) {
        auto const column = static_cast<Column>(i);
        std::size_t const rank = names_.Rank(column, name);
        if (rank != ColumnNames::kNone)
            fits.push_back({column, rank});
    }
    return fits_.emplace(name, fits).first->second;
}

void JsonRecords::Take(std::string const& name, std::string_view value) {
    for (Fit const& fit : FitsOf(name))
        if (fit.rank <= ranks_[fit.column]) {
            ranks_[fit.column] = fit.rank;
            record_->values[fit.column] = value;
        }
}

void JsonRecords::Parse(CallRecord& record) {
    ranks_.fill(ColumnNames::kNone);
    record_ = &record;
    JsonHandler handler(*this, record);
    std::string_view const text = lines_.Text();
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &handler))
        return;
    for (Column const column : {kColumnFrom, kColumnTo})
        if (ranks_[column] == ColumnNames::kNone) {
            std::string const& given = names_.Given(column);
            record.problem =
                given.empty()
                    ? fmt::format("it has no value \"{}\" or another name of it; {} names one",
                                  column == kColumnFrom ? "from" : "to",
                                  ColumnNames::Option(column))
                    : fmt::format("it has no value \"{}\"", given);
            return;
        }
}

bool JsonRecords::Next(CallRecord& record) {
    do
        if (!lines_.Next())
            return false;
    while (lines_.Text().find_first_not_of(" \t") == std::string_view::npos);
    record.line = lines_.Number();
    record.problem.clear();
    for (std::string& value : record.values)
        value.clear();
    if (lines_.IsTooLong())
        record.problem = "it is longer than 256 KiB";
    else
        Parse(record);
    return true;
}

} // namespace CallRecordingUtils
