// No failing system call and no kill during an edit loses a rule or tears the file.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "support/Edits.h"
#include "support/SyscallFaults.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

/// An edit with the contents that the file may have: before it, after each of its saves.
struct FaultRow {
    char const* name;
    Edit edit;
    std::vector<std::string> states;
};

std::vector<FaultRow> Rows() {
    std::string const a = Section(kA), t = Section(kTwinOfA), b = Section(kB);
    std::string const before = "# kept\n" + a + t + b;
    std::string const newA = Section(With(kA, 0, "new"));
    return {
        {"add", Add(kC), {before, before + Section(With(kC, 8))}},
        {"modify",
         Modify(With(kB, 7, "new"), false),
         {before, "# kept\n" + a + t + Section(With(kB, 7, "new"))}},
        {"modify with twin",
         Modify(With(kA, 0, "new"), true),
         {before, "# kept\n" + newA + t + b,
          "# kept\n" + newA + Section(With(kTwinOfA, 1, "new")) + b}},
        {"delete pair", Delete(kA), {before, "# kept\n" + t + b, "# kept\n" + b}},
        {"delete by text", Delete("7"), {before, "# kept\n" + a + t}},
        {"move",
         Move("7", true),
         {before, "# kept\n" + a + Section(With(kB, 1)) + Section(With(kTwinOfA, 7))}},
        {"disable", SetState("0", false), {before, "# kept\n" + Section(Disabled(kA)) + t + b}},
    };
}

std::ptrdiff_t CountEntries(std::string const& directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

class EditFaults : public testing::TestWithParam<int> {
  protected:
    EditFaults() : row(Rows()[static_cast<std::size_t>(GetParam())]) {
        dir.UseAsConfiguration();
        db = CCallRecordingDB::GetInstance(false, false);
        Restore();
    }
    ~EditFaults() override { CCallRecordingDB::CloseInstance(); }

    void Restore() {
        std::filesystem::remove_all(dir.Path("telephony")); // With what a kill left behind.
        dir.WriteRules(row.states.front());
        // Not root has no other owner to take over.
        ASSERT_TRUE(geteuid() != 0 || chown(dir.Path(TempDir::RULE_FILE).c_str(), 1, 1) == 0);
        ASSERT_TRUE(db->Reload());
    }

    bool HoldsOneOf(std::vector<std::string> const& states) const {
        return std::count(states.begin(), states.end(), dir.ReadRules()) == 1;
    }

    FaultRow const row;
    TempDir dir;
    CCallRecordingDB* db;
};

TEST_P(EditFaults, AFailingCallLeavesAWholeFileAndNothingElse) {
    std::ptrdiff_t const descriptors = CountEntries("/proc/self/fd");
    for (int occurrence = 1;; ++occurrence) {
        Restore();
        bool done = false;
        bool wasHit = false;
        std::string calls;
        {
            SyscallFault armed(Call::ANY, occurrence, Fault::FAIL);
            done = row.edit(*db);
            wasHit = armed.WasHit();
            calls = armed.Calls();
        }
        SCOPED_TRACE(std::string(row.name) + ", call " + std::to_string(occurrence) + " of " +
                     calls);
        EXPECT_TRUE(HoldsOneOf(row.states));
        EXPECT_EQ(CountEntries(dir.Path("telephony")), 1);
        EXPECT_EQ(CountEntries("/proc/self/fd"), descriptors);
        if (!wasHit) {
            EXPECT_TRUE(done);
            EXPECT_EQ(dir.ReadRules(), row.states.back());
            EXPECT_GE(occurrence, 13); // The open, read and close, and the ten calls of a save.
            break;
        }
    }
}

TEST_P(EditFaults, AKillLeavesAWholeFile) {
    for (int occurrence = 1;; ++occurrence) {
        SCOPED_TRACE(std::string(row.name) + ", call " + std::to_string(occurrence));
        Restore();
        pid_t const child = fork();
        if (child == 0) {
            SyscallFault armed(Call::ANY, occurrence, Fault::KILL);
            row.edit(*db);
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(HoldsOneOf(row.states)) << dir.ReadRules();
        EXPECT_TRUE(db->Reload());
        if (!WIFSIGNALED(status)) {
            EXPECT_EQ(dir.ReadRules(), row.states.back());
            EXPECT_GE(occurrence, 13);
            break;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryEdit, EditFaults, testing::Range(0, static_cast<int>(Rows().size())));

} // namespace
} // namespace CallRecordingUtils
