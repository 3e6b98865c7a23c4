// Why the rules before the deciding one were passed over by a call.

#ifndef CALLRECORDINGCTL_OUTPUT_VERDICTS_H
#define CALLRECORDINGCTL_OUTPUT_VERDICTS_H

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "Rules.h"
#include "matching/Decision.h"
#include "model/SipAddress.h"

namespace callrecordingctl {

struct Verdict {
    bool decides;
    std::string reason; ///< Why the rule is passed over; empty for the one that decides.
    double nearness;    ///< From 0 to 2, what the call satisfies of it: each side counts 1 at most.
};

/// A call as the command line gives it.
class JudgedCall {
  public:
    JudgedCall(PartyOptions const& from, PartyOptions const& to);

    /// Every rule in order, up to the one that decides.
    std::vector<Verdict> Judge(RuleList const& rules) const;

  private:
    Verdict Judge(Rule const& rule) const;

    CallParty from_, to_; // The call borrows their texts.
    Call call_;
};

/// Prints the rules that the call came nearest to, and how many more there are; or all of them in
/// their order, with descriptions.
void PrintNearest(std::vector<Verdict> const& verdicts, RuleList const& rules);
void PrintAll(std::vector<Verdict> const& verdicts, RuleList const& rules);

nlohmann::ordered_json ToJson(std::vector<Verdict> const& verdicts, RuleList const& rules);

} // namespace callrecordingctl

#endif
