// An edit of the rule file: it is read once, its rules are changed in memory, and it is saved once.

#ifndef ADMINISTRATION_EDIT_RULEEDIT_H
#define ADMINISTRATION_EDIT_RULEEDIT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <host/AtomicFile.h>

#include "administration/edit/Changes.h"
#include "administration/edit/EditedText.h"
#include "administration/inspection/StoredRules.h"
#include "common/Error.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Holds the rules and where each of them came from. Whatever the changes are, the text of the file
/// after the edit is composed from these in one place (EditedText), and After() is read from that
/// text: so a report on an edit and its dry run speak of the file that a save writes.
///
/// A place is the index of a rule in the list as the changes so far have left it. Operations throw
/// an Error with the reason if the file cannot be read, changed or saved. A file that can be read
/// but is malformed has no rules to change: then all operations throw but those that replace the
/// whole file.
class RuleEdit {
  public:
    explicit RuleEdit(std::string const& path);

    std::string const& Path() const { return path_; }

    /// The bytes of the file before the edit, and after it.
    std::string const& TextBefore() const { return fileBefore_.text; }
    std::string const& TextAfter();

    /// The rules before the edit, and after it.
    RuleList const& Before() const;
    RuleList const& After();

    /// Why the file is malformed; nothing if it is not.
    std::optional<std::string> Malformation() const;

    /// How many rules there are after the changes so far.
    std::size_t Count() const;

    /// The rules before the edit with their lines and the texts of their fields.
    std::vector<StoredRule> Stored() const;

    void Set(std::size_t place, Rule const& rule);

    /// Switches the rule on or off.
    void SetState(std::size_t place, bool enabled);

    /// Gives the rule this identifier, and writes it even if the text there reads as the same one.
    void SetId(std::size_t place, std::int32_t id);

    /// Adds rule after all others under the next free identifier. Returns its place.
    std::size_t Append(Rule rule);

    /// Adds rule under the next free identifier, and moves it to place.
    void Insert(Rule const& rule, std::size_t place);

    void Delete(std::size_t place);

    /// Moves a rule; the rules in between make room. Identifiers belong to places: each of these
    /// rules gets the one of its new place.
    void Move(std::size_t from, std::size_t to);

    /// Has the rule at from[i] go to places[i]; both are the same places in another order.
    /// Identifiers belong to places.
    void Exchange(std::vector<std::size_t> const& places, std::vector<std::size_t> const& from);

    /// The place of the rule that was at the place origin before the edit. REQUIRES: it is not
    /// deleted.
    std::size_t PlaceOf(std::size_t origin) const;

    /// Replaces all rules by these, with their identifiers. OriginsOf says which of them the file
    /// has already. REQUIRES: this is the only change.
    void Replace(RuleList const& rules);

    /// Replaces all rules by these, whose origins are places before the edit. REQUIRES: this is the
    /// only change.
    void Replace(std::vector<EditedRule> rules);

    /// Replaces the whole file by text. REQUIRES: this is the only change.
    void ReplaceText(std::string const& text);

    /// Says how many earlier edits this one undoes.
    void TakeBack(std::size_t edits) { undone_ = edits; }
    std::size_t Undone() const { return undone_; }

    /// Has the report name the rule at place even if the edit does not change it.
    void Mention(std::size_t place);

    /// Whether the text of the file changes.
    bool IsChanged() { return TextAfter() != TextBefore(); }

    /// Saves the file atomically. Throws an Error if it is not the one any more that was read. When
    /// the file is the same after a failure, the Error says so first.
    void Save();

    /// What the edit changes: first the rules that it was asked to change, in that order, then the
    /// others. They borrow the rules of Before() and After(), so they are valid until the next
    /// change.
    std::vector<Change> Changes();

  private:
    struct Slot {
        EditedRule edited;
        std::size_t turn = 0; // The edit came to this rule first, second, ...; 0 if it did not.
    };

    void RequireRules() const;
    Slot& At(std::size_t place); // The slot that is about to be changed.
    std::int32_t NextId() const;
    void SetSlots(RuleList const& rules);
    std::string Compose(std::string const& before) const;
    bool IsAsBefore() const; // On the disk.
    std::vector<Change> NamedChanges();

    std::string path_;
    HostPlatform::FileText fileBefore_;
    std::optional<Error> malformation_;
    RuleList before_;

    std::vector<Slot> slots_;          // By place.
    std::vector<std::size_t> deleted_; // Places before the edit.
    std::size_t turn_ = 0;
    std::optional<std::string> wholeText_; // If the edit replaces the whole file.
    std::size_t undone_ = 0;

    // Made from the above when they are asked for.
    std::optional<std::string> textAfter_;
    std::optional<RuleList> after_;
};

} // namespace CallRecordingUtils

#endif
