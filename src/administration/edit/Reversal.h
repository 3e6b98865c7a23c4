// Taking back one edit that others came after.

#ifndef ADMINISTRATION_EDIT_REVERSAL_H
#define ADMINISTRATION_EDIT_REVERSAL_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "administration/edit/Changes.h"
#include "administration/edit/RuleEdit.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// For each rule of a list its place in the list after; nothing for one that is gone.
using RulePlaces = std::vector<std::optional<std::size_t>>;

/// Knows what an edit did to which rules, and follows the rules through the edits that came later.
/// As long as none of these touched what the edit did, that can be taken back alone:
///
/// - A rule that it changed gets the former values; a rule that it added is deleted; one that it
///   deleted comes back with its section of the file.
/// - A rule that it moved, or deleted, goes behind the rule that it followed before, or else before
///   the one that followed it. Rules that were moved later are no guide.
/// - Identifiers belong to places: those that the edit introduced go, those that it removed return.
///   One that was given to another rule meanwhile does not; then the next free one is taken.
class Reversal {
  public:
    /// The states of the file before and after the edit. Throws an Error if they cannot be read.
    Reversal(std::string const& before, std::string const& after);

    /// Whether the edit did nothing to rules; then nothing can be taken back.
    bool IsEmpty() const { return changes_.empty(); }

    /// How many rules there are in the state that was followed last.
    std::size_t Count() const { return now_.size(); }

    /// Goes on to the state that the next edit led to. Returns the changes of that edit that touch
    /// what is to be taken back; they borrow the rules of next and of the state before, and are
    /// valid until the next call. Throws an Error if the state cannot be read.
    std::vector<Change> Follow(std::string const& next);

    /// Has edit take it back. REQUIRES: the last state that was followed is the file of edit, and
    /// nothing touched what is to be taken back.
    void TakeBack(RuleEdit& edit) const;

  private:
    /// A rule of the state after the edit.
    struct Traced {
        std::optional<std::size_t> now; // Its place.
        bool wasMoved = false;          // By a later edit.
    };

    /// A rule of the list without the edit, by its places now and before the edit.
    struct Item {
        std::optional<std::size_t> now, before;
        bool isGuide = false; // It shows where others belong: nothing has moved it.
    };

    bool IsTouched(Change const& change, std::size_t place, bool movesNow) const;
    bool ComesBack(Rule const& added) const;
    std::vector<Item> RulesThatStay() const;
    void PutBack(std::vector<Item>& items) const;
    EditedRule RuleOf(Item const& item, std::vector<std::string> const& sections) const;
    std::vector<std::int32_t> RisingIds(std::vector<EditedRule> const& rules) const;
    std::vector<std::int32_t> OwnIds(std::vector<EditedRule> const& rules) const;

    std::string textBefore_;
    RuleList before_, after_; // The edit.
    std::vector<Change> changes_;
    RuleOrigins origins_;        // Of after_ in before_.
    RulePlaces places_;          // Of before_ in after_.
    std::vector<bool> kept_;     // Which rules of after_ the edit did not move.
    std::vector<Traced> traced_; // Of after_.
    RuleList last_, now_;        // Before and after the step that was followed last.
};

} // namespace CallRecordingUtils

#endif
