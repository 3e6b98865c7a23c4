// Puts proofs into words.

#include "output/ProofText.h"

#include <fmt/format.h>

#include "administration/check/Reasons.h"
#include "administration/inspection/RuleNames.h"
#include "output/CallText.h"

namespace callrecordingctl {

ExitCode CodeOf(Proof const& proof) {
    if (!proof.proved)
        return kExitUndecided;
    return *proof.proved && !proof.isOfNoCall ? kExitYes : kExitNo;
}

std::string ProofText(RuleList const& rules, Proof const& proof) {
    if (!proof.proved)
        return "undecided: " + WhyUndecided(rules, proof.why);
    if (!*proof.proved)
        return fmt::format("false: the call {} is {}", CallText(*proof.counterexample),
                           DecisionText(rules, proof.decidedBy));
    if (proof.isOfNoCall)
        return "true of no call: there is no such call";
    return proof.covering.empty()
               ? "proved"
               : fmt::format("proved: {} {} all these calls", RulesText(rules, proof.covering),
                             proof.covering.size() == 1 ? "covers" : "cover");
}

} // namespace callrecordingctl
