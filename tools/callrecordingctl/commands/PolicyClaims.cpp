// Proves the claims of a policy, one after the other.

#include "commands/PolicyClaims.h"

#include <deque>
#include <fstream>

#include <fmt/format.h>

#include "administration/check/Reasons.h"
#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"
#include "output/CallText.h"
#include "output/RuleText.h"

namespace callrecordingctl {
namespace {

std::string VerdictOf(Proof const& proof, RuleList const& rules) {
    if (!proof.proved)
        return "undecided: " + WhyUndecided(rules, proof.why);
    if (!*proof.proved)
        return fmt::format("false: the call {} is {}", CallText(*proof.counterexample),
                           DecisionText(rules, proof.decidedBy));
    return proof.isOfNoCall ? "true of no call: there is no such call" : "proved";
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
            facts.isProved = first == "proved" && second == "proved";
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
    std::ifstream file(policy);
    if (!file)
        throw Failure(kExitUnreadable, policy + ": cannot be read");
    std::deque<EraProver> eras;
    for (EraFacts const& era : report.eras)
        eras.emplace_back(era);
    std::vector<ClaimFacts> claims;
    std::string text;
    for (std::size_t line = 1; std::getline(file, text); ++line)
        try {
            std::vector<std::string> const words = WordsOf(text);
            if (words.empty())
                continue;
            ClaimOptions const options = ReadClaim(words);
            for (EraProver& era : eras)
                claims.push_back(era.Prove(options, line));
        } catch (Failure const& failure) {
            throw Failure(failure.Code(), fmt::format("{}:{}: {}", policy, line, failure.what()));
        }
    if (file.bad())
        throw Failure(kExitUnreadable, policy + ": cannot be read");
    if (claims.empty() && !eras.empty())
        throw Failure(kExitUsage, policy + ": there is no claim in this file");
    return claims;
}

} // namespace callrecordingctl
