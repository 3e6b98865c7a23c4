// Runs git for a copy of one branch.

#include "administration/pull/GitCopy.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr char kHead[] = "refs/pull/head";
constexpr auto kPatience = 300s;
constexpr std::size_t kMostSaid = std::size_t{1} << 20; // By a command that prints little.

/// All that a copy is configured with. Nothing else of a configuration in the copy counts.
constexpr char kConfiguration[] = "[core]\n\trepositoryformatversion = 0\n\tbare = true\n";

/// What counts more than the configuration of the user and the machine, which say how to reach
/// networks: no hook and no housekeeping is run, and OpenPGP has no say in signatures.
constexpr char const* kSettings[] = {"core.hooksPath=/dev/null",
                                     "core.fsmonitor=false",
                                     "core.attributesFile=/dev/null",
                                     "gc.auto=0",
                                     "gc.autoDetach=false",
                                     "maintenance.auto=false",
                                     "submodule.recurse=false",
                                     "protocol.ext.allow=never",
                                     "gpg.format=ssh",
                                     "gpg.program=false",
                                     "gpg.x509.program=false",
                                     "gpg.ssh.program=ssh-keygen",
                                     "gpg.ssh.revocationFile=",
                                     "gpg.minTrustLevel=fully",
                                     "log.showSignature=false"};

[[noreturn]] void Refuse(std::string const& message) {
    throw Error(Error::Kind::Unreadable, message);
}

bool IsCommit(std::string const& text) {
    return (text.size() == 40 || text.size() == 64) &&
           text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::string FirstLine(std::string const& text) {
    return text.substr(0, text.find('\n'));
}

/// The cache is made for its user alone; nobody else may be able to change what is in it.
void RequireOwnFolder(std::string const& cache) {
    if (mkdir(cache.c_str(), 0700) != 0 && errno != EEXIST)
        Refuse(fmt::format("{}: cannot be made: {}", cache, std::strerror(errno)));
    struct stat status {};
    if (stat(cache.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        Refuse(cache + ": is not a directory");
    if (status.st_uid != geteuid() || (status.st_mode & 0022) != 0)
        Refuse(cache + ": belongs to another user, or others may write there; give a folder of "
                       "your own with --cache");
}

/// What is there belongs to a copy that is no use any more.
void Remove(std::string const& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error)
        Refuse(fmt::format("{}: cannot be removed: {}", path, error.message()));
}

} // namespace

void RequirePlainNames(Branch const& branch) {
    auto const hasControl = [](std::string const& text) {
        return std::any_of(text.begin(), text.end(),
                           [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; });
    };
    if (branch.repository.empty() || branch.repository[0] == '-' || hasControl(branch.repository))
        Refuse("\"" + branch.repository + "\" is not the name of a repository");
    std::size_t const at = branch.repository.find("://");
    std::string const host = at == std::string::npos ? "" : branch.repository.substr(at + 3);
    std::string const user = host.substr(0, host.find('@') + 1);
    if (!user.empty() && user.find(':') != std::string::npos && user.find('/') == std::string::npos)
        Refuse("the name of the repository has a password in it, which the history would keep; "
               "leave it to a credential helper of git");
    std::string const& name = branch.name;
    if (name.empty() || name[0] == '-' || name[0] == '/' || hasControl(name) ||
        name.find_first_of(" ~^:?*[\\") != std::string::npos ||
        name.find("..") != std::string::npos || name.find("@{") != std::string::npos)
        Refuse("\"" + name + "\" is not the name of a branch");
}

GitCopy::GitCopy(std::string const& cache, Branch branch) : branch_(std::move(branch)) {
    RequireOwnFolder(cache);
    path_ = fmt::format("{}/{}.git", fs::absolute(cache).string(),
                        StateToken(DigestOf(branch_.repository)));
    std::string const lock = path_ + ".lock";
    lock_ = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock_ < 0)
        Refuse(fmt::format("{}: cannot be opened: {}", lock, std::strerror(errno)));
    auto const end = std::chrono::steady_clock::now() + 60s;
    while (flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        if (std::chrono::steady_clock::now() > end) {
            close(lock_);
            Refuse(lock + ": another pull has been running for a minute");
        }
        std::this_thread::sleep_for(50ms);
    }
}

GitCopy::~GitCopy() {
    close(lock_);
}

ChildResult GitCopy::RunAt(std::string const& path, std::vector<std::string> const& words,
                           std::size_t mostOutput) {
    std::vector<std::string> line{"git", "--git-dir=" + path};
    for (char const* const setting : kSettings)
        line.insert(line.end(), {"-c", setting});
    line.insert(line.end(), words.begin(), words.end());
    return RunChild(line, kPatience, mostOutput);
}

void GitCopy::Fail(ChildResult const& result, std::string const& what) const {
    constexpr int kNoProgram = 127;
    Refuse(fmt::format("{}: {}: {}", branch_.repository, what,
                       result.isLate                 ? "there was no end of it in five minutes"
                       : result.status == kNoProgram ? "the program git cannot be run"
                       : result.said.empty()         ? "git ended without saying why"
                                                     : result.said));
}

/// What cannot be read from the copy, although all of it was there, will be there again only in a
/// new one.
std::string GitCopy::FromCopy(std::vector<std::string> const& words, std::string const& what) {
    ChildResult result = RunAt(path_, words, HostPlatform::kLargestFile);
    if (result.status != 0) {
        Remove(path_);
        Fail(result, what);
    }
    return std::move(result.out);
}

