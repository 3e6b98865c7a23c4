// Reads attribute by attribute.

#include "records/reading/AttributeRecords.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace CallRecordingUtils {
namespace {

constexpr char kBlanks[] = " \t";

bool IsIndented(std::string_view line) {
    return !line.empty() && (line.front() == ' ' || line.front() == '\t');
}

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

/// A value without the quotes around it and the backslashes before quotes and backslashes.
std::string Unquoted(std::string_view text) {
    std::string value;
    for (std::size_t at = 1; at + 1 < text.size(); ++at) {
        bool const isEscape = text[at] == '\\' && at + 2 < text.size() &&
                              (text[at + 1] == '"' || text[at + 1] == '\\');
        value += text[at += isEscape ? 1 : 0];
    }
    return value;
}

} // namespace

/// Goes to the line that a record begins with.
bool AttributeRecords::FindRecord() {
    while (lines_.Next())
        if (!Trimmed(lines_.Text()).empty())
            return true;
    return false;
}

/// Takes the attribute of this line. Returns what is wrong with the line; null when nothing is.
char const* AttributeRecords::TakeLine() {
    std::string_view const line = lines_.Text();
    std::size_t const sign = line.find('=');
    if (sign == std::string_view::npos)
        return "a line of it is no attribute";
    std::string_view const value = Trimmed(line.substr(sign + 1));
    bool const isQuoted = value.size() > 1 && value.front() == '"' && value.back() == '"';
    std::string const name(Trimmed(line.substr(0, line[sign - 1] == '+' ? sign - 1 : sign)));
    values_.Take(name, isQuoted ? Unquoted(value) : std::string(value));
    return nullptr;
}

bool AttributeRecords::Next(CallRecord& record) {
    if (!FindRecord())
        return false;
    record.line = lines_.Number();
    values_.Begin(record);
    char const* problem = nullptr;
    if (lines_.IsTooLong() || IsIndented(lines_.Text()))
        problem = "no record begins with this line";
    else
        values_.Take("Record-Time", Trimmed(lines_.Text()));
    while (lines_.Next() && !Trimmed(lines_.Text()).empty()) {
        if (!IsIndented(lines_.Text())) {
            lines_.Again();
            break;
        }
        if (problem == nullptr)
            problem = lines_.IsTooLong() ? "a line of it is longer than 256 KiB" : TakeLine();
    }
    values_.End();
    if (problem != nullptr) {
        record.problem = problem;
        record.wanted.clear();
    }
    return true;
}

} // namespace CallRecordingUtils
