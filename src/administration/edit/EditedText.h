// The text of a rule file after an edit: the only place where the client composes one.

#ifndef ADMINISTRATION_EDIT_EDITEDTEXT_H
#define ADMINISTRATION_EDIT_EDITEDTEXT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "model/RuleList.h"

namespace CallRecordingUtils {

/// A rule of the file after the edit.
struct EditedRule {
    std::optional<std::size_t> origin; ///< Its place in the file before; none for a new rule.
    Rule rule;
    /// Writes the identifier also where the text of another one reads as the same number.
    bool writesId = false;
    /// The section of a new rule that was in the file once, with all that the file had there; it
    /// says the same as rule but for the identifier. Empty for others.
    std::string section{};
};

/// The sections of a rule file with this text, from the opening to the closing line of each. Throws
/// a std::exception with name, line and reason.
std::vector<std::string> SectionsOf(std::string const& name, std::string const& text);

/// Returns the text of a file with these rules, made from text, the file before, which holds the
/// rules before. What the edit does not change keeps its bytes:
///
/// - A rule that has an origin takes its section along, and the comments directly above it. In the
///   section only the values of fields that differ are written.
/// - Comments that a blank line separates from the section below belong to no rule. Like blank
///   lines they stay at their place: the text above the second rule stays above the second rule.
/// - Everything above the section of a deleted rule stays.
/// - A new rule goes directly above the comments of the rule that follows it; the last one goes to
///   the end of the file. Its lines end as the first line of the file does.
/// - A last line without a line end has none afterwards either, unless a new rule follows it.
///
/// Throws a std::exception that names path and reason if a value cannot be stored. REQUIRES: text
/// is well formed, and no two rules have the same origin.
std::string EditedText(std::string const& path, std::string const& text, RuleList const& before,
                       std::vector<EditedRule> const& rules);

} // namespace CallRecordingUtils

#endif
