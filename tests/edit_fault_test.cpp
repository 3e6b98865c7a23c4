// No failing system call and no kill during an edit loses a rule or tears the file.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <callrecordingutils/CRuleFileLock.h>

#include "support/AsUser.h"
#include "support/Edits.h"
#include "support/SyscallFaults.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

/// An edit, the contents of the file before it and after each of its saves, and one more that a
/// lack of memory may leave.
struct FaultRow {
    Edit edit;
    std::vector<std::string> states;
    std::string withoutMemory = {};
};

std::vector<FaultRow> Rows() {
    std::string const top = "# kept\n", a = Section(kA), t = Section(kTwinOfA), b = Section(kB);
    std::string const newA = Section(With(kA, 0, "n")), newT = Section(With(kTwinOfA, 1, "n"));
    std::string const before = top + a + t + b;
    return {
        {SetState("0", false), {before, top + Section(Disabled(kA)) + t + b}},
        {Add(kC), {before, before + Section(With(kC, 8))}},
        {Modify(With(kB, 7, "n"), false), {before, top + a + t + Section(With(kB, 7, "n"))}},
        {Modify(With(kA, 0, "n"), true),
         {before, top + newA + t + b, top + newA + newT + b},
         top + a + newT + b},
        {Delete(kA), {before, top + t + b, top + b}},
        {Delete("7"), {before, top + a + t}},
        {Move("7", true), {before, top + a + Section(With(kB, 1)) + Section(With(kTwinOfA, 7))}},
        {MoveTo("7", 0),
         {before, top + Section(With(kB, 0)) + Section(With(kA, 1)) + Section(With(kTwinOfA, 7))}},
    };
}

