// prove: whether all calls of a kind are recorded, or not, or decided by one rule; one claim, or
// all those of a file.

#include <fstream>
#include <memory>

#include <fmt/format.h>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/check/Reasons.h"
#include "commands/AnalysisOptions.h"
#include "commands/Registry.h"
#include "commands/RuleFields.h"
#include "output/CallText.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "text/Printable.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(The patterns say which calls are meant, as those of a rule would; a side left
out is every call. Looks at all of them, and shows one for which it is false.
A POLICY has one claim a line, in the words of these options; quotes as in a
shell are taken off, and # begins a comment:
  --to '112' --recorded                     # emergency calls
  --from '{200-299}' --to '00*' --by 7
  --from-type sip --not-recorded
Exit status: 0 proved, 1 false, 6 undecided; of several the worst, 1 before 6.
Example: callrecordingctl prove --from '2??' --to '00*' --recorded
"callrecordingctl --help" explains the patterns.
)";

struct ClaimOptions {
    RuleFields calls;
    std::optional<bool> isRecorded;
    std::optional<RuleName> rule;
};

struct Options {
    ClaimOptions claim;
    std::optional<std::string> file;
    std::size_t memory = kAnalysisMemory;
};

void AddSide(CLI::App& command, SideFields& side, std::string const& name) {
    AddText(command, "--" + name, "PATTERN",
            fmt::format("The {} side of the calls (default: every call)",
                        name == "from" ? "calling" : "called"),
            [&side](std::string const& text) { side.pattern = text; });
    AddCallType(command, "--" + name + "-type", "Its call type (default: as the pattern looks)",
                side.type);
}

void AddClaim(CLI::App& command, ClaimOptions& claim) {
    AddSide(command, claim.calls.from, "from");
    AddSide(command, claim.calls.to, "to");
    auto const add = [&](char const* name, char const* help, bool isRecorded) {
        return command.add_flag_callback(
            name, [&claim, isRecorded] { claim.isRecorded = isRecorded; }, help);
    };
    CLI::Option* const recorded = add("--recorded", "They are all recorded", true);
    CLI::Option* const notRecorded =
        add("--not-recorded", "None of them is recorded", false)->excludes(recorded);
    AddText(command, "--by", "ID", "They are all decided by this rule",
            [&claim](std::string const& text) { claim.rule = ParseRuleName(text); })
        ->excludes(recorded)
        ->excludes(notRecorded);
}

/// One claim, and what the analysis says of it.
class Prover {
  public:
    Prover(RuleList const& rules, std::size_t memory) : rules_(rules), analysis_(rules, memory) {}

    Proof Prove(ClaimOptions options) {
        if (!options.isRecorded && !options.rule)
            throw Failure(kExitUsage, "one of --recorded, --not-recorded and --by is needed");
        Complete(options.calls.from);
        Complete(options.calls.to);
        Rule calls;
        Apply(options.calls, calls);
        Claim claim{};
        claim.calls = SidesOf(calls);
        claim.isRecorded = options.isRecorded;
        if (options.rule)
            claim.rule = FindRule(rules_, *options.rule);
        return analysis_.Prove(claim);
    }

    nlohmann::ordered_json ToJson(Proof const& proof) const {
        nlohmann::ordered_json document{{"proved", nullptr}, {"counterexample", nullptr}};
        if (proof.proved)
            document["proved"] = *proof.proved;
        if (proof.counterexample)
            document["counterexample"] = {
                {"call", CallToJson(*proof.counterexample)},
                {"callrecordingrule_id", IdToJson(rules_, proof.decidedBy)}};
        return document;
    }

    std::string Sentence(Proof const& proof) const {
        if (!proof.proved)
            return "undecided: " + WhyUndecided(rules_, proof.why);
        if (*proof.proved)
            return "proved";
        return fmt::format("false: the call {} is {}", CallText(*proof.counterexample),
                           DecisionText(rules_, proof.decidedBy));
    }

