/// @file
/// Tests that no failing call and no kill during a save costs the rule file.

#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/RuleFile.h"
#include "support/SyscallFaults.h"
#include "support/TempDir.h"

namespace {

std::string const OLD = "# kept\n{\nname=old\n}\n";
std::string const NEW = "# kept\n{\nname=new, and longer\n}\n";

std::ptrdiff_t CountEntries(std::string const& directory) {
    return std::distance(std::filesystem::directory_iterator(directory), {});
}

std::ptrdiff_t CountDescriptors() {
    return CountEntries("/proc/self/fd");
}

class SaveFaultTest : public ::testing::Test {
  protected:
    SaveFaultTest() { Restore(); }

    void Restore() {
        mDir.Write("rules", OLD);
        // Not root has no other owner to take over.
        ASSERT_TRUE(geteuid() != 0 || chown(mDir.Path("rules").c_str(), 1, 1) == 0);
    }

    /// Changes the file with the given fault during the save, and returns whether that threw.
    bool SaveThrows(Call call, int occurrence, Fault fault, int error = EIO) {
        RuleFile file(mDir.Path("rules"));
        file.GotoNextSection();
        file.SetSectionEntry("name", "new, and longer");
        SyscallFault armed(call, occurrence, fault, error);
        bool hasThrown = false;
        try {
            file.Save(true, nullptr);
        } catch (std::exception const& exception) {
            hasThrown = true;
            EXPECT_NE(std::string(exception.what()).find(mDir.Path()), std::string::npos);
        }
        mWasHit = armed.WasHit();
        mCalls = armed.Calls();
        return hasThrown;
    }

    TempDir mDir;
    bool mWasHit = false;
    std::string mCalls;
};

// What survives a loss of power is decided by this order: the new file is durable before it gets
// the name, and the directory afterwards.
TEST_F(SaveFaultTest, TakesTheStepsInOrder) {
    EXPECT_FALSE(SaveThrows(Call::ANY, 0, Fault::FAIL));
    std::string const owner = geteuid() == 0 ? "fchown " : "";
    EXPECT_EQ(mCalls, "open open " + owner + "fchmod write fsync close rename fsync close ");
}

TEST_F(SaveFaultTest, AnyFailingCallLeavesTheOldFileAndNothingElse) {
    std::ptrdiff_t const descriptors = CountDescriptors();
    for (int occurrence = 1;; ++occurrence) {
        Restore();
        bool const hasThrown = SaveThrows(Call::ANY, occurrence, Fault::FAIL);
        SCOPED_TRACE("call " + std::to_string(occurrence) + " of " + mCalls);
        EXPECT_EQ(CountEntries(mDir.Path()), 1);
        EXPECT_EQ(CountDescriptors(), descriptors);
        if (!mWasHit) {
            EXPECT_GE(occurrence, 10);
            EXPECT_EQ(mDir.Read("rules"), NEW);
            break;
        }
        // Behind the rename the directory is made durable; its closing decides nothing any more.
        bool const isReplaced = mCalls.find("rename fsync") != std::string::npos;
        bool const isDurable = mCalls.find("rename fsync close") != std::string::npos;
        EXPECT_EQ(mDir.Read("rules"), isReplaced ? NEW : OLD);
        EXPECT_EQ(hasThrown, !isDurable);
    }
}

TEST_F(SaveFaultTest, AKillAtAnyCallLeavesTheOldFileOrTheNewOne) {
    for (int occurrence = 1;; ++occurrence) {
        SCOPED_TRACE(occurrence);
        Restore();
        pid_t const child = fork();
        if (child == 0) {
            SaveThrows(Call::ANY, occurrence, Fault::KILL);
            _exit(0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        std::string const content = mDir.Read("rules");
        EXPECT_TRUE(content == OLD || content == NEW) << content;
        if (!WIFSIGNALED(status)) {
            EXPECT_GE(occurrence, 10);
            break;
        }
    }
    // What the killed ones left behind is in nobody's way.
    Restore();
    EXPECT_FALSE(SaveThrows(Call::ANY, 0, Fault::FAIL));
    EXPECT_EQ(mDir.Read("rules"), NEW);
}

TEST_F(SaveFaultTest, GoesOnWhereThatIsRight) {
    struct {
        char const* name;
        Call call;
        int occurrence;
        Fault fault;
        int error;
        bool throws;
    } const rows[] = {
        {"half a write", Call::WRITE, 1, Fault::CUT, 0, false},
        {"a write of nothing", Call::WRITE, 1, Fault::NOTHING, 0, true},
        {"interrupted write", Call::WRITE, 1, Fault::INTERRUPT, 0, false},
        {"interrupted fsync", Call::FSYNC, 1, Fault::INTERRUPT, 0, false},
        {"interrupted close", Call::CLOSE, 1, Fault::INTERRUPT, 0, false},
        {"name taken", Call::OPEN, 2, Fault::FAIL, EEXIST, false},
        {"directories cannot be synced here", Call::FSYNC, 2, Fault::FAIL, EINVAL, false},
        {"files cannot be synced here", Call::FSYNC, 1, Fault::FAIL, EINVAL, true},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        Restore();
        EXPECT_EQ(SaveThrows(row.call, row.occurrence, row.fault, row.error), row.throws);
        EXPECT_TRUE(mWasHit);
        EXPECT_EQ(mDir.Read("rules"), row.throws ? OLD : NEW);
    }
}

// Taking a file that cannot be read for an empty one would end in overwriting it.
TEST_F(SaveFaultTest, AFailingReadIsNoEmptyFile) {
    for (Call const call : {Call::OPEN, Call::READ}) {
        SyscallFault armed(call, 1, Fault::FAIL);
        EXPECT_THROW(RuleFile(mDir.Path("rules")), std::exception);
    }
    SyscallFault armed(Call::READ, 1, Fault::INTERRUPT);
    EXPECT_EQ(RuleFile(mDir.Path("rules")).GotoNextSection(), 1);
    EXPECT_TRUE(armed.WasHit());
}

} // namespace
