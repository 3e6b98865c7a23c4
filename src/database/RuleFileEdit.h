// An edit of a rule file: any number of changes to the file as it was read once, then one save.

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

/// A place is the index of a rule in the order of the file, from 0. Nothing reaches the disk before
/// Save, and an object that is dropped leaves the file as it was. What is not changed keeps its
/// bytes: comments, unknown keys and the order of entries belong to the section, and stay where
/// they are when the rule in it changes.
///
/// Every operation, the constructor included, throws an exception derived from std::exception whose
/// text says path, line (where there is one) and reason. After a failed change the object is good
/// for nothing but to be destroyed.
///
/// Operations on rules in the order of their places, and additions, take time in proportion to the
/// rules that they name; others a walk to the place besides, which costs nanoseconds a rule.
class RuleFileEdit {
  public:
    /// Reads the file at path; a file that does not exist has no rules.
    explicit RuleFileEdit(std::string const& path);

    /// The rules, in the order of the file, with the changes made so far.
    std::vector<CallRecordingRuleParams> Rules();

    /// A reader of the section at place, or null when there is no such place; good until the next
    /// operation.
    SectionReader* At(std::size_t place);

    /// Returns the first place, counted from begin on, whose section wanted(SectionReader&)
    /// accepts.
    template <typename Wanted>
    std::optional<std::size_t> Find(Wanted wanted, std::size_t begin = 0) {
        for (std::size_t place = begin; SectionReader* const section = At(place); ++place)
            if (wanted(*section))
                return place;
        return std::nullopt;
    }

    /// Writes all ten fields of rule, the identifier included, into the section at place.
    /// REQUIRES: there is a rule at place.
    void Set(std::size_t place, CallRecordingRuleParams const& rule);

    /// Writes entries into the section at place. REQUIRES: there is a rule at place.
    void Set(std::size_t place, std::vector<SectionEntry> const& entries);

    /// One more than the greatest identifier, at least 0; throws when there is none left.
    std::int32_t NextId();

    /// Adds rule, under the identifier that it has, as the last one of the file.
    void Append(CallRecordingRuleParams const& rule);

    /// The two steps of Append: an empty section, and its entries. AddSection returns false when
    /// the platform's file adds none. REQUIRES, for the second: the first has just returned true.
    bool AddSection();
    void SetAdded(CallRecordingRuleParams const& rule);

    /// Removes the section at place. REQUIRES: there is a rule at place.
    void Delete(std::size_t place);

    /// Moves the rule at the place from to the place to; the rules between make room. Identifiers
    /// stay with the places: each rule takes over the one of the place that it comes to.
    /// REQUIRES: there are rules at both places.
    void Move(std::size_t from, std::size_t to);

    /// Has the file on disk, atomically and durably. Throws, with nothing written, when the file
    /// has become another one since it was read.
    void Save();

  private:
    bool GoTo(std::size_t place);
    CallRecordingRuleParams RuleAt(std::size_t place);

    RuleFile file_;
    std::optional<std::size_t> place_; // Of the current section, where it is known.
};

} // namespace CallRecordingUtils

#endif
