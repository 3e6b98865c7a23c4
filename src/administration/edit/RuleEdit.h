// An edit of the rule file that remembers where each rule came from, for the report on it.

#ifndef ADMINISTRATION_EDIT_RULEEDIT_H
#define ADMINISTRATION_EDIT_RULEEDIT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <host/AtomicFile.h>

#include "administration/edit/Changes.h"
#include "administration/inspection/StoredRules.h"
#include "database/RuleFileEdit.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// Reads the file once; then any number of changes, then one save. A place is the index of a rule
/// in the list as the changes so far have left it. Throws an Error with the reason when the file
/// cannot be read, changed or saved.
class RuleEdit {
  public:
    /// Whether a file that is no rule file may be edited: only Replace and ReplaceText make sense
    /// then, and the rules before count as none.
    enum class Broken { Refused, Replaced };

    explicit RuleEdit(std::string const& path, Broken broken = Broken::Refused);

    std::string const& Path() const { return path_; }

    /// The bytes of the file as it was read.
    std::string const& TextBefore() const { return fileBefore_.text; }

    /// The rules as the file has them.
    RuleList const& Before() const { return before_; }

    /// The rules as the changes have left them.
    RuleList After() { return file_.Rules(); }

    /// How many rules there are by now.
    std::size_t Count() const { return newText_ ? after_.size() : traces_.size(); }

    /// The rules with their lines and texts, as the file has them.
    std::vector<StoredRule> Stored() const;

    void Set(std::size_t place, Rule const& rule);

    /// Switches the rule on or off; nothing else of its section changes.
    void SetState(std::size_t place, bool enabled);

    /// Gives the rule another identifier, and writes it also where it only reads as that.
    void SetId(std::size_t place, std::int32_t id);

    /// Adds rule behind the others, under the next free identifier. Returns its place.
    std::size_t Append(Rule rule);

    void Delete(std::size_t place);

    /// Moves a rule; those between make room. Identifiers stay with the places.
    void Move(std::size_t from, std::size_t to);

    /// Where the rule is by now that was at the place origin before. REQUIRES: it is still there.
    std::size_t PlaceOf(std::size_t origin) const;

    /// Has these rules in the place of all others, with their identifiers. Rules that are equal to
    /// ones of before keep their sections as they are; see NewText. REQUIRES: no change before this
    /// one, and none follows.
    void Replace(RuleList const& rules);

    /// Has text in the place of the whole file. The same is required.
    void ReplaceText(std::string const& text);

    /// Says that the edit takes back so many earlier ones.
    void TakeBack(std::size_t edits) { undone_ = edits; }
    std::size_t Undone() const { return undone_; }

    /// Says that the edit is about the rule at place although it needs no change.
    void Mean(std::size_t place);

    /// Whether the file would become another one.
    bool IsChanged();

    /// The bytes that Save writes.
    std::string TextAfter() { return newText_ ? *newText_ : file_.File().GetText(); }

    void Save();

    /// What the changes come to: first the rules that the edit is about, in the order in which it
    /// came to them, then the others that it changed. Valid until the next change.
    std::vector<Change> Changes();

    /// Why the file could not be read as rules; empty if it could.
    std::string const& Fault() const { return fault_; }

  private:
    struct Trace {
        std::optional<std::size_t> origin; // Its place before; none for a new rule.
        std::size_t turn;                  // When the edit came to it; 0 for never.
    };

    std::string path_;
    HostPlatform::FileText fileBefore_;
    std::string fault_;
    RuleFileEdit file_; // Of no file if that is broken.
    RuleList before_;
    RuleList after_;
    std::optional<std::string> newText_; // After Replace.
    std::vector<Trace> traces_;          // By place.
    std::vector<std::size_t> deleted_;
    std::size_t turn_ = 0;
    std::size_t undone_ = 0;
    bool isForced_ = false; // The text changes, also where the rules read the same.
};

} // namespace CallRecordingUtils

#endif
