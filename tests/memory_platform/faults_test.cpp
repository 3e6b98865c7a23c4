// What is left when the platform fails: each of its calls in turn, in every edit and in a load.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include <callrecordingutils/CCallRecordingDB.h>

#include "Memory.h"
#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

std::string const kRules = Section(kA) + Section(kTwinOfA);
std::string const kTwinUpdated = Section(kA) + Section(With(kTwinOfA, 1, "new"));

class Faults : public EditTest {
  protected:
    ~Faults() override { TheMemory().bufferCapacity = 64 * 1024; }

    /// Runs edit on freshly loaded rules while the given call of the platform fails. Returns its
    /// result and its messages.
    std::string Run(Edit const& edit, int failingCall) {
        LoadRules(kRules);
        TheMemory().saves.clear();
        TheMemory().callsToGo = failingCall;
        std::string const result = edit(*db) ? "true " : "false ";
        isHit = failingCall > 0 && TheMemory().callsToGo == 0;
        TheMemory().callsToGo = 0;
        return result + Trace();
    }

    bool isHit = false;
};

struct Row {
    Edit edit;
    std::vector<std::string> outcomes; // In the order of the calls that fail; each stands for many.
    std::string alsoLeft;              // A file that only a failure leaves.
};

TEST_F(Faults, AnyCallOfAnEditFailsItAndLeavesNothingHalfDone) {
    std::string const saving = "Save currently selected call recording rule failed\n";
    std::string const modifying = "false Save call recording rule failed\n";
    std::string const reordering = "false Reordering recording rule failed\n";
    std::string const removing = "false Removing recording rule failed\n";
    CallRecordingRuleParams const rule = With(kA, 0, "new");
    CallRecordingRuleParams changed = rule;
    changed.caller_pattern = changed.description = "changed";
    Row const rows[] = {
        {Add(rule), {"false Adding new call recording rule failed\n", "false " + saving}, kRules},
        {Modify(changed, true),
         {modifying, "true Loading Call Recording configuration failed\n", "false " + saving,
          modifying},
         kTwinUpdated},
        {Delete(rule), {removing}, kRules},
        {Delete("1"), {removing}, kRules},
        {Move("1", true), {reordering, "true " + saving, reordering, "true " + saving}, kRules},
        {SetState("1", false), {"false Set call recording rule state failed\n"}, kRules},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.outcomes.front());
        EXPECT_EQ(Run(row.edit, 0), "true ");
        std::set<std::string> files(TheMemory().saves.begin(), TheMemory().saves.end());
        EXPECT_FALSE(files.empty());
        files.insert({kRules, row.alsoLeft});
        std::vector<std::string> outcomes;
        for (int call = 1; call == 1 || isHit; ++call) {
            std::string const outcome = Run(row.edit, call);
            if (isHit && (outcomes.empty() || outcomes.back() != outcome))
                outcomes.push_back(outcome);
            EXPECT_EQ(files.count(dir.ReadRules()), 1U) << call << ":\n" << dir.ReadRules();
        }
        EXPECT_EQ(outcomes, row.outcomes);
    }
}

TEST_F(Faults, AnyCallOfALoadLeavesTheRulesBeforeIt) {
    std::size_t mostListed = 0;
    for (int call = 1; call == 1 || isHit; ++call) {
        std::string const outcome = Run(&CCallRecordingDB::Reload, call);
        EXPECT_EQ(outcome, isHit ? "false Loading Call Recording configuration failed\n" : "true ");
        EXPECT_GE(db->GetCallRecordingRules().size(), mostListed);
        mostListed = db->GetCallRecordingRules().size();
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
            EXPECT_EQ(rule->record_to, rule->callrecordingrule_id == 0 ? "a" : "t");
    }
    EXPECT_EQ(mostListed, 2U);
}

TEST_F(Faults, AnUnusableBufferLeavesDefaults) {
    for (std::uint32_t const capacity : {0U, 0xFFFFFFFFU}) {
        LoadRules(kRules);
        TheMemory().bufferCapacity = capacity;
        EXPECT_TRUE(db->Reload() && db->DeleteRule("0") && db->ReOrderRule("0", false));
        TheMemory().bufferCapacity = 64 * 1024;
        EXPECT_EQ(Trace(), "");
        EXPECT_EQ(dir.ReadRules(), kRules);
        EXPECT_EQ(db->GetCallRecordingRules().size(), 2U);
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules()) {
            EXPECT_EQ(rule->callrecordingrule_id, -1);
            EXPECT_EQ(rule->caller_pattern + rule->called_pattern + rule->record_to, "");
            EXPECT_EQ(rule->caller_call_type, CALL_TYPE_ANY);
            EXPECT_EQ(rule->recording_rule_state, RULE_ENABLED);
        }
    }
}

} // namespace
} // namespace CallRecordingUtils
