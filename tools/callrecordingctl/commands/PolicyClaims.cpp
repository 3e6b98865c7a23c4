// Proves the claims of a policy, one list of rules after the other.

#include "commands/PolicyClaims.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"
#include "output/ProofText.h"

namespace callrecordingctl {
namespace {

using Policy = std::vector<std::pair<std::size_t, ClaimOptions>>;

/// What is said of a claim about some rules.
struct Verdict {
    std::string claim;
    bool isProved = false;
    std::string text;

    bool operator==(Verdict const& other) const {
        return std::tie(claim, isProved, text) == std::tie(other.claim, other.isProved, other.text);
    }
};

std::string TextOf(Proof const& proof, RuleList const& rules) {
    return CodeOf(proof) == kExitYes ? "proved" : ProofText(rules, proof);
}

/// Proves claims about one list of rules.
class Prover {
  public:
    explicit Prover(RuleList const& rules) : rules_(rules) {}

    Verdict Prove(ClaimOptions const& options) {
        try {
            NamedClaim const claim(options, rules_);
            Proof const typed = typed_.Prove(claim.ForAnalysis());
            Proof const parties = parties_.Prove(claim.ForAnalysis());
            std::string const first = TextOf(typed, rules_);
            std::string const second = TextOf(parties, rules_);
            return {claim.Text(), CodeOf(typed) == kExitYes && CodeOf(parties) == kExitYes,
                    first == second
                        ? first
                        : fmt::format("typed calls: {}; calls of parties: {}", first, second)};
        } catch (Failure const& failure) {
            if (failure.Code() != kExitNoSuchRule)
                throw;
            return {"a claim about a rule", false, failure.what()};
        }
    }

  private:
    RuleList const& rules_;
    RuleAnalysis typed_{rules_, kAnalysisMemory, CallKind::Typed};
    RuleAnalysis parties_{rules_, kAnalysisMemory, CallKind::Parties};
};

/// The verdicts about each claim.
std::vector<Verdict> ProveAll(std::string const& path, Policy const& policy,
                              RuleList const& rules) {
    Prover prover(rules);
    std::vector<Verdict> verdicts;
    for (auto const& [line, options] : policy)
        try {
            verdicts.push_back(prover.Prove(options));
        } catch (Failure const& failure) {
            throw Failure(failure.Code(), fmt::format("{}:{}: {}", path, line, failure.what()));
        }
    return verdicts;
}

std::string NameOf(EraFacts const& era) {
    std::string const state = "state " + era.digest.substr(0, 8);
    return era.from ? fmt::format("from {}, {}", TimeText(era.from->shown), state) : state;
}

/// States of which the same is said. Each is named, unless that are all or the claim is proved.
struct Group {
    Verdict verdict;
    std::size_t states = 0;
    std::string names;

    void Add(EraFacts const& era) {
        if (states++ == 0 || !verdict.isProved)
            names += (names.empty() ? "" : "; ") + NameOf(era);
    }
    std::string Names(std::size_t all) const {
        if (states == 1 || (states < all && !verdict.isProved))
            return names;
        return states == all ? fmt::format("all {} states", all)
                             : fmt::format("{} of {} states", states, all);
    }
};

} // namespace

std::vector<ClaimFacts> ProveClaims(std::string const& path, WholeReport const& report) {
    Policy const policy = ReadPolicy(path);
    std::map<std::vector<Form>, std::vector<Verdict>> proved;
    std::vector<std::vector<Group>> groups(policy.size());
    for (EraFacts const& era : report.eras) {
        std::vector<Verdict> verdicts(
            policy.size(), {"a claim about rules that are not known", false, era.problem});
        if (era.problem.empty()) {
            auto const [known, isNew] = proved.try_emplace(era.forms);
            if (isNew)
                known->second = ProveAll(path, policy, report.forms.ListOf(era.forms));
            verdicts = known->second;
        }
        for (std::size_t i = 0; i < policy.size(); ++i) {
            auto group = std::find_if(groups[i].begin(), groups[i].end(), [&](Group const& other) {
                return other.verdict == verdicts[i];
            });
            if (group == groups[i].end())
                group = groups[i].insert(group, {verdicts[i], 0, ""});
            group->Add(era);
        }
    }
    std::vector<ClaimFacts> claims;
    for (std::size_t i = 0; i < policy.size(); ++i)
        for (Group const& group : groups[i])
            claims.push_back({policy[i].first, group.verdict.claim, group.Names(report.eras.size()),
                              group.verdict.isProved, group.verdict.text});
    return claims;
}

} // namespace callrecordingctl