  private:
    RuleList const& rules_;
    RuleAnalysis analysis_;
};

ExitCode CodeOf(Proof const& proof) {
    return !proof.proved ? kExitUndecided : *proof.proved ? kExitYes : kExitNo;
}

ExitCode ProveOne(Context const& context, Options const& options) {
    RuleList const rules = LoadRules(context.path);
    Prover prover(rules, options.memory);
    Proof const proof = prover.Prove(options.claim);
    if (context.json)
        PrintJson(prover.ToJson(proof));
    else
        fmt::print("{}\n", prover.Sentence(proof));
    return CodeOf(proof);
}

/// The words of a line, without the quotes around them or parts of them, up to a comment.
std::vector<std::string> WordsOf(std::string const& line) {
    std::vector<std::string> words;
    char quote = '\0';
    bool isInWord = false;
    for (char const c : line) {
        bool const isBlank = c == ' ' || c == '\t' || c == '\r';
        if (quote == '\0' && isBlank) {
            isInWord = false;
            continue;
        }
        if (!isInWord && c == '#')
            break;
        if (!isInWord)
            words.emplace_back();
        isInWord = true;
        if (quote == '\0' ? c == '\'' || c == '"' : c == quote)
            quote = quote == '\0' ? c : '\0';
        else
            words.back() += c;
    }
    if (quote != '\0')
        throw Failure(kExitUsage, fmt::format("the {} is not closed", quote));
    return words;
}

ClaimOptions ReadClaim(std::vector<std::string> words) {
    ClaimOptions claim;
    CLI::App app;
    app.set_help_flag();
    AddClaim(app, claim);
    std::reverse(words.begin(), words.end()); // CLI11 takes them from the back.
    try {
        app.parse(words);
    } catch (CLI::ParseError const& error) {
        throw Failure(kExitUsage, error.what());
    }
    return claim;
}

ExitCode ProvePolicy(Context const& context, std::string const& path, std::size_t memory) {
    std::ifstream file(path);
    if (!file)
        throw Failure(kExitUnreadable, path + ": cannot be read");
    RuleList const rules = LoadRules(context.path);
    Prover prover(rules, memory);
    auto document = nlohmann::ordered_json::array();
    ExitCode result = kExitYes;
    std::string line;
    for (std::size_t number = 1; std::getline(file, line); ++number)
        try {
            std::vector<std::string> const words = WordsOf(line);
            if (words.empty())
                continue;
            Proof const proof = prover.Prove(ReadClaim(words));
            if (result != kExitNo && !(proof.proved == true))
                result = CodeOf(proof);
            nlohmann::ordered_json entry{{"line", number}, {"claim", line}};
            entry.update(prover.ToJson(proof));
            document.push_back(entry);
            if (!context.json)
                fmt::print("{}:{}: {}: {}\n", path, number, Printable(line),
                           prover.Sentence(proof));
        } catch (Failure const& failure) {
            throw Failure(failure.Code(), fmt::format("{}:{}: {}", path, number, failure.what()));
        }
    if (context.json)
        PrintJson(document);
    return result;
}

ExitCode Prove(Context const& context, Options const& options) {
    bool const hasClaim =
        options.claim.isRecorded || options.claim.rule || options.claim.calls.AreGiven();
    if (options.file && hasClaim)
        throw Failure(kExitUsage, "prove: --file has the claims; give no other one beside it");
    return options.file ? ProvePolicy(context, *options.file, options.memory)
                        : ProveOne(context, options);
}

} // namespace

void AddProve(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& prove =
        line.AddCommand("prove", "Prove that all calls of a kind are recorded, or are not", kHelp,
                        [options](Context const& context) { return Prove(context, *options); });
    AddClaim(prove, options->claim);
    AddText(prove, "--file", "POLICY", "Prove all the claims of this file",
            [options](std::string const& text) { options->file = text; });
    AddMemory(prove, options->memory);
}

} // namespace callrecordingctl