std::ptrdiff_t CountEntries(std::string const& directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

class EditFaults : public testing::Test {
  protected:
    EditFaults() {
        dir.UseAsConfiguration();
        db = CCallRecordingDB::GetInstance(false, false);
        Restore();
    }
    ~EditFaults() override { CCallRecordingDB::CloseInstance(); }

    void Restore() {
        std::filesystem::remove_all(dir.Path("telephony")); // With what a kill left behind.
        dir.WriteRules(rows.front().states.front());
        // Only root can give the file another owner.
        ASSERT_TRUE(geteuid() != 0 || chown(dir.Path(TempDir::RULE_FILE).c_str(), 1, 1) == 0);
        ASSERT_TRUE(db->Reload());
    }

    /// Makes the edit with a fault, and returns its result.
    bool Run(Edit const& edit, std::string const& call, int occurrence, Fault fault,
             int error = EIO) {
        SyscallFault const armed(call, occurrence, fault, error);
        bool const isDone = edit(*db);
        wasHit = armed.wasHit;
        calls = armed.calls;
        return isDone;
    }

    /// Makes the edit in a child process that is killed at its call number occurrence. Returns
    /// false if it makes fewer calls.
    bool IsKilled(Edit const& edit, int occurrence) {
        pid_t const child = fork();
        if (child == 0) {
            Run(edit, "", occurrence, Fault::KILL);
            _exit(0);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        return WIFSIGNALED(status);
    }

    /// Runs check for each edit and each of its calls of that name, until there is none left to go
    /// wrong. Among them they leave every content that the file has on the way.
    void ForEachCall(std::string const& call,
                     std::function<bool(FaultRow const&, int)> const& check) {
        for (FaultRow const& row : rows) {
            std::set<std::string> seen;
            for (int occurrence = 1, hits = 1; hits == occurrence; ++occurrence) {
                SCOPED_TRACE(row.states.back() + "call " + std::to_string(occurrence));
                Restore();
                bool const isHit = check(row, occurrence);
                hits += isHit ? 1 : 0;
                std::string const left = dir.ReadRules();
                if (call != "new" || left != row.withoutMemory)
                    seen.insert(left);
                if (!isHit) {
                    EXPECT_EQ(left, row.states.back());
                    EXPECT_GE(occurrence, 13); // Open, read and close, and the ten of a save.
                }
            }
            EXPECT_EQ(seen, std::set<std::string>(row.states.begin(), row.states.end()));
        }
    }

    std::vector<FaultRow> const rows = Rows();
    TempDir dir;
    CCallRecordingDB* db;
    bool wasHit = false;
    std::string calls;
};

TEST_F(EditFaults, AFailingCallLeavesAWholeFileAndNothingElse) {
    std::ptrdiff_t const descriptors = CountEntries("/proc/self/fd");
    for (char const* const call : {"", "new"}) {
        ForEachCall(
            call,
            [&](FaultRow const& row, int occurrence) {
                bool const isDone = Run(row.edit, call, occurrence, Fault::FAIL);
                EXPECT_TRUE(isDone || wasHit);
                std::string const reason = db->GetLastFailure();
                EXPECT_TRUE(isDone || !reason.empty());
                EXPECT_TRUE(!reason.empty() || dir.ReadRules() == row.states.back());
                EXPECT_TRUE(reason.empty() || reason == "out of memory" ||
                            (*call == 0 && reason.find(dir.Path(TempDir::RULE_FILE) + ": ") == 0 &&
                             reason.find("Input/output error") != std::string::npos))
                    << reason;
                EXPECT_EQ(CountEntries(dir.Path("telephony")), 1);
                EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
                return wasHit;
            });
    }
}

TEST_F(EditFaults, AFailureWithoutMemoryForItsReasonHasOne) {
    std::string const malformed = "{\nhalf a section=";
    for (int call = 1; call == 1 || wasHit; ++call) {
        Restore();
        dir.WriteRules(malformed);
        EXPECT_FALSE(Run(rows.front().edit, "new", call, Fault::FAIL));
        std::string const reason = db->GetLastFailure();
        EXPECT_TRUE(reason == "out of memory" ||
                    (reason.find(dir.Path(TempDir::RULE_FILE) + ":2: ") == 0 &&
                     reason.find("; ") == std::string::npos))
            << reason;
        EXPECT_EQ(dir.ReadRules(), malformed);
    }
}

TEST_F(EditFaults, ALoadWithoutMemoryListsNoTornRule) {
    std::string const whole[] = {Section(kA), Section(kTwinOfA), Section(kB)};
    for (int call = 1; call == 1 || wasHit; ++call) {
        bool const isLoaded = Run(&CCallRecordingDB::Reload, "new", call, Fault::FAIL);
        std::size_t at = 0;
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
            EXPECT_EQ(Section(*rule), whole[at++]);
        // The index only makes decisions faster; without memory for it there is no failure.
        EXPECT_EQ(isLoaded, at == 3 && db->GetLastFailure().empty());
        EXPECT_TRUE(isLoaded || wasHit);
    }
}

TEST_F(EditFaults, AKillLeavesAWholeFile) {
    ForEachCall(
        "",
        [&](FaultRow const& row, int occurrence) {
            bool const isKilled = IsKilled(row.edit, occurrence);
            EXPECT_TRUE(db->Reload());
            return isKilled;
        });
}

// What survives a power failure depends on this order: the new file is durable before it gets the
// name, and the directory afterwards.
TEST_F(EditFaults, ASaveTakesItsStepsInOrder) {
    std::string const path = dir.Path(TempDir::RULE_FILE);
    for (auto const& [user, group] : {std::pair{1, 0}, {0, 1}}) {
        bool const isOwned = chown(path.c_str(), user, group) == 0; // Only root can do that.
        EXPECT_TRUE(Run(rows.front().edit, "", 0, Fault::FAIL));
        EXPECT_EQ(calls, "open read read close open open open " +
                             std::string(isOwned ? "fchown " : "") +
                             "fchmod write fsync close rename fsync close close ");
        struct stat status = {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_TRUE(!isOwned || (status.st_uid == uid_t(user) && status.st_gid == gid_t(group)));
    }
}

// A program that the host starts at any moment must not inherit the files, or the locks on them.
TEST_F(EditFaults, NoFileIsLeftToAProgramThatTheHostStarts) {
    std::set<int> others;
    for (int file = 0; file < 100; ++file)
        if (fcntl(file, F_GETFD) >= 0)
            others.insert(file);
    int seen = 0;
    SyscallFault::action = [&] {
        for (int file = 0; file < 100; ++file) {
            int const flags = others.count(file) == 0 ? fcntl(file, F_GETFD) : -1;
            EXPECT_TRUE(flags < 0 || (flags & FD_CLOEXEC) != 0);
            seen += flags < 0 ? 0 : 1;
        }
    };
    Edit const edit = [this](CCallRecordingDB& database) {
        return CRuleFileLock(0).IsHeld() && rows.front().edit(database);
    };
    for (int occurrence = 1; occurrence == 1 || wasHit; ++occurrence) {
        Restore();
        EXPECT_TRUE(Run(edit, "", occurrence, Fault::ACT));
    }
    EXPECT_GT(seen, 20);
}

TEST_F(EditFaults, NoFailureAndNoKillSpoilsTheLock) {
    std::string const lock = dir.Path(TempDir::RULE_FILE) + ".lock";
    Edit const take = [](CCallRecordingDB&) { return CRuleFileLock(0).IsHeld(); };
    for (Fault const fault : {Fault::FAIL, Fault::KILL}) {
        int occurrence = 0;
        for (bool isHit = true; isHit;) {
            std::filesystem::remove(lock);
            ++occurrence;
            if (fault == Fault::FAIL)
                Run(take, "", occurrence, fault, EPERM);
            isHit = fault == Fault::FAIL ? wasHit : IsKilled(take, occurrence);
            EXPECT_EQ(CRuleFileLock(0).GetFailure(), "") << "after call " << occurrence;
            EXPECT_TRUE(geteuid() != 0 || OwnerAndMode(lock) == "1:1 600");
        }
        EXPECT_EQ(occurrence, geteuid() == 0 ? 5 : 4); // open, fchown, fchmod and close
    }
}

TEST_F(EditFaults, AnEditGoesOnWhereThatIsRight) {
    struct {
        char const *name, *call;
        int occurrence;
        Fault fault;
        int error;
        bool isDone, isReplaced;
    } const table[] = {
        // A file that cannot be read must not be taken for an empty one and overwritten.
        {"no open", "open", 1, Fault::FAIL, EACCES, false, false},
        {"no read", "read", 1, Fault::FAIL, EIO, false, false},
        {"interrupted read", "read", 1, Fault::FAIL, EINTR, true, true},
        {"half a write", "write", 1, Fault::CUT, 0, true, true},
        {"a write of nothing", "write", 1, Fault::NOTHING, 0, false, false},
        {"interrupted write", "write", 1, Fault::FAIL, EINTR, true, true},
        {"interrupted fsync", "fsync", 1, Fault::FAIL, EINTR, true, true},
        {"interrupted close", "close", 2, Fault::FAIL, EINTR, true, true},
        {"no list of what is beside it", "open", 3, Fault::FAIL, EACCES, true, true},
        {"no file beside it", "open", 4, Fault::FAIL, EACCES, false, false},
        {"name taken", "open", 4, Fault::FAIL, EEXIST, true, true},
        {"files cannot be synced here", "fsync", 1, Fault::FAIL, EINVAL, false, false},
        {"directories cannot be synced here", "fsync", 2, Fault::FAIL, EINVAL, true, true},
        {"the new name may not last", "fsync", 2, Fault::FAIL, EIO, false, true},
        {"nothing is left to close well", "close", 3, Fault::FAIL, EIO, true, true},
        {"mounted alone", "rename", 1, Fault::FAIL, EBUSY, false, false},
    };
    FaultRow const& disable = rows.front();
    for (auto const& row : table) {
        SCOPED_TRACE(row.name);
        Restore();
        bool const isDone = Run(disable.edit, row.call, row.occurrence, row.fault, row.error);
        EXPECT_EQ(isDone, row.isDone);
        EXPECT_EQ(db->GetLastFailure().find("mount point") != std::string::npos,
                  row.error == EBUSY);
        EXPECT_TRUE(wasHit);
        EXPECT_EQ(dir.ReadRules(), row.isReplaced ? disable.states[1] : disable.states[0]);
    }
}

// Except in the moment of the rename itself, when a program that takes no turn can still interfere.
TEST_F(EditFaults, AnEditDoesNotUndoWhatSomebodyElseSaves) {
    FaultRow const& disable = rows.front();
    std::string const theirs = disable.states[0] + Section(kC);
    std::string const both = disable.states[1] + Section(kC);
    SyscallFault::action = [&] {
        dir.Write("telephony/theirs", theirs);
        std::filesystem::rename(dir.Path("telephony/theirs"), dir.Path(TempDir::RULE_FILE));
    };
    int failures = 0;
    for (int occurrence = 1; occurrence == 1 || wasHit; ++occurrence) {
        Restore();
        bool const isDone = Run(disable.edit, "", occurrence, Fault::ACT);
        std::string const ends =
            calls.substr(calls.size() - std::min(calls.size(), std::size_t{7}));
        bool const isTooLate = !wasHit || ends == "rename ";
        EXPECT_TRUE(isTooLate || dir.ReadRules() == theirs || (isDone && dir.ReadRules() == both))
            << calls;
        EXPECT_EQ(isDone, db->GetLastFailure().empty());
        failures += isDone ? 0 : 1;
        EXPECT_EQ(CountEntries(dir.Path("telephony")), 1);
    }
    EXPECT_GE(failures, 10); // From the first read to the last call before the rename.

    SyscallFault::action = [&] {
        std::ofstream(dir.Path(TempDir::RULE_FILE), std::ios::app) << Section(kC);
    };
    for (int occurrence = 1; occurrence <= 2; ++occurrence) {
        Restore();
        EXPECT_TRUE(Run(disable.edit, "read", occurrence, Fault::ACT));
        EXPECT_EQ(dir.ReadRules(), both); // A file that grows while it is read is read in full.
    }
}

} // namespace
} // namespace CallRecordingUtils