std::string GitCopy::Newest() {
    std::string const name = "refs/heads/" + branch_.name;
    // Not the configuration of the copy, which is written anew for a fetch only.
    ChildResult const result =
        RunAt("/dev/null", {"ls-remote", "--quiet", "--", branch_.repository, name}, kMostSaid);
    if (result.status != 0)
        Fail(result, "cannot be asked");
    // Another branch may end in the same words.
    std::istringstream lines(result.out);
    for (std::string commit, found; lines >> commit >> found;)
        if (found == name && IsCommit(commit))
            return commit;
    Refuse(fmt::format("{}: has no branch {}", branch_.repository, branch_.name));
}

/// Makes an empty copy at path, or takes from the one that is there what could lead git elsewhere.
void GitCopy::PrepareAt(std::string const& path) {
    if (!fs::exists(path + "/HEAD")) {
        Remove(path);
        ChildResult const made = RunChild({"git", "init", "--quiet", "--bare", "--template=", path},
                                          kPatience, kMostSaid);
        if (made.status != 0)
            Fail(made, "no copy can be made");
    }
    std::error_code ignored;
    fs::remove_all(path + "/info", ignored);
    fs::remove_all(path + "/objects/info/alternates", ignored);
    std::ofstream configuration(path + "/config", std::ios::trunc);
    configuration << kConfiguration;
    configuration.close();
    if (!configuration)
        Refuse(path + "/config: cannot be written");
}

/// Returns whether the branch is there now.
bool GitCopy::FetchInto(std::string const& path, ChildResult& result) {
    PrepareAt(path);
    result = RunAt(path,
                   {"fetch", "--quiet", "--no-tags", "--no-write-fetch-head", "--no-auto-gc",
                    "--no-recurse-submodules", "--", branch_.repository,
                    fmt::format("+refs/heads/{}:{}", branch_.name, kHead)},
                   kMostSaid);
    // All that comes later is read from the copy, so this is the time to find it damaged.
    return result.status == 0 &&
           RunAt(path, {"rev-list", "--quiet", "--objects", kHead}, kMostSaid).status == 0;
}

std::string GitCopy::Fetch() {
    ChildResult result;
    if (!fs::exists(path_) || !FetchInto(path_, result)) {
        // Either there is no copy, or it is damaged, or the repository cannot be reached. The old
        // one stays until there is a better one.
        std::string const anew = path_ + ".new";
        Remove(anew);
        if (!FetchInto(anew, result)) {
            Remove(anew);
            Fail(result, "cannot be fetched");
        }
        Remove(path_);
        fs::rename(anew, path_);
    }
    std::string const commit = FirstLine(FromCopy(
        {"rev-parse", "--verify", "--quiet", std::string(kHead) + "^{commit}"}, "has no commit"));
    if (!IsCommit(commit))
        Refuse(fmt::format("{}: has no commit", branch_.repository));
    return commit;
}

bool GitCopy::IsAncestor(std::string const& ancestor, std::string const& descendant) {
    return RunAt(path_, {"merge-base", "--is-ancestor", ancestor, descendant}, kMostSaid).status ==
           0;
}

CommitNote GitCopy::NoteOf(std::string const& commit) {
    std::istringstream out(
        FromCopy({"log", "-1", "--no-show-signature", "--format=%ct%n%an <%ae>%n%s", commit, "--"},
                 "the commit cannot be read"));
    CommitNote note;
    std::string seconds;
    std::getline(out, seconds);
    std::from_chars(seconds.data(), seconds.data() + seconds.size(), note.seconds);
    std::getline(out, note.author);
    std::getline(out, note.subject);
    return note;
}

std::optional<std::string> GitCopy::SignerOf(std::string const& commit, std::string const& signers,
                                             std::string& why) {
    ReadInput(signers); // Throws if it cannot be read, which git would not say.
    std::string const setting = "gpg.ssh.allowedSignersFile=" + fs::absolute(signers).string();
    ChildResult const result = RunAt(
        path_,
        {"-c", setting, "log", "-1", "--no-show-signature", "--format=%G?%n%GS", commit, "--"},
        kMostSaid);
    std::istringstream out(result.out);
    std::string verdict, signer;
    std::getline(out, verdict);
    std::getline(out, signer);
    if (result.status == 0 && verdict == "G")
        return signer;
    why = result.status != 0 ? "git cannot look at the signature: " + result.said
          : verdict == "N"   ? "it is not signed with an SSH key"
          : verdict == "B"   ? "its signature is bad"
                             : "its signature is of none of the keys in " + signers;
    return std::nullopt;
}

std::string GitCopy::Read(std::string const& commit, std::string const& path) {
    // "MODE TYPE OBJECT SIZE\tNAME": a link or a folder has no bytes that could be rules.
    std::istringstream out(
        FromCopy({"--literal-pathspecs", "ls-tree", "-z", "--long", commit, "--", path},
                 "the commit cannot be read"));
    std::string mode, type, object;
    std::size_t size = 0;
    out >> mode >> type >> object >> size;
    std::string const name = fmt::format("{} in commit {}", path, commit.substr(0, 12));
    if (mode.empty())
        Refuse(name + ": there is no such file");
    if (type != "blob" || mode == "120000" || !IsCommit(object))
        Refuse(name + ": is not a regular file");
    if (size > HostPlatform::kLargestFile)
        Refuse(fmt::format("{}: has {} bytes, expected at most {}", name, size,
                           HostPlatform::kLargestFile));
    return FromCopy({"cat-file", "blob", object}, name + " cannot be read");
}

void GitCopy::TidyUp() {
    RunAt(path_, {"-c", "gc.auto=500", "gc", "--auto", "--quiet"}, kMostSaid);
}

} // namespace CallRecordingUtils
