// pull: takes the rules of the newest commit of a branch, if it may.

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <future>
#include <memory>

#include <fmt/format.h>

#include "administration/check/FileFindings.h"
#include "administration/history/History.h"
#include "administration/history/SaveRecorded.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "administration/pull/GitCopy.h"
#include "administration/pull/PullMetrics.h"
#include "administration/pull/TakenCommit.h"
#include "commands/AnalysisOptions.h"
#include "commands/ClaimOptions.h"
#include "commands/RunEdit.h"
#include "commands/WaitForServices.h"
#include "output/ProofText.h"
#include "output/PullReport.h"

namespace callrecordingctl {
namespace {

constexpr char kHelp[] =
    R"(Fetches the branch with git, into a copy in the cache, and takes the rules of
its newest commit, byte for byte and in one edit, if
- it comes after the commit that was taken last, by the history of the rules: a
  branch that was forced back is refused, and going back is a new commit;
- with --signers, one of them has signed it with an SSH key;
- the rules can be read, "check" finds nothing but notes in them, and
- with --policy, every claim of that file of this machine is proved for them.
An edit made here since the last pull, or rules that were here before the first
one, stop it; --over takes the commit all the same. A commit that is in force
is not looked at again: other options count from the next one on.
Exit status: 0 taken or nothing new; 1 refused; 3 the branch cannot be fetched,
or the rules cannot be read; 4 not saved; 7 an edit made here.
Example: callrecordingctl pull ssh://git@git.example.com/rules.git \
    --signers /etc/callrecording/signers --policy /etc/callrecording/policy
)";

struct Options {
    Branch branch{"", "main"};
    std::string path = "callrecordingdb";
    std::optional<std::string> signers, policy, metrics;
    std::string cache = "/var/lib/callrecording";
    bool dryRun = false;
    bool over = false;
    AnalysisOptions analysis;
};

std::string Named(TakenCommit const& taken) {
    return fmt::format("commit {} ({}: {})", taken.commit.substr(0, 12), taken.note.author,
                       taken.note.subject);
}

[[noreturn]] void Refuse(TakenCommit const& taken, std::string const& why) {
    throw Failure(kExitNo, fmt::format("{} is refused: {}", Named(taken), why));
}

/// One pull. What was found out is there for the metrics, even if it ends early.
class Puller {
  public:
    Puller(Context const& context, Options const& options) : context_(context), options_(options) {}

    ExitCode Run() {
        RequirePlainNames(options_.branch);
        RequireDirectory(context_.path);
        GitCopy copy(options_.cache, options_.branch);
        // The digest of many rules takes as long as the network.
        auto asked = std::async(std::launch::async, [&copy] { return copy.Newest(); });
        ReadHistory();
        std::string const newest = asked.get();
        if (known_.last && !options_.over)
            RequireNoEdit();
        if (IsInForce(newest)) {
            ReportNothingNew(*known_.last, digest_, context_.json);
            return kExitYes;
        }
        TakenCommit const taken = Fetch(copy);
        std::string const text = copy.Read(taken.commit, options_.path);
        RuleList const rules = Load(taken, text);
        if (!known_.last && !options_.over)
            RequireNoOther(taken, text, rules);
        Check(taken, text);
        if (options_.policy)
            Prove(taken, rules);
        Take(taken, text);
        copy.TidyUp();
        return kExitYes;
    }

    PullMetrics Metrics(int status) const {
        return {status, known_.last, known_.lastSeconds, digest_};
    }

  private:
    void ReadHistory() {
        try {
            auto [text, entries] = History(context_.path).Read();
            before_ = std::move(text);
            known_ = FindTaken(entries, options_.branch);
            digest_ = entries.empty() ? DigestOf(before_) : EndOf(entries.back());
        } catch (std::runtime_error const& error) {
            throw Failure(kExitUnreadable, error.what());
        }
    }

    bool IsOfThisBranch(TakenCommit const& taken) const {
        return taken.branch.repository == options_.branch.repository &&
               taken.branch.name == options_.branch.name;
    }

    bool IsInForce(std::string const& newest) const {
        return known_.last && known_.last->commit == newest && IsOfThisBranch(*known_.last) &&
               known_.lastDigest == digest_;
    }

