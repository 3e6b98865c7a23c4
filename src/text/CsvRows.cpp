// Reads rows with libcsv, and starts again on the next line after one that is malformed.

#include "text/CsvRows.h"

#include <algorithm>
#include <array>
#include <new>

namespace CallRecordingUtils {
namespace {

constexpr std::string_view kSeparators = ",;\t";

/// How often each separator occurs outside of quotes.
std::array<std::size_t, kSeparators.size()> CountSeparators(std::string_view line) {
    std::array<std::size_t, kSeparators.size()> counts{};
    bool isQuoted = false;
    for (char const c : line) {
        isQuoted ^= c == '"';
        std::size_t const at = kSeparators.find(c);
        if (!isQuoted && at != std::string_view::npos)
            ++counts[at];
    }
    return counts;
}

/// The separator that occurs most often.
char SeparatorOf(std::string_view line) {
    auto const counts = CountSeparators(line);
    return kSeparators[static_cast<std::size_t>(std::max_element(counts.begin(), counts.end()) -
                                                counts.begin())];
}

/// Replaces \t, \n, \r and \\, and \N if it is all of the field. Other backslashes stay.
void Unescape(std::string& field) {
    if (field == "\\N")
        return field.clear();
    constexpr std::string_view kCodes = "tnr\\";
    for (std::size_t at = 0; (at = field.find('\\', at)) != std::string::npos; ++at) {
        std::size_t const code =
            at + 1 < field.size() ? kCodes.find(field[at + 1]) : std::string_view::npos;
        if (code != std::string_view::npos)
            field.replace(at, 2, 1, "\t\n\r\\"[code]);
    }
}

} // namespace

CsvRows::CsvRows(Lines& lines, Tabs tabs) : lines_(lines), tabs_(tabs) {
    Start();
}

CsvRows::~CsvRows() {
    csv_free(&parser_);
}

void CsvRows::Start() {
    // CSV_REPALL_NL also ends empty rows, so a row that is not ended is one with an open quote.
    if (csv_init(&parser_, CSV_STRICT | CSV_REPALL_NL) != 0)
        throw std::bad_alloc();
    if (separator_ != 0)
        csv_set_delim(&parser_, separator_);
}

void CsvRows::Restart() {
    csv_free(&parser_);
    Start();
}

void CsvRows::AddField(void* text, std::size_t size, void* rows) {
    CsvRows& row = *static_cast<CsvRows*>(rows);
    if (row.fieldCount_ == row.fields_.size())
        row.fields_.emplace_back();
    row.fields_[row.fieldCount_++].assign(static_cast<char const*>(text), size);
}

void CsvRows::EndRow(int, void* rows) {
    static_cast<CsvRows*>(rows)->isRowComplete_ = true;
}

/// Returns what is wrong with text; null when nothing is.
char const* CsvRows::Feed(std::string_view text) {
    if (csv_parse(&parser_, text.data(), text.size(), AddField, EndRow, this) == text.size())
        return nullptr;
    if (csv_error(&parser_) != CSV_EPARSE)
        throw std::bad_alloc();
    return "a quote is neither at an end of its field nor doubled";
}

char const* CsvRows::FeedLine() {
    if (lines_.IsTooLong() || lines_.RecordBytes() > Lines::kMost)
        return "it is longer than 256 KiB";
    if (lines_.Text().find('\0') != std::string_view::npos)
        return "it holds a byte of value 0";
    if (separator_ == 0) {
        separator_ = static_cast<unsigned char>(SeparatorOf(lines_.Text()));
        csv_set_delim(&parser_, separator_);
        isEscaped_ = separator_ == '\t' && tabs_ == Tabs::Escaped &&
                     lines_.Text().find('"') == std::string_view::npos;
    }
    if (isEscaped_)
        return SplitAtTabs(), nullptr;
    char const* const problem = Feed(lines_.Text());
    if (problem != nullptr)
        return problem;
    return Feed(lines_.EndsInReturn() ? "\r" : "\n"); // Within quotes it is part of the field.
}

void CsvRows::SplitAtTabs() {
    std::string_view rest = lines_.Text();
    while (!isRowComplete_) {
        std::size_t const end = std::min(rest.find('\t'), rest.size());
        AddField(const_cast<char*>(rest.data()), end, this); // It is only read.
        Unescape(fields_[fieldCount_ - 1]);
        isRowComplete_ = end == rest.size();
        rest.remove_prefix(isRowComplete_ ? end : end + 1);
    }
    if (lines_.Text().empty())
        fieldCount_ = 0;
}

/// Reads the row that begins with this line. Returns what is wrong with it, empty when nothing is.
std::string CsvRows::ReadRow() {
    fieldCount_ = 0;
    isRowComplete_ = false;
    char const* problem = FeedLine();
    spansLines_ = problem == nullptr && !isRowComplete_;
    if (!spansLines_)
        return problem != nullptr ? problem : "";
    mostFields_ = 0;
    std::size_t const separator = kSeparators.find(static_cast<char>(separator_));
    while (problem == nullptr && !isRowComplete_) {
        problem = lines_.Continue() ? FeedLine() : "a quote is never closed";
        mostFields_ = std::max(mostFields_, CountSeparators(lines_.Text())[separator] + 1);
    }
    if (problem == nullptr)
        return "";
    lines_.GoBack();
    return std::string("a quote is open at its end, and with the lines that follow ") + problem;
}

/// Only the first line of a row that cannot be read is given up; the lines after it are read again.
/// That costs at most one more pass over the file: the lines that an open quote swallows have their
/// quotes in pairs, so none is open when they are read by themselves.
bool CsvRows::Next() {
    do {
        if (!lines_.Next())
            return false;
        line_ = lines_.Number();
        problem_ = ReadRow();
    } while (problem_.empty() && fieldCount_ == 0);
    if (!problem_.empty())
        Restart();
    return true;
}

void CsvRows::Refuse(std::string problem) {
    problem_ = std::move(problem);
    lines_.GoBack();
    Restart();
}

} // namespace CallRecordingUtils
