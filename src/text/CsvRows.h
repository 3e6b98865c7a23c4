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
    /// How values between tabs are written, if there is no quote in the first line.
    enum class Tabs {
        Quoted,  ///< As between commas.
        Escaped, ///< As databases export them: \t, \n, \\ and \N; a quote is a quote.
    };

    /// The separator is the one of , ; and tab that occurs most often in the first line.
    explicit CsvRows(Lines& lines, Tabs tabs = Tabs::Quoted);
    ~CsvRows();
    CsvRows(CsvRows const&) = delete;
    CsvRows& operator=(CsvRows const&) = delete;

    /// Reads the next row that is not empty. Returns false at the end.
    bool Next();

    /// Gives up the row, which spans several lines, with a problem: the next one begins with its
    /// second line.
    void Refuse(std::string problem);

    std::size_t Line() const { return line_; }
    /// Whether the row spans several lines, one of which but the first could be a row of so many
    /// fields by itself.
    bool HoldsARow(std::size_t fields) const { return spansLines_ && mostFields_ >= fields; }
    bool SpansLines() const { return spansLines_; }
    /// Whether a quote is a quote and nothing more: see Tabs::Escaped.
    bool AreQuotesPlain() const { return isEscaped_; }
    std::string const& Problem() const { return problem_; }
    std::size_t FieldCount() const { return fieldCount_; }
    std::string const& Field(std::size_t index) const { return fields_[index]; }

  private:
    void Start();
    char const* Feed(std::string_view text);
    char const* FeedLine();
    std::string ReadRow();
    void SplitAtTabs();
    void Restart();
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
    bool spansLines_ = false;
    std::size_t mostFields_ = 0; // Of one line of a row but its first, read by itself.
    Tabs const tabs_;
    bool isEscaped_ = false;
};

} // namespace CallRecordingUtils

#endif
