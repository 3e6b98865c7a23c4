// The rows of a file of comma-, semicolon- or tab-separated values.

#ifndef TEXT_CSVROWS_H
#define TEXT_CSVROWS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <csv.h>

#include "text/Lines.h"

namespace CallRecordingUtils {

/// Reads row by row. libcsv parses them in its strict mode: what is wrong is reported, not guessed.
class CsvRows {
  public:
    /// The separator is the one of , ; and tab that occurs most often in the first line.
    explicit CsvRows(Lines& lines);
    ~CsvRows();
    CsvRows(CsvRows const&) = delete;
    CsvRows& operator=(CsvRows const&) = delete;

    /// Reads the next row that is not empty. Returns false at the end.
    bool Next();

    std::size_t Line() const { return line_; }
    std::string const& Problem() const { return problem_; }
    std::size_t FieldCount() const { return fieldCount_; }
    std::string const& Field(std::size_t index) const { return fields_[index]; }

  private:
    void Start();
    char const* Feed(std::string_view text);
    char const* FeedLine();
    std::string ReadRow();
    static void AddField(void* text, std::size_t size, void* rows);
    static void EndRow(int end, void* rows);

    Lines& lines_;
    csv_parser parser_{};
    unsigned char separator_ = 0;
    std::size_t line_ = 0;
    std::string problem_;
    std::vector<std::string>
        fields_; // Possibly more than the row has, so that their memory is reused.
    std::size_t fieldCount_ = 0;
    bool isRowComplete_ = false;
};

} // namespace CallRecordingUtils

#endif
