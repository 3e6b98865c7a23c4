// prove: proves that all calls of a kind are recorded, and how, or are not, or refutes it; one
// claim, or all those of a file.

#include <fstream>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/RuleNames.h"
#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"
#include "output/CallText.h"
#include "output/Certificate.h"
#include "output/RuleText.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(The patterns say which calls are meant, as those of a rule do. Without a type, a
pattern is about addresses of every type: --to 112 is about the number 112, the
SIP addresses 112@HOST, and so on. The answer is about all these calls, as the
rules of the file decide them, not as the basic view shows them. If the claim is
false, one call is shown that breaks it; with --all-gaps all of them, as
patterns, or examples where patterns cannot express them.
A POLICY has one claim a line, in the words of these options; quotes are removed
as in a shell, and # begins a comment:
  --to '112' --recorded                     # emergency calls
  --from '{200-299}' --to '00*' --by 7
  --to '00*' --except-from 450 --record-to archive:/abroad
  --from-type sip --not-recorded
Exit status: 0 proved; 1 false, or true only because there is no such call; 2
also for a policy without a claim; 6 undecided; for several claims the worst, 1
before 6.
Example: callrecordingctl prove --from '2??' --to '00*' --recorded
"callrecordingctl --help" explains the patterns.
)";

struct Options {
    ClaimOptions claim;
    std::optional<std::string> file;
    bool allGaps = false;
    std::optional<std::string> certificate; // Its file.
    AnalysisOptions analysis;
};

ExitCode CodeOf(Proof const& proof) {
    if (!proof.proved)
        return kExitUndecided;
    return *proof.proved && !proof.isOfNoCall ? kExitYes : kExitNo;
}

/// The answer for one claim.
struct Answer {
    Proof proof;
    std::optional<Gaps> gaps;
    std::optional<Proof> other; // For the other kind of calls, if it differs.
};

/// Answers claims about one list of rules.
class Prover {
  public:
    Prover(std::string const& path, AnalysisOptions const& options)
        : rules_(LoadRules(path, digest_)), calls_(options.calls),
          analysis_(rules_, options.memory, calls_),
          other_(rules_, options.memory, OtherThan(calls_)) {
        NoteMalformed(rules_);
    }

    RuleList const& Rules() const { return rules_; }
    std::string State() const { return StateToken(digest_); }

    /// Keeps what is proved for the certificate.
    Answer Find(NamedClaim const& named, bool allGaps) {
        Claim const claim = named.ForAnalysis();
        Answer answer{analysis_.Prove(claim), std::nullopt, std::nullopt};
        if (allGaps)
            answer.gaps = analysis_.FindGaps(claim);
        Proof other = other_.Prove(claim);
        if (CodeOf(other) != CodeOf(answer.proof))
            answer.other = std::move(other);
        if (CodeOf(answer.proof) == kExitYes)
            proofs_.push_back({{"claim", named.ToJson()}, {"proof", ProofToJson(answer.proof)}});
        return answer;
    }

    /// Writes what was proved, if anything was.
    void Certify(std::string const& path) const {
        if (proofs_.empty())
            return Say("{}: not written, since nothing was proved", path);
        nlohmann::ordered_json certificate = EmptyCertificate(digest_, calls_);
        certificate["claims"] = proofs_;
        WriteCertificate(path, certificate);
    }

    nlohmann::ordered_json ToJson(NamedClaim const& claim, Answer const& answer) const {
        nlohmann::ordered_json json{
            {"claim", claim.ToJson()}, {"calls", CallsName(calls_)}, {"file_state", State()}};
        json.update(ToJson(answer.proof));
        if (answer.gaps)
            json["gaps"] = ToJson(*answer.gaps);
        json["other_calls"] = nullptr;
        if (answer.other) {
            json["other_calls"] = {{"calls", CallsName(OtherThan(calls_))}};
            json["other_calls"].update(ToJson(*answer.other));
        }
        return json;
    }

    /// What is claimed of what.
    std::string Heading(NamedClaim const& claim) const {
        return fmt::format("{} ({}; the file is in state {})", claim.Text(),
                           calls_ == CallKind::Typed ? "typed calls" : "calls of parties", State());
    }

    void Print(Answer const& answer) const {
        fmt::print("{}\n", Sentence(answer.proof));
        if (answer.proof.counterexample)
            fmt::print("  {}\n", DecideCommand(*answer.proof.counterexample, calls_));
        if (answer.gaps)
            Print(*answer.gaps);
        if (answer.other)
            fmt::print("with --calls {} it is otherwise: {}\n", CallsName(OtherThan(calls_)),
                       Sentence(*answer.other));
    }

  private:
    nlohmann::ordered_json ToJson(Proof const& proof) const {
        nlohmann::ordered_json json{{"proved", nullptr},
                                    {"true_of_no_call", proof.isOfNoCall},
                                    {"covered_by", IdsToJson(rules_, proof.covering)},
                                    {"counterexample", nullptr}};
        if (proof.proved)
            json["proved"] = *proof.proved;
        if (proof.counterexample)
            json["counterexample"] = {{"call", CallToJson(*proof.counterexample)},
                                      {"callrecordingrule_id", IdToJson(rules_, proof.decidedBy)}};
        return json;
    }

