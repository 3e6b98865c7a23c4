// Decides many calls by one list of rules.

#ifndef RECORDS_COUNTING_DECIDER_H
#define RECORDS_COUNTING_DECIDER_H

#include <list>

#include "matching/RuleIndex.h"
#include "model/RuleList.h"

namespace CallRecordingUtils {

/// The place of the rule that decides a call, or kNotRecorded.
using Decision = std::size_t;
constexpr Decision kNotRecorded = static_cast<Decision>(-1);

/// Holds the rules and the index that the library decides with.
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
    std::list<Rule*> pointers_; // As the index takes them.
    RuleIndex index_;
};

} // namespace CallRecordingUtils

#endif