    /// Throws if the rules are not those of the commit that was taken last, or that was one of
    /// another branch.
    void RequireNoEdit() {
        if (!IsOfThisBranch(*known_.last))
            throw Failure(kExitChanged,
                          fmt::format("the rules here are those of branch {} in {}; --over takes "
                                      "those of {} in {} instead; nothing was changed",
                                      known_.last->branch.name, known_.last->branch.repository,
                                      options_.branch.name, options_.branch.repository));
        if (known_.lastDigest == digest_)
            return;
        std::string differences;
        try {
            auto const then = History(context_.path).TextOf(known_.lastDigest);
            differences = then ? ChangesText(RulesOf(*then, "the rules then"),
                                             RulesOf(before_, context_.path))
                               : "";
        } catch (std::runtime_error const& error) {
            differences = fmt::format("\n  {}", error.what());
        }
        throw Failure(kExitChanged,
                      fmt::format("the rules were edited here after {} was taken; --over takes "
                                  "the newest commit all the same; nothing was changed{}",
                                  Named(*known_.last), differences));
    }

    /// Throws if there are rules that come from no commit, unless they are the same.
    void RequireNoOther(TakenCommit const& taken, std::string const& text, RuleList const& rules) {
        if (before_.empty() || before_ == text)
            return;
        std::string differences;
        try {
            differences = ChangesText(RulesOf(before_, context_.path), rules);
        } catch (std::runtime_error const& error) {
            differences = fmt::format("\n  {}", error.what());
        }
        throw Failure(kExitChanged,
                      fmt::format("there are rules here that were taken from no commit; --over "
                                  "replaces them by those of {}; nothing was changed{}",
                                  Named(taken), differences));
    }

    TakenCommit Fetch(GitCopy& copy) {
        TakenCommit taken{copy.Fetch(), options_.branch, {}, {}};
        taken.note = copy.NoteOf(taken.commit);
        if (known_.ofThisBranch && *known_.ofThisBranch != taken.commit &&
            !copy.IsAncestor(*known_.ofThisBranch, taken.commit))
            Refuse(taken, fmt::format("it does not come after commit {}, which was taken before; "
                                      "the branch was forced back, and going back is a new commit",
                                      known_.ofThisBranch->substr(0, 12)));
        if (options_.signers) {
            std::string why;
            auto const signer = copy.SignerOf(taken.commit, *options_.signers, why);
            if (!signer)
                Refuse(taken, why);
            taken.signer = *signer;
        }
        return taken;
    }

    std::string NameOf(TakenCommit const& taken) const {
        return fmt::format("{} of commit {}", options_.path, taken.commit.substr(0, 12));
    }

    RuleList Load(TakenCommit const& taken, std::string const& text) {
        return RulesOf(text, NameOf(taken));
    }

    void Check(TakenCommit const& taken, std::string const& text) {
        constexpr std::size_t kMost = 10;
        std::string found;
        std::size_t faults = 0;
        CheckOptions const check{options_.analysis.calls, options_.analysis.memory};
        for (FileFinding const& finding : FindFaults(StoredRulesOf(text, NameOf(taken)), check))
            if (!IsNote(finding) && ++faults <= kMost)
                found += fmt::format("\n  {}:{}: rule {}: {}", options_.path, finding.line,
                                     finding.id, finding.message);
        if (faults > kMost)
            found += fmt::format("\n  and {} more", faults - kMost);
        if (faults > 0)
            Refuse(taken, "check finds faults in its rules" + found);
    }

    void Prove(TakenCommit const& taken, RuleList const& rules) {
        RuleAnalysis analysis(rules, options_.analysis.memory, options_.analysis.calls);
        std::string broken;
        for (auto const& [number, options] : ReadPolicy(*options_.policy)) {
            std::string const at = fmt::format("\n  {}:{}: ", *options_.policy, number);
            try {
                NamedClaim const claim(options, rules);
                Proof const proof = analysis.Prove(claim.ForAnalysis());
                if (CodeOf(proof) != kExitYes)
                    broken += at + claim.Text() + ": " + ProofText(rules, proof);
            } catch (Failure const& failure) { // Such as a rule that is not there.
                broken += at + failure.what();
            }
        }
        if (!broken.empty())
            Refuse(taken, "the policy of this machine is not proved for its rules" + broken);
    }

    void Take(TakenCommit const& taken, std::string const& text) {
        std::unique_ptr<RuleFileLock> lock;
        if (!options_.dryRun)
            lock = LockRules(context_.path, std::chrono::seconds(5));
        RuleEdit edit(context_.path);
        if (edit.TextBefore() != before_)
            throw Failure(kExitChanged, "the rules were edited while they were compared with the "
                                        "branch; nothing was changed");
        edit.ReplaceText(text);
        if (lock)
            Save(edit, taken);
        lock.reset();
        Report(edit, taken);
        if (!options_.dryRun && before_ != text)
            SayNote(WhoDecidesByThem(context_.path));
    }

