// What is left when the platform fails: each of its calls in turn, in every edit and in a load.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <callrecordingutils/CCallRecordingDB.h>

#include "Memory.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

std::string Section(char const* id, char const* caller, char const* called, char const* recordTo) {
    return std::string("{\ncallrecordingrule_id=") + id + "\ncaller_pattern=" + caller +
           "\ncaller_call_type=0\ncalled_pattern=" + called +
           "\ncalled_call_type=0\ncall_recording_type=0\nrecord_to=" + recordTo +
           "\nrecording_duration=\ndescription=\nrecording_rule_state=1\n}\n";
}

std::string const kRules = Section("0", "1", "2", "a") + Section("1", "2", "1", "b");
std::string const kTwinUpdated = Section("0", "1", "2", "a") + Section("1", "2", "1", "new");

using Operation = std::function<bool()>;

class Faults : public testing::Test {
  protected:
    Faults() {
        dir.UseAsConfiguration();
        setenv("QUVA_LOG_PATH", dir.Path("").c_str(), 1);
        setenv("QUVA_LOG_LEVEL", "0", 1);
        db = CCallRecordingDB::GetInstance(false, true);
    }
    ~Faults() override {
        MemoryPlatform::SetBufferCapacity(64 * 1024);
        CCallRecordingDB::SetMode(true);
        CCallRecordingDB::CloseInstance();
    }

    /// Runs operation on freshly loaded rules while the given call of the platform fails. Returns
    /// its result and its messages.
    std::string Run(Operation const& operation, int failingCall) {
        dir.WriteRules(kRules);
        EXPECT_TRUE(db->Reload());
        dir.Write("callrecording.log", "");
        MemoryPlatform::FailCall(failingCall);
        std::string outcome = operation() ? "true" : "false";
        isHit = MemoryPlatform::WasHit();
        saves = MemoryPlatform::Saves();
        MemoryPlatform::FailCall(0);
        std::string const trace = dir.Read("callrecording.log");
        for (std::size_t at = 0; (at = trace.find("\t.", at)) != std::string::npos; ++at)
            outcome += " " + trace.substr(at + 6, trace.find('\n', at) - at - 6);
        return outcome;
    }

    TempDir dir;
    CCallRecordingDB* db;
    bool isHit = false;
    std::vector<std::string> saves;
};

struct Row {
    Operation edit;
    std::vector<std::string> outcomes; // In the order of the calls that fail; each stands for many.
    std::string alsoLeft;              // A file that only a failure leaves.
};

TEST_F(Faults, AnyCallOfAnEditFailsItAndLeavesNothingHalfDone) {
    std::string const saving = "Save currently selected call recording rule failed";
    std::string const modifying = "false Save call recording rule failed";
    std::string const reordering = "false Reordering recording rule failed";
    CallRecordingRuleParams rule;
    rule.callrecordingrule_id = 0;
    rule.caller_pattern = "1";
    rule.called_pattern = "2";
    rule.caller_call_type = rule.called_call_type = CALL_TYPE_NUMBER;
    rule.record_to = "new";
    CallRecordingRuleParams changed = rule;
    changed.caller_pattern = changed.description = "changed";
    Row const rows[] = {
        {[&] { return db->AddRule(std::make_unique<CallRecordingRuleParams>(rule).get()); },
         {"false Adding new call recording rule failed", "false " + saving},
         kRules},
        {[&] { return db->ModifyRule(&changed, true); },
         {modifying, "true Loading Call Recording configuration failed", "false " + saving,
          modifying},
         kTwinUpdated},
        {[&] { return db->DeleteRule(&rule); }, {"false Removing recording rule failed"}, kRules},
        {[&] { return db->DeleteRule("1"); }, {"false Removing recording rule failed"}, kRules},
        {[&] { return db->ReOrderRule("1", true); },
         {reordering, "true " + saving, reordering, "true " + saving},
         kRules},
        {[&] { return db->SetRuleState("1", false); },
         {"false Set call recording rule state failed"},
         kRules},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.outcomes.front());
        EXPECT_EQ(Run(row.edit, 0), "true");
        std::set<std::string> files(saves.begin(), saves.end());
        EXPECT_FALSE(files.empty());
        files.insert({kRules, row.alsoLeft});
        std::vector<std::string> outcomes;
        for (int call = 1;; ++call) {
            std::string const outcome = Run(row.edit, call);
            if (!isHit)
                break;
            if (outcomes.empty() || outcomes.back() != outcome)
                outcomes.push_back(outcome);
            EXPECT_EQ(files.count(dir.ReadRules()), 1U) << call << ":\n" << dir.ReadRules();
        }
        EXPECT_EQ(outcomes, row.outcomes);
    }
}

TEST_F(Faults, AnyCallOfALoadLeavesTheRulesBeforeIt) {
    for (bool const advanced : {true, false}) {
        CCallRecordingDB::SetMode(advanced);
        std::size_t mostListed = 0;
        for (int call = 1;; ++call) {
            std::string const outcome = Run([this] { return db->Reload(); }, call);
            if (!isHit)
                break;
            EXPECT_EQ(outcome, "false Loading Call Recording configuration failed");
            EXPECT_GE(db->GetCallRecordingRules().size(), mostListed);
            mostListed = db->GetCallRecordingRules().size();
            for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
                EXPECT_EQ(rule->record_to, rule->callrecordingrule_id == 0 ? "a" : "b");
        }
        EXPECT_EQ(mostListed, advanced ? 2U : 0U);
    }
}

TEST_F(Faults, AnUnusableBufferLeavesDefaults) {
    for (std::uint32_t const capacity : {0U, 0xFFFFFFFFU}) {
        std::string const outcome = Run(
            [&] {
                MemoryPlatform::SetBufferCapacity(capacity);
                return db->Reload() && db->DeleteRule("0") && db->ReOrderRule("0", false);
            },
            0);
        MemoryPlatform::SetBufferCapacity(64 * 1024);
        EXPECT_EQ(outcome, "true");
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
