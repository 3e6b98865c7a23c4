// Reads rows with libcsv, and starts again on the next line after one that is malformed.

#include "text/CsvRows.h"

#include <algorithm>
#include <new>

namespace CallRecordingUtils {
namespace {

/// The separator that occurs most often outside of quotes.
unsigned char SeparatorOf(std::string_view line) {
    std::size_t counts[] = {0, 0, 0};
    constexpr std::string_view kSeparators = ",;\t";
    bool isQuoted = false;
    for (char const c : line) {
        isQuoted ^= c == '"';
        std::size_t const at = kSeparators.find(c);
        if (!isQuoted && at != std::string_view::npos)
            ++counts[at];
    }
    return static_cast<unsigned char>(
        kSeparators[static_cast<std::size_t>(std::max_element(counts, counts + 3) - counts)]);
}

} // namespace

CsvRows::CsvRows(Lines& lines) : lines_(lines) {
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
        separator_ = SeparatorOf(lines_.Text());
        csv_set_delim(&parser_, separator_);
    }
    char const* const problem = Feed(lines_.Text());
    return problem != nullptr ? problem : Feed("\n");
}

/// Reads the row that begins with this line. Returns what is wrong with it, empty when nothing is.
std::string CsvRows::ReadRow() {
    fieldCount_ = 0;
    isRowComplete_ = false;
    char const* problem = FeedLine();
    if (problem != nullptr || isRowComplete_)
        return problem != nullptr ? problem : "";
    while (problem == nullptr && !isRowComplete_)
        problem = lines_.Continue() ? FeedLine() : "a quote is never closed";
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
    if (!problem_.empty()) {
        csv_free(&parser_);
        Start();
    }
    return true;
}

} // namespace CallRecordingUtils
