// Answers claims about the rules of the rule file, in words and in JSON.

#ifndef CALLRECORDINGCTL_COMMANDS_CLAIMPROVER_H
#define CALLRECORDINGCTL_COMMANDS_CLAIMPROVER_H

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "Rules.h"
#include "analysis/RuleAnalysis.h"
#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"

namespace callrecordingctl {

struct ClaimAnswer {
    Proof proof;
    std::optional<Gaps> gaps;   ///< If they were asked for.
    std::optional<Proof> other; ///< For the other kind of calls, if it differs.
};

class ClaimProver {
  public:
    /// context must outlive the object.
    ClaimProver(Context const& context, AnalysisOptions const& options);

    RuleList const& Rules() const { return rules_; }

    /// Keeps what is proved for the certificate.
    ClaimAnswer Find(NamedClaim const& named, bool allGaps);

    /// Writes what was proved to a new file, if anything was.
    void Certify(std::string const& path) const;

    nlohmann::ordered_json ToJson(NamedClaim const& claim, ClaimAnswer const& answer) const;
    /// What is claimed of what.
    std::string Heading(NamedClaim const& claim) const;
    void Print(ClaimAnswer const& answer) const;

  private:
    nlohmann::ordered_json ToJson(Proof const& proof) const;

    Context const& context_;
    std::string digest_; // Read with the rules.
    RuleList const rules_;
    CallKind const calls_;
    RuleAnalysis analysis_;
    RuleAnalysis other_;
    nlohmann::ordered_json proofs_ = nlohmann::ordered_json::array();
};

} // namespace callrecordingctl

#endif