    static nlohmann::ordered_json ToJson(Gaps const& gaps) {
        nlohmann::ordered_json json{{"calls", nullptr}};
        if (gaps.calls.count)
            json["calls"] = *gaps.calls.count;
        if (gaps.calls.areExact)
            json["patterns"] = PatternsToJson(gaps.calls);
        else
            json["examples"] = CallsToJson(gaps.examples);
        return json;
    }

    std::string Sentence(Proof const& proof) const {
        if (!proof.proved)
            return "undecided: " + WhyUndecided(rules_, proof.why);
        if (!*proof.proved)
            return fmt::format("false: the call {} is {}", CallText(*proof.counterexample),
                               DecisionText(rules_, proof.decidedBy));
        if (proof.isOfNoCall)
            return "true of no call: there is no such call";
        return proof.covering.empty()
                   ? "proved"
                   : fmt::format("proved: {} {} all these calls", RulesText(rules_, proof.covering),
                                 proof.covering.size() == 1 ? "covers" : "cover");
    }

    static void Print(Gaps const& gaps) {
        if (!gaps.calls.areExact) {
            fmt::print("no patterns were found that cover exactly the calls for which it is false; "
                       "examples:\n");
            for (ExampleCall const& call : gaps.examples)
                fmt::print("  {}\n", CallText(call));
        } else if (!gaps.calls.patterns.empty()) {
            fmt::print("it is false for exactly these calls{}:\n",
                       gaps.calls.count ? fmt::format(", {} in number", *gaps.calls.count) : "");
            PrintPatterns(gaps.calls);
        }
    }

    std::string digest_; // Read with the rules.
    RuleList const rules_;
    CallKind const calls_;
    RuleAnalysis analysis_;
    RuleAnalysis other_;
    nlohmann::ordered_json proofs_ = nlohmann::ordered_json::array();
};

ExitCode ProveOne(Prover& prover, Options const& options, bool isJson) {
    NamedClaim const claim(options.claim, prover.Rules());
    Answer const answer = prover.Find(claim, options.allGaps);
    if (isJson) {
        PrintJson(prover.ToJson(claim, answer));
    } else {
        fmt::print("{}\n", prover.Heading(claim));
        prover.Print(answer);
    }
    return CodeOf(answer.proof);
}

/// The claims of a file, by their lines.
class Policy {
  public:
    Policy(std::string const& path, Prover& prover, Options const& options, bool json)
        : path_(path), prover_(prover), options_(options), isJson_(json) {}

    ExitCode Run() {
        std::ifstream file(path_);
        if (!file)
            throw Failure(kExitUnreadable, path_ + ": cannot be read");
        std::string line;
        for (std::size_t number = 1; std::getline(file, line); ++number)
            try {
                ProveLine(line, number);
            } catch (Failure const& failure) {
                throw Failure(failure.Code(),
                              fmt::format("{}:{}: {}", path_, number, failure.what()));
            }
        if (file.bad())
            throw Failure(kExitUnreadable, path_ + ": cannot be read");
        if (!hasClaims_)
            throw Failure(kExitUsage, path_ + ": there is no claim in this file");
        if (isJson_)
            PrintJson(document_);
        return result_;
    }

  private:
    void ProveLine(std::string const& line, std::size_t number) {
        std::vector<std::string> const words = WordsOf(line);
        if (words.empty())
            return;
        hasClaims_ = true;
        NamedClaim const claim(ReadClaim(words), prover_.Rules());
        auto const answer = prover_.Find(claim, options_.allGaps);
        ExitCode const code = CodeOf(answer.proof);
        if (result_ != kExitNo && code != kExitYes)
            result_ = code;
        if (isJson_) {
            nlohmann::ordered_json entry{{"line", number}};
            entry.update(prover_.ToJson(claim, answer));
            document_.push_back(entry);
        } else {
            fmt::print("{}:{}: {}\n", path_, number, prover_.Heading(claim));
            prover_.Print(answer);
        }
    }

    std::string const& path_;
    Prover& prover_;
    Options const& options_;
    bool const isJson_;
    bool hasClaims_ = false;
    ExitCode result_ = kExitYes;
    nlohmann::ordered_json document_ = nlohmann::ordered_json::array();
};

ExitCode Prove(Context const& context, Options const& options) {
    if (options.file && options.claim.AreGiven())
        throw Failure(kExitUsage, "prove: --file has the claims; give no other one beside it");
    Prover prover(context.path, options.analysis);
    ExitCode const code = options.file ? Policy(*options.file, prover, options, context.json).Run()
                                       : ProveOne(prover, options, context.json);
    if (options.certificate)
        prover.Certify(*options.certificate);
    return code;
}

} // namespace

void AddProve(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& prove = line.AddCommand(
        "prove", "Prove that all calls of a kind are recorded, or are not", kHelp, options, Prove);
    AddClaim(prove, options->claim);
    AddText(prove, "--file", "POLICY", "Prove all the claims of this file",
            [options](std::string const& text) { options->file = text; });
    prove.add_flag("--all-gaps", options->allGaps,
                   "List all the calls for which it is false,\nas up to 200 patterns");
    AddText(prove, "--certificate", "FILE",
            "Write what was proved to a new file, for\nexamples/check_proof.py to check",
            [options](std::string const& text) { options->certificate = text; });
    AddAnalysis(prove, options->analysis);
}

} // namespace callrecordingctl
