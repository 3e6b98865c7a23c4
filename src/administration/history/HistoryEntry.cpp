// Tells from digests what happened.

#include "administration/history/HistoryEntry.h"

#include <algorithm>

namespace CallRecordingUtils {

std::string const& EndOf(HistoryEntry const& entry) {
    return entry.state == EditState::Unknown ? entry.before : entry.after;
}

void Settle(std::vector<HistoryEntry>& entries, std::string const& current, std::int64_t seconds) {
    if (!entries.empty() && entries.back().state == EditState::Begun) {
        HistoryEntry& last = entries.back();
        if (current == last.before)
            entries.pop_back(); // It was not saved.
        else
            last.state = current == last.after ? EditState::Saved : EditState::Unknown;
    }
    if (entries.empty() || EndOf(entries.back()) == current)
        return;
    HistoryEntry outside;
    outside.seconds = std::max(seconds, entries.back().seconds);
    outside.before = EndOf(entries.back());
    outside.after = current;
    outside.state = EditState::Outside;
    entries.push_back(outside);
}

std::vector<HistoryEntry> EditsInEffect(std::vector<HistoryEntry> const& entries) {
    std::vector<HistoryEntry> effective;
    for (HistoryEntry const& entry : entries) {
        bool const isUndo = entry.note.undone > 0 && entry.state == EditState::Saved;
        if (!isUndo && entry.before != entry.after)
            effective.push_back(entry);
        for (std::int64_t i = 0; isUndo && i < entry.note.undone && !effective.empty(); ++i)
            effective.pop_back();
    }
    return effective;
}

} // namespace CallRecordingUtils
