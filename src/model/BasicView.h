// The basic view of a list of rules, which shows a rule and its mirrored twin as one.

#ifndef MODEL_BASICVIEW_H
#define MODEL_BASICVIEW_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// Sets the state of entry to RULE_NOT_SHOWABLE when one of its sides has call type number and the
/// other side is not "*" with call type any. Changes nothing else.
void MarkUnlessShowable(CallRecordingRuleMapParams& entry);

/// Returns whether rule says the same as entry, side for side or with the sides exchanged;
/// identifier and description are not compared. Whatever the result, sets entry.has_mirror when the
/// side with call type number is the caller in one of them and the called side in the other.
bool SaysTheSame(CallRecordingRuleParams const& rule, CallRecordingRuleMapParams& entry);

/// Merges rules by their key pattern, which is the pattern of the side with call type number. A
/// rule of the basic view is a pair of rules that mirror each other.
class BasicView {
  public:
    void Add(CallRecordingRuleParams const& rule);

    /// Returns the merged rules, sorted by the bytes of their key patterns. Rules that the view
    /// cannot show have the state RULE_NOT_SHOWABLE.
    std::vector<CallRecordingRuleParams> Rules() const;

    /// Returns whether a rule was added that the view leaves out or cannot show in full.
    bool HasAdvancedRules() const { return hasAdvancedRules_; }

  private:
    void Merge(std::string const& keyPattern, CallRecordingRuleParams const& rule);

    std::map<std::string, CallRecordingRuleMapParams> entries_; // By key pattern.
    bool hasAdvancedRules_ = false;
};

/// Returns the places, counted from 0, of the enabled rules that forbid recording and that the
/// basic view does not list as enabled: it leaves them out, or cannot show them, because their twin
/// is missing or says something else, such as where to record to. Who asks the rules in the order
/// of the file loses none of them.
std::vector<std::size_t>
BansMissingFromBasicView(std::vector<CallRecordingRuleParams> const& rules);

} // namespace CallRecordingUtils

#endif
