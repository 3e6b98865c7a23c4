// Calls grouped by the digits that the number called begins with.

#ifndef RECORDS_COUNTING_LEADINGDIGITS_H
#define RECORDS_COUNTING_LEADINGDIGITS_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "records/counting/Tally.h"

namespace CallRecordingUtils {

/// Counts by the first four characters, so that its size does not grow with the calls, and groups
/// by as many as tell something.
class LeadingDigits {
  public:
    struct Group {
        std::string digits; // Empty where the number begins with none.
        Tally tally;
    };

    template <typename MakeExample>
    void Count(std::string_view number, std::optional<CallTime> time, MakeExample makeExample) {
        byDigits_[DigitsOf(number)].Count(time, makeExample);
    }

    /// The most frequent first. A group that has more than a tenth of all is split by one more
    /// digit. rest counts what the groups leave out.
    std::vector<Group> Groups(Tally& rest) const;

  private:
    using ByDigits = std::map<std::string, Tally, std::less<>>;

    static std::string DigitsOf(std::string_view number);
    void Split(ByDigits::const_iterator begin, ByDigits::const_iterator end, std::size_t length,
               std::uint64_t most, std::vector<Group>& groups) const;

    ByDigits byDigits_;
};

} // namespace CallRecordingUtils

#endif
