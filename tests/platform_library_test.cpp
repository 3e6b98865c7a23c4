// The library on any platform: what it edits it reads again, and decides by.

#include <gtest/gtest.h>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

struct PlatformLibrary : DatabaseTest {
    std::string Rules() {
        std::string rules;
        EXPECT_TRUE(db->Reload());
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
            rules += std::to_string(rule->callrecordingrule_id) + rule->description + " ";
        return rules;
    }
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, true);
};

TEST_F(PlatformLibrary, EditsTheRuleFile) {
    EXPECT_EQ(Rules(), "");
    for (char const* const name : {"a", "b", "c", "d"}) {
        CallRecordingRuleParams rule = With(kB, 0);
        rule.description = name;
        EXPECT_TRUE(db->AddRule(&rule));
    }
    EXPECT_EQ(Rules(), "0a 1b 2c 3d ");
    EXPECT_TRUE(db->MoveRule("3", 0));
    EXPECT_EQ(Rules(), "0d 1a 2b 3c ");
    EXPECT_TRUE(db->ReOrderRule("1", false));
    EXPECT_EQ(Rules(), "0d 1b 2a 3c ");
    EXPECT_TRUE(db->DeleteRule("2"));
    EXPECT_EQ(Rules(), "0d 1b 3c ");
    CallRecordingRuleParams changed = With(kB, 1);
    changed.description = "#{=}";
    EXPECT_TRUE(db->ModifyRule(&changed, false));
    EXPECT_EQ(Rules(), "0d 1#{=} 3c ");
    EXPECT_TRUE(db->DeleteRule(&changed));
    EXPECT_EQ(Rules(), "0d 3c ");
}

TEST_F(PlatformLibrary, DecidesByTheSidesOfACall) {
    CallRecordingRuleParams rule =
        Rule(0, "2<00-99>", CALL_TYPE_NUMBER, "bob@pbx:5060", CALL_TYPE_SIP);
    EXPECT_TRUE(db->AddRule(&rule));
    CCallRecordingAssistant assistant(false);
    ASSERT_TRUE(assistant.ReloadCallRecordingRules());
    for (std::string const port : {"5060", "5061"}) {
        CallParams caller, called;
        caller.user = "242";
        called.user = "bob";
        called.host = "pbx";
        called.port = port;
        CallRecordingRuleParams taken;
        EXPECT_EQ(assistant.IsCallRecordingAllowed(caller, CALL_TYPE_NUMBER, called, CALL_TYPE_SIP,
                                                   &taken),
                  port == "5060");
    }
    EXPECT_TRUE(db->SetRuleState("0", false));
    CallParams any;
    EXPECT_FALSE(
        assistant.IsCallRecordingAllowed(any, CALL_TYPE_NUMBER, any, CALL_TYPE_NUMBER, nullptr));
}

} // namespace
} // namespace CallRecordingUtils
