// prove: proves that all calls of a kind are recorded, and how, or are not, or refutes it; one
// claim, or all those of a file.

#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "commands/AnalysisOptions.h"
#include "commands/ClaimProver.h"
#include "output/ProofText.h"
#include "output/RuleText.h"
#include "output/Screen.h"

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

ExitCode ProveOne(ClaimProver& prover, Options const& options, bool isJson) {
    NamedClaim const claim(options.claim, prover.Rules());
    ClaimAnswer const answer = prover.Find(claim, options.allGaps);
    if (isJson) {
        PrintJson(prover.ToJson(claim, answer));
    } else {
        PrintLines("{}\n", prover.Heading(claim));
        prover.Print(answer);
    }
    return CodeOf(answer.proof);
}

/// The claims of a file, by their lines.
class Policy {
  public:
    Policy(std::string const& path, ClaimProver& prover, Options const& options, bool json)
        : path_(path), prover_(prover), options_(options), isJson_(json) {}

    ExitCode Run() {
        for (auto const& [number, claim] : ReadPolicy(path_))
            try {
                ProveLine(claim, number);
            } catch (Failure const& failure) {
                throw Failure(failure.Code(),
                              fmt::format("{}:{}: {}", path_, number, failure.what()));
            }
        if (isJson_)
            PrintJson(document_);
        return result_;
    }

  private:
    void ProveLine(ClaimOptions const& options, std::size_t number) {
        NamedClaim const claim(options, prover_.Rules());
        ClaimAnswer const answer = prover_.Find(claim, options_.allGaps);
        ExitCode const code = CodeOf(answer.proof);
        if (result_ != kExitNo && code != kExitYes)
            result_ = code;
        if (isJson_) {
            nlohmann::ordered_json entry{{"line", number}};
            entry.update(prover_.ToJson(claim, answer));
            document_.push_back(entry);
        } else {
            PrintLines("{}:{}: {}\n", path_, number, prover_.Heading(claim));
            prover_.Print(answer);
        }
    }

    std::string const& path_;
    ClaimProver& prover_;
    Options const& options_;
    bool const isJson_;
    ExitCode result_ = kExitYes;
    nlohmann::ordered_json document_ = nlohmann::ordered_json::array();
};

ExitCode Prove(Context const& context, Options const& options) {
    if (options.file && options.claim.AreGiven())
        throw Failure(kExitUsage, "prove: --file has the claims; give no other one beside it");
    ClaimProver prover(context, options.analysis);
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
