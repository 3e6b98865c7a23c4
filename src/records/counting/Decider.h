// Decides many calls by one list of rules.

#ifndef RECORDS_COUNTING_DECIDER_H
#define RECORDS_COUNTING_DECIDER_H

#include <list>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/RuleIndex.h"

namespace CallRecordingUtils {

using Rule = CallRecordingRuleParams;
using RuleList = std::vector<Rule>;

/// The index of a rule in its list; kNotRecorded where none takes a call.
using Decision = std::size_t;
constexpr Decision kNotRecorded = static_cast<Decision>(-1);

/// Holds the rules and, where they are many, the index over them that the library has, too.
class Decider {
  public:
    explicit Decider(RuleList rules);
    Decider(Decider const&) = delete;
    Decider& operator=(Decider const&) = delete;

    Decision Decide(Call const& call) const;

    /// Null for kNotRecorded.
    Rule const* RuleOf(Decision decision) const {
        return decision == kNotRecorded ? nullptr : &rules_[decision];
    }

  private:
    RuleList rules_;
    std::list<Rule*> pointers_; // As the library has them.
    RuleIndex index_;
};

} // namespace CallRecordingUtils

#endif
