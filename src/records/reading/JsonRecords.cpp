// Reads an object of JSON value by value, without building it.

#include "records/reading/JsonRecords.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace CallRecordingUtils {
namespace {

constexpr auto kNone = std::string_view::npos;

/// Receives the events of the parser, and hands each value on with its name.
class JsonHandler {
  public:
    JsonHandler(NamedValues& values, std::string& problem) : values_(values), problem_(problem) {}

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
        starts_.push_back({name_.size(), false});
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
        name_.resize(starts_.back().size);
        starts_.pop_back();
        prefixes_.pop_back();
        return true;
    }
    bool start_array(std::size_t) {
        starts_.push_back({name_.size(), true});
        return true;
    }
    bool end_array() {
        starts_.pop_back();
        return true;
    }
    bool parse_error(std::size_t, std::string const&, nlohmann::json::exception const& error) {
        std::string const text = error.what();
        std::size_t const column = text.find("column ");
        problem_ = "not JSON: " + text.substr(column == std::string::npos ? 0 : column);
        return false;
    }
    // NOLINTEND(readability-identifier-naming)

  private:
    /// Where a list or an object begins: how long the name is there.
    struct Start {
        std::size_t size;
        bool isList;
    };

    bool Value(std::string_view text) {
        if (!starts_.empty() && !starts_.back().isList)
            values_.Take(name_, text);
        return true;
    }

    NamedValues& values_;
    std::string& problem_;
    std::string name_; // From the outermost object to this value.
    std::vector<Start> starts_;
    std::vector<std::size_t> prefixes_;
};

/// Looks for the end of an object, text by text.
class ObjectEnd {
  public:
    /// Where in text the object ends; kNone if it goes on.
    std::size_t In(std::string_view text) {
        for (std::size_t at = 0; at < text.size(); ++at)
            if (isInString_)
                at += text[at] == '\\' ? 1 : (isInString_ = text[at] != '"', 0);
            else if (text[at] == '"')
                isInString_ = true;
            else if (text[at] == '{')
                ++depth_;
            else if (text[at] == '}' && --depth_ <= 0)
                return at + 1;
        return kNone;
    }

  private:
    bool isInString_ = false;
    int depth_ = 0;
};

} // namespace

/// Goes to the next object. Returns false at the end.
bool JsonRecords::FindObject() {
    for (;;) {
        if (!lines_.Next())
            return false;
        std::string_view const line = lines_.Text();
        if (lines_.Number() == 1 && !isList_ && !line.empty() && line.front() == '[') {
            isList_ = true;
            lines_.KeepRest(1);
            continue;
        }
        std::size_t const begin = line.find_first_not_of(Between());
        isSkipping_ = isSkipping_ && (begin == kNone || line[begin] != '{');
        if (begin != kNone && !isSkipping_) {
            text_ = line.substr(begin);
            return true;
        }
    }
}

/// Takes text as the object. Returns false, with the problem, when it is none.
bool JsonRecords::Parse(std::string_view text, CallRecord& record) {
    if (first_)
        std::exchange(first_, nullptr)(text);
    values_.Begin(record);
    JsonHandler handler(values_, record.problem);
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &handler)) {
        record.wanted.clear();
        return false;
    }
    values_.End();
    return true;
}

/// Makes what follows the object, size bytes of the line's text, a line of its own if that is an
/// object, too. Returns whether nothing else follows.
bool JsonRecords::EndsAt(std::string_view text, std::size_t size) {
    std::size_t const more = text.find_first_not_of(Between(), size);
    if (more == kNone)
        return true;
    if (text[more] != '{')
        return false;
    std::string_view const line = lines_.Text();
    lines_.KeepRest(static_cast<std::size_t>(text.data() - line.data()) + more);
    return true;
}

void JsonRecords::ReadOverLines(CallRecord& record) {
    std::string whole(text_);
    std::size_t const first = whole.size();
    ObjectEnd end;
    std::size_t size = end.In(whole);
    while (size == kNone && lines_.Continue() && !lines_.IsTooLong() &&
           lines_.RecordBytes() <= Lines::kMost) {
        std::string_view const line = lines_.Text();
        size = end.In(line);
        whole.append("\n").append(line.substr(0, size));
        if (size != kNone && !EndsAt(line, size))
            size = kNone; // The parser says what is wrong with that.
    }
    if (size != kNone && Parse(whole, record)) {
        trust_ = std::min(trust_ + 1, 1000);
        return;
    }
    isSkipping_ = --trust_ > 0;
    lines_.GoBack();
    if (Parse(std::string_view(whole).substr(0, first), record) || record.problem.empty())
        record.problem = "not JSON";
}

void JsonRecords::ReadObject(CallRecord& record) {
    // What is right in itself, as nearly every line, is not looked at twice.
    if (!first_ && !lines_.IsTooLong() && Parse(text_, record))
        return;
    std::size_t const size = ObjectEnd().In(text_);
    if (size == kNone && trust_ > 0 && !lines_.IsTooLong())
        return ReadOverLines(record);
    bool const isWhole = size != kNone && EndsAt(text_, size);
    if (lines_.IsTooLong()) {
        values_.Begin(record);
        record.wanted.clear();
        record.problem = "it is longer than 256 KiB";
    } else {
        Parse(isWhole ? text_.substr(0, size) : text_, record);
    }
}

bool JsonRecords::Next(CallRecord& record) {
    if (!FindObject())
        return false;
    record.line = lines_.Number();
    ReadObject(record);
    return true;
}

} // namespace CallRecordingUtils
