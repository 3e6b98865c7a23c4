// A branch of a git repository, and a bare copy of it on this machine.

#ifndef ADMINISTRATION_PULL_GITCOPY_H
#define ADMINISTRATION_PULL_GITCOPY_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "administration/pull/Child.h"

namespace CallRecordingUtils {

/// Where rules come from.
struct Branch {
    std::string repository; ///< As git fetch takes it.
    std::string name;
};

/// Throws an Error if the repository or the branch has a name that git would take for something
/// else, or that no history could keep.
void RequirePlainNames(Branch const& branch);

/// Who made a commit, and when. Anybody can write anything there; only a signature tells who it
/// was.
struct CommitNote {
    std::string author;       ///< Name and address.
    std::string subject;      ///< The first line of its message.
    std::int64_t seconds = 0; ///< When it was committed, since 1970, by the clock of its machine.
};

/// The copy is kept in a folder of the cache that is this user's alone. Whatever is in it, git is
/// run without its hooks and with a configuration that is written anew each time. A copy that is
/// damaged, or that a killed process left half done, is made again. Operations throw an Error that
/// says what git said.
class GitCopy {
  public:
    /// Takes the cache, which is made if only its last folder is missing, for this process; waits
    /// for another one that has it.
    GitCopy(std::string const& cache, Branch branch);
    ~GitCopy();
    GitCopy(GitCopy const&) = delete;
    GitCopy& operator=(GitCopy const&) = delete;

    /// The identifier of the newest commit, asked for without fetching it.
    std::string Newest();

    /// Fetches the branch. Returns the identifier of its newest commit.
    std::string Fetch();

    /// Whether descendant comes after ancestor. A commit that the branch does not have is nobody's
    /// ancestor.
    bool IsAncestor(std::string const& ancestor, std::string const& descendant);

    CommitNote NoteOf(std::string const& commit);

    /// Who has signed the commit with an SSH key, by the name that signers, a file as ssh-keygen
    /// takes it, gives the key. Nothing, and the reason in why, if none of them has.
    std::optional<std::string> SignerOf(std::string const& commit, std::string const& signers,
                                        std::string& why);

    /// The bytes of the file at path in the commit.
    std::string Read(std::string const& commit, std::string const& path);

    /// Keeps the copy small. What fails is tried again another time.
    void TidyUp();

  private:
    static ChildResult RunAt(std::string const& path, std::vector<std::string> const& words,
                             std::size_t mostOutput);
    std::string FromCopy(std::vector<std::string> const& words, std::string const& what);
    [[noreturn]] void Fail(ChildResult const& result, std::string const& what) const;
    void PrepareAt(std::string const& path);
    bool FetchInto(std::string const& path, ChildResult& result);

    Branch const branch_;
    std::string path_; // Of the copy.
    int lock_ = -1;
};

} // namespace CallRecordingUtils

#endif
