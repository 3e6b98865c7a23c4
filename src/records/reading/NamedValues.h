// Finds the columns of calls among values that come with their names, in any order.

#ifndef RECORDS_READING_NAMEDVALUES_H
#define RECORDS_READING_NAMEDVALUES_H

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "records/reading/CallFormat.h"
#include "records/reading/CallRecord.h"

namespace CallRecordingUtils {

class NamedValues {
  public:
    /// No column has a longer name.
    static constexpr std::size_t kLongest = 200;

    /// What is wanted of format may change until the first record begins.
    explicit NamedValues(CallFormat const& format) : format_(format) {}

    /// Begins a record, takes its values one by one, and says what it lacks.
    void Begin(CallRecord& record);
    void Take(std::string const& name, std::string_view value);
    void End();

    /// The names of the values that the first record had.
    std::array<std::string, kColumnCount> const& Used() const { return used_; }

  private:
    struct Fit {
        std::size_t place; // A column or, from kColumnCount on, one that is wanted.
        std::size_t rank;  // 0 is best.
    };

    std::vector<Fit> const& FitsOf(std::string const& name);

    CallFormat const& format_;
    std::unordered_map<std::string, std::vector<Fit>> fits_; // By the names seen so far.
    CallRecord* record_ = nullptr;
    std::vector<std::size_t> ranks_; // By place, of the values taken so far.
    std::array<std::string, kColumnCount> used_;
    std::array<std::string, kColumnCount> names_; // Of the values of this record,
    bool isFirst_ = true;                         // while it is the first.
};

} // namespace CallRecordingUtils

#endif
