// The basic view of a rule list: each rule and the twin that mirrors it as one.

#ifndef MODEL_BASICVIEW_H
#define MODEL_BASICVIEW_H

#include <map>
#include <string>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace CallRecordingUtils {

/// Sets the state of entry to RULE_NOT_SHOWABLE when a side of call type number stands opposite to
/// anything but "*" of call type any. Changes nothing else.
void MarkUnlessShowable(CallRecordingRuleMapParams& entry);

/// Returns whether rule says the same as entry, side for side or with the sides exchanged;
/// identifier and description are not compared. Sets entry.has_mirror when rule is keyed on the
/// side opposite to entry's, whatever the result.
bool SaysTheSame(CallRecordingRuleParams const& rule, CallRecordingRuleMapParams& entry);

/// Merges rules by their key pattern, the pattern of the side of call type number: a rule of the
/// basic view is a pair of rules that mirror each other.
class BasicView {
  public:
    void Add(CallRecordingRuleParams const& rule);

    /// The merged rules in the order of their key patterns, byte by byte. Those that the view
    /// cannot show have the state RULE_NOT_SHOWABLE.
    std::vector<CallRecordingRuleParams> Rules() const;

    /// Whether a rule was added that the view leaves out or cannot show in full.
    bool HasAdvancedRules() const { return hasAdvancedRules_; }

  private:
    void Merge(std::string const& keyPattern, CallRecordingRuleParams const& rule);

    std::map<std::string, CallRecordingRuleMapParams> entries_; // By key pattern.
    bool hasAdvancedRules_ = false;
};

} // namespace CallRecordingUtils

#endif
