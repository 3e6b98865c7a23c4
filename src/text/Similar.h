// How similar two words are, to suggest what a mistyped one should be.

#ifndef TEXT_SIMILAR_H
#define TEXT_SIMILAR_H

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace CallRecordingUtils {

/// The least number of characters to add, remove, replace or swap with a neighbour that turns a
/// into b.
inline std::size_t Distance(std::string_view a, std::string_view b) {
    using Row = std::vector<std::size_t>;
    Row beforeLast, last, row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast = last;
        last = row;
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            std::size_t const replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row[b.size()];
}

/// Whether word may be a mistyped form of known: at most a third of it is wrong.
inline bool IsSimilar(std::string_view word, std::string_view known) {
    return word.size() < 2 * known.size() + 2 && Distance(word, known) <= (known.size() + 2) / 3;
}

} // namespace CallRecordingUtils

#endif