    /// What was saved is done, whether or not that can be printed.
    void Report(RuleEdit& edit, TakenCommit const& taken) const {
        std::string reason;
        try {
            ReportPull(edit, taken,
                       {options_.dryRun, context_.json, options_.analysis.calls,
                        options_.analysis.memory});
            if (std::fflush(stdout) != 0)
                reason = std::strerror(errno);
        } catch (std::exception const& error) {
            reason = error.what();
        }
        if (reason.empty())
            return;
        if (options_.dryRun)
            throw Failure(kExitUnsaved, "standard output cannot be written: " + reason);
        Say("the commit was taken, but standard output cannot be written: {}", reason);
        std::fclose(stdout); // With what is left in it.
    }

    void Save(RuleEdit& edit, TakenCommit const& taken) {
        EditNote note;
        note.user = EditorName();
        note.command = context_.line;
        note.message = taken.note.subject;
        note.origin = OriginOf(taken);
        try {
            SaveIfRecorded(
                context_.path, note, before_, edit.TextAfter(),
                [&edit] {
                    if (edit.IsChanged())
                        edit.Save();
                });
        } catch (std::exception const& error) {
            throw Failure(kExitUnsaved, error.what());
        }
        digest_ = DigestOf(edit.TextAfter());
        known_.last = taken;
        known_.lastSeconds = std::time(nullptr);
        std::signal(SIGPIPE, SIG_IGN); // A reader that has gone must not end what is done.
    }

    Context const& context_;
    Options const& options_;
    std::string before_; // The text of the rule file,
    std::string digest_; // and the digest of what it is now.
    PullHistory known_;
};

void WriteMetrics(Options const& options, PullMetrics const& metrics) {
    if (!options.metrics || options.dryRun)
        return;
    try {
        WritePullMetrics(*options.metrics, metrics);
    } catch (std::exception const& error) {
        Say("the metrics cannot be written: {}", error.what());
    }
}

ExitCode Pull(Context const& context, Options const& given) {
    Options options = given;
    std::error_code ignored; // The same repository has one name, wherever it is called from.
    if (std::filesystem::is_directory(options.branch.repository, ignored))
        options.branch.repository = std::filesystem::canonical(options.branch.repository).string();
    Puller puller(context, options);
    try {
        ExitCode const code = puller.Run();
        WriteMetrics(options, puller.Metrics(code));
        return code;
    } catch (Failure const& failure) {
        WriteMetrics(options, puller.Metrics(failure.Code()));
        throw;
    } catch (std::exception const& error) {
        WriteMetrics(options, puller.Metrics(kExitUnreadable));
        throw Failure(kExitUnreadable, error.what());
    }
}

} // namespace

void AddPull(CommandLine& line) {
    auto const options = std::make_shared<Options>();
    CLI::App& pull = line.AddCommand("pull", "Take the rules of a branch of a git repository",
                                     kHelp, options, Pull);
    auto const text = [&](char const* name, char const* what, char const* help, auto& value) {
        return AddText(pull, name, what, help,
                       [&value](std::string const& given) { value = given; });
    };
    text("REPOSITORY", "", "As git fetch takes it: a URL, or a directory",
         options->branch.repository)
        ->required();
    text("--branch", "NAME", "The branch (default: main)", options->branch.name);
    text("--path", "PATH", "The rule file in the repository\n(default: callrecordingdb)",
         options->path);
    text("--signers", "FILE",
         "Take only what one of these has signed, as in\n\"ALLOWED SIGNERS\" of ssh-keygen(1)",
         options->signers);
    text("--policy", "FILE",
         "Take only rules for which all of these claims are\nproved, as with prove",
         options->policy);
    text("--cache", "DIR", "Where the copy is kept\n(default: /var/lib/callrecording)",
         options->cache);
    text("--metrics", "FILE",
         "Write for a node exporter how it went; in a\ndirectory, to callrecording.prom",
         options->metrics);
    pull.add_flag("--over", options->over, "Also over edits that were made here");
    pull.add_flag("--dry-run", options->dryRun,
                  "Only show what would change; the cache may change");
    AddAnalysis(pull, options->analysis);
}

} // namespace callrecordingctl
