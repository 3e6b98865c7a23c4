// Edits a rule file in memory, section by section, and saves it.

#ifndef DATABASE_RULEFILEEDIT_H
#define DATABASE_RULEFILEEDIT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "database/RuleFile.h"

namespace CallRecordingUtils {

/// The file is read once. A place is the index of a rule in the order of the file, counted from 0.
/// Nothing is written before Save, and an object that is destroyed without it leaves the file as it
/// was. Lines that are not changed keep their bytes: comments, unknown keys and the order of
/// entries belong to the section, and stay there when its rule changes.
///
/// Every operation, and the constructor, may throw an exception derived from std::exception, whose
/// text says path, line (if there is one) and reason. After a change that failed, which may be half
/// made, the object must not be saved. After a failed Save it can be used as before.
///
/// Operations on rules in the order of their places, and additions, take time in proportion to
/// these rules. Other operations also walk to their place first, which takes nanoseconds for each
/// rule.
class RuleFileEdit {
  public:
    /// Reads the file at path. A file that does not exist counts as one without rules.
    explicit RuleFileEdit(std::string const& path);

    /// Returns the rules in the order of the file, with the changes made so far.
    std::vector<CallRecordingRuleParams> Rules();

    /// Returns a reader of the section at place, valid until the next operation; null when there is
    /// no such place.
    SectionReader* At(std::size_t place);

    /// Returns the first place, from begin on, for whose section accepts(SectionReader&) is true.
    template <typename Accepts>
    std::optional<std::size_t> Find(Accepts accepts, std::size_t begin = 0) {
        for (std::size_t place = begin; SectionReader* const section = At(place); ++place)
            if (accepts(*section))
                return place;
        return std::nullopt;
    }

    /// Writes all ten fields of rule, including the identifier, into the section at place.
    /// REQUIRES: there is a rule at place.
    void Set(std::size_t place, CallRecordingRuleParams const& rule);

    /// Writes entries into the section at place. REQUIRES: there is a rule at place.
    void Set(std::size_t place, std::vector<SectionEntry> const& entries);

    /// Returns one more than the greatest identifier, at least 0. Throws when none is left.
    std::int32_t NextId();

    /// Adds rule at the end of the file, with the identifier that it has.
    void Append(CallRecordingRuleParams const& rule);

    /// The two steps of Append: AddSection adds an empty section, SetAdded writes rule into it.
    /// AddSection returns false when the platform's file class did not add one. REQUIRES for
    /// SetAdded: AddSection has just returned true.
    bool AddSection();
    void SetAdded(CallRecordingRuleParams const& rule);

    /// Removes the section at place. REQUIRES: there is a rule at place.
    void Delete(std::size_t place);

    /// Moves the rule at place from to place to; the rules in between move up or down by one.
    /// Identifiers stay with their places: each rule takes over the identifier of its new place.
    /// REQUIRES: there are rules at both places.
    void Move(std::size_t from, std::size_t to);

    /// Saves the file, atomically and durably. May be called after each change. Throws, with
    /// nothing written, when somebody else has changed the file since it was read or last saved
    /// here.
    void Save();

  private:
    bool GoTo(std::size_t place);
    CallRecordingRuleParams RuleAt(std::size_t place);

    RuleFile file_;
    std::optional<std::size_t> place_; // Of the current section, if it is known.
};

} // namespace CallRecordingUtils

#endif
