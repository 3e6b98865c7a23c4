// Groups calls by the leading digits of the number called.

#ifndef RECORDS_COUNTING_LEADINGDIGITS_H
#define RECORDS_COUNTING_LEADINGDIGITS_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "records/counting/Tally.h"

namespace CallRecordingUtils {

/// Counts by the first four characters, so that its size does not grow with the calls, and then
/// forms groups of as many leading digits as say something.
class LeadingDigits {
  public:
    using ByDigits = std::map<std::string, Tally, std::less<>>;

    struct Group {
        std::string digits; // Empty for numbers that begin with something else.
        Tally tally;
    };

    template <typename MakeExample>
    void Count(std::string_view number, std::optional<CallTime> time, MakeExample makeExample) {
        byDigits_[DigitsOf(number)].Count(time, makeExample);
    }

    /// Adds the calls that other counted.
    void Add(LeadingDigits const& other) {
        for (auto const& [digits, tally] : other.byDigits_)
            Add(digits, tally);
    }
    void Add(std::string_view digits, Tally const& tally) {
        byDigits_[DigitsOf(digits)].Add(tally);
    }

    /// By up to four digits.
    ByDigits const& Counts() const { return byDigits_; }
    ByDigits& Counts() { return byDigits_; }

    /// The largest group first. A group with more than a tenth of all calls is split by one more
    /// digit. rest counts the calls that are in none of the groups.
    std::vector<Group> Groups(Tally& rest) const;

  private:
    static std::string DigitsOf(std::string_view number);
    void Split(ByDigits::const_iterator begin, ByDigits::const_iterator end, std::size_t length,
               std::uint64_t most, std::vector<Group>& groups) const;

    ByDigits byDigits_;
};

} // namespace CallRecordingUtils

#endif
