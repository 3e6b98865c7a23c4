// Asks the analysis about claims, and words what it says.

#include "commands/ClaimProver.h"

#include <fmt/format.h>

#include "administration/inspection/Digest.h"
#include "output/CallText.h"
#include "output/Certificate.h"
#include "output/ProofText.h"
#include "output/Screen.h"
#include "json/Names.h"

namespace callrecordingctl {
namespace {

nlohmann::ordered_json ToJson(Gaps const& gaps) {
    nlohmann::ordered_json json{{"calls", nullptr}};
    if (gaps.calls.count)
        json["calls"] = *gaps.calls.count;
    if (gaps.calls.areExact)
        json["patterns"] = PatternsToJson(gaps.calls);
    else
        json["examples"] = CallsToJson(gaps.examples);
    return json;
}

void Print(Gaps const& gaps) {
    if (!gaps.calls.areExact) {
        PrintLines("no patterns were found that cover exactly the calls for which it is false; "
                   "examples:\n");
        for (ExampleCall const& call : gaps.examples)
            PrintLines("  {}\n", CallText(call));
    } else if (!gaps.calls.patterns.empty()) {
        PrintLines("it is false for exactly these calls{}:\n",
                   gaps.calls.count ? fmt::format(", {} in number", *gaps.calls.count) : "");
        PrintPatterns(gaps.calls);
    }
}

} // namespace

ClaimProver::ClaimProver(Context const& context, AnalysisOptions const& options)
    : context_(context), rules_(LoadRules(context.path, digest_)), calls_(options.calls),
      analysis_(rules_, options.memory, calls_), other_(rules_, options.memory, OtherThan(calls_)) {
    NoteMalformed(rules_);
}

ClaimAnswer ClaimProver::Find(NamedClaim const& named, bool allGaps) {
    Claim const claim = named.ForAnalysis();
    ClaimAnswer answer{analysis_.Prove(claim), std::nullopt, std::nullopt};
    if (allGaps)
        answer.gaps = analysis_.FindGaps(claim);
    Proof other = other_.Prove(claim);
    if (CodeOf(other) != CodeOf(answer.proof))
        answer.other = std::move(other);
    if (CodeOf(answer.proof) == kExitYes)
        proofs_.push_back(ProofToJson(named.ToJson(), answer.proof));
    return answer;
}

void ClaimProver::Certify(std::string const& path) const {
    if (proofs_.empty())
        return Say("{}: not written, since nothing was proved", path);
    nlohmann::ordered_json certificate = EmptyCertificate(digest_, calls_);
    certificate["claims"] = proofs_;
    WriteCertificate(path, certificate);
}

nlohmann::ordered_json ClaimProver::ToJson(NamedClaim const& claim,
                                           ClaimAnswer const& answer) const {
    nlohmann::ordered_json json{{"claim", claim.ToJson()},
                                {"calls", CallsName(calls_)},
                                {NameOf(RuleMember::FileState), StateToken(digest_)},
                                {NameOf(RuleMember::FileDigest), digest_}};
    json.update(ToJson(answer.proof));
    if (answer.gaps)
        json["gaps"] = callrecordingctl::ToJson(*answer.gaps);
    json["other_calls"] = nullptr;
    if (answer.other) {
        json["other_calls"] = {{"calls", CallsName(OtherThan(calls_))}};
        json["other_calls"].update(ToJson(*answer.other));
    }
    return json;
}

nlohmann::ordered_json ClaimProver::ToJson(Proof const& proof) const {
    nlohmann::ordered_json json{{"proved", nullptr},
                                {"true_of_no_call", proof.isOfNoCall},
                                {"covered_by", IdsToJson(rules_, proof.covering)},
                                {"counterexample", nullptr}};
    if (proof.proved)
        json["proved"] = *proof.proved;
    if (proof.counterexample)
        json["counterexample"] = {{"call", CallToJson(*proof.counterexample)},
                                  {NameOf(RuleMember::Id), IdToJson(rules_, proof.decidedBy)}};
    return json;
}

std::string ClaimProver::Heading(NamedClaim const& claim) const {
    return fmt::format("{} ({}; the file is in state {})", claim.Text(),
                       calls_ == CallKind::Typed ? "typed calls" : "calls of parties",
                       StateToken(digest_));
}

void ClaimProver::Print(ClaimAnswer const& answer) const {
    PrintLines("{}\n", ProofText(rules_, answer.proof));
    if (answer.proof.counterexample)
        PrintText(WrappedCommand(
            "  " + DecideCommand(*answer.proof.counterexample, calls_, context_), 4));
    if (answer.gaps)
        callrecordingctl::Print(*answer.gaps);
    if (answer.other)
        PrintLines("with --calls {} it is otherwise: {}\n", CallsName(OtherThan(calls_)),
                   ProofText(rules_, *answer.other));
}

} // namespace callrecordingctl
