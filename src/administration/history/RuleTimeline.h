// Which rules the file held at which times, as far as the history can tell.

#ifndef ADMINISTRATION_HISTORY_RULETIMELINE_H
#define ADMINISTRATION_HISTORY_RULETIMELINE_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "administration/history/History.h"

namespace CallRecordingUtils {

/// The time for which the rule file was in one state. Times are in seconds since 1970.
struct RuleEra {
    static constexpr std::int64_t kAlways = std::numeric_limits<std::int64_t>::min();
    static constexpr std::int64_t kNow = std::numeric_limits<std::int64_t>::max();

    std::string digest; ///< Of the file's text.

    /// The first second in which the file is known to have been in this state; kAlways for the
    /// state that the first recorded edit found.
    std::int64_t from = kAlways;

    /// When the next era begins; kNow for the last one. (If the clock was set back in between, this
    /// is before from.)
    std::int64_t to = kNow;

    /// Only an edit of the history began at a known time. A change from outside is known to have
    /// happened by from, and not before this: in between the file may have been in this state or in
    /// the one before, or in others that nobody saw. Otherwise the same as from.
    std::int64_t mayBeginAt = kAlways;

    /// The edit that led to it: who, when, by which command, with which number, or that it came
    /// from outside. Nothing for the state that the first recorded edit found.
    std::optional<HistoryEntry> edit;
};

/// The eras of a rule file that leads to the text of now, in their order; there is at least one.
std::vector<RuleEra> ErasOf(std::vector<HistoryEntry> const& entries, std::string const& digestNow);

/// The states of one rule file, read at once. Operations throw as those of a History do.
class RuleTimeline {
  public:
    /// Reads the rule file at path and its history. Needs no lock.
    explicit RuleTimeline(std::string const& path);

    std::vector<RuleEra> const& Eras() const { return eras_; }

    /// The era of this second. An edit counts from the second in which it was made.
    RuleEra const& At(std::int64_t seconds) const;

    /// The text of the rule file in this era, or nothing if it is not kept any more.
    std::optional<std::string> TextOf(RuleEra const& era);

    /// The text that the file has now, and its digest, which is the one of the last era.
    std::string const& TextNow() const { return now_.text; }
    std::string const& DigestNow() const { return eras_.back().digest; }

  private:
    History history_;
    Snapshot now_;
    std::vector<RuleEra> eras_;
};

} // namespace CallRecordingUtils

#endif
