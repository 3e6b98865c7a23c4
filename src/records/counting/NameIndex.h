// Names of files, to find those with an identifier in them.

#ifndef RECORDS_COUNTING_NAMEINDEX_H
#define RECORDS_COUNTING_NAMEINDEX_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace CallRecordingUtils {

/// Any number of threads may ask at once, after Sort.
class NameIndex {
  public:
    void Add(std::string_view name) { names_.append(name) += '\n'; }
    void Sort();

    /// Whether a name holds id, as it is or with %XX for characters as rtpengine writes them; not
    /// as a part of a longer number or word. REQUIRES: Sort was called after the last Add.
    bool HasNameWith(std::string_view id) const;

  private:
    std::string_view RestOfName(std::size_t start) const;
    bool HasWhole(std::string_view id) const;

    std::string names_;               // One after the other, with line ends in between.
    std::vector<std::size_t> starts_; // Where words and numbers begin, sorted by what follows.
};

} // namespace CallRecordingUtils

#endif
