// Forms the groups.

#include "records/counting/LeadingDigits.h"

#include <numeric>

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kLongest = 4;
constexpr std::size_t kMostGroups = 20;

} // namespace

std::string LeadingDigits::DigitsOf(std::string_view number) {
    return std::string(
        number.substr(0, std::min(number.find_first_not_of("0123456789+*#"), kLongest)));
}

/// The numbers from begin to end share their first length digits.
void LeadingDigits::Split(ByDigits::const_iterator begin, ByDigits::const_iterator end,
                          std::size_t length, std::uint64_t most,
                          std::vector<Group>& groups) const {
    Group group;
    for (auto at = begin; at != end; ++at)
        group.tally.Add(at->second);
    std::string const& first = begin->first;
    std::string const& last = std::prev(end)->first;
    while (length < first.size() && length < last.size() && first[length] == last[length])
        ++length;
    if (length > 0 && (group.tally.calls <= most || first == last)) {
        group.digits = first.substr(0, length);
        groups.push_back(group);
        return;
    }
    while (begin != end) { // Numbers that end here come first, then each next digit.
        std::string const prefix = begin->first.substr(0, length + 1);
        auto const next = std::find_if(begin, end, [&prefix](auto const& entry) {
            return entry.first.compare(0, prefix.size(), prefix) != 0;
        });
        if (prefix.size() > length)
            Split(begin, next, length + 1, most, groups);
        else
            groups.push_back({prefix, begin->second});
        begin = prefix.size() > length ? next : std::next(begin);
    }
}

std::vector<LeadingDigits::Group> LeadingDigits::Groups(Tally& rest) const {
    std::vector<Group> groups;
    std::uint64_t const all = std::accumulate(
        byDigits_.begin(), byDigits_.end(), std::uint64_t{0},
        [](std::uint64_t sum, auto const& entry) { return sum + entry.second.calls; });
    if (!byDigits_.empty())
        Split(byDigits_.begin(), byDigits_.end(), 0, all / 10, groups);
    std::stable_sort(groups.begin(), groups.end(), [](Group const& left, Group const& right) {
        return left.tally.calls > right.tally.calls;
    });
    for (std::size_t i = kMostGroups; i < groups.size(); ++i)
        rest.Add(groups[i].tally);
    groups.resize(std::min(groups.size(), kMostGroups));
    return groups;
}

} // namespace CallRecordingUtils
