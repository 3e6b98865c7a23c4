// Proves the claims of a policy, one after the other.

#include "commands/PolicyClaims.h"

#include <deque>

#include <fmt/format.h>

#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"
#include "output/ProofText.h"

namespace callrecordingctl {
namespace {

std::string VerdictOf(Proof const& proof, RuleList const& rules) {
    return CodeOf(proof) == kExitYes ? "proved" : ProofText(rules, proof);
}

/// The rules of one era.
class EraProver {
  public:
    explicit EraProver(EraFacts const& era) : era_(era) {}

    ClaimFacts Prove(ClaimOptions const& options, std::size_t line) {
        ClaimFacts facts{line, "", Name(), false, ""};
        try {
            NamedClaim const claim(options, era_.rules);
            facts.text = claim.Text();
            Proof const typed = typed_.Prove(claim.ForAnalysis());
            Proof const parties = parties_.Prove(claim.ForAnalysis());
            std::string const first = VerdictOf(typed, era_.rules);
            std::string const second = VerdictOf(parties, era_.rules);
            facts.isProved = CodeOf(typed) == kExitYes && CodeOf(parties) == kExitYes;
            facts.verdict = first == second ? first
                                            : fmt::format("typed calls: {}; calls of parties: {}",
                                                          first, second);
        } catch (Failure const& failure) {
            if (failure.Code() != kExitNoSuchRule)
                throw;
            facts.text = "a claim about a rule";
            facts.verdict = failure.what();
        }
        return facts;
    }

  private:
    std::string Name() const {
        std::string const state = "state " + era_.digest.substr(0, 8);
        return era_.from ? fmt::format("from {}, {}", TimeText(*era_.from), state) : state;
    }

    EraFacts const& era_;
    RuleAnalysis typed_{era_.rules, kAnalysisMemory, CallKind::Typed};
    RuleAnalysis parties_{era_.rules, kAnalysisMemory, CallKind::Parties};
};

} // namespace

std::vector<ClaimFacts> ProveClaims(std::string const& policy, WholeReport const& report) {
    std::deque<EraProver> eras;
    for (EraFacts const& era : report.eras)
        eras.emplace_back(era);
    std::vector<ClaimFacts> claims;
    for (auto const& [line, options] : ReadPolicy(policy))
        try {
            for (EraProver& era : eras)
                claims.push_back(era.Prove(options, line));
        } catch (Failure const& failure) {
            throw Failure(failure.Code(), fmt::format("{}:{}: {}", policy, line, failure.what()));
        }
    return claims;
}

} // namespace callrecordingctl
