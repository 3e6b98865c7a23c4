// The library on any platform: what it edits it reads again, and decides by.

#include <gtest/gtest.h>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

using PlatformLibrary = DatabaseTest;

TEST_F(PlatformLibrary, EditsTheRuleFileAndDecidesByIt) {
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, true);
    CCallRecordingAssistant assistant(false);
    // Returns the identifiers and descriptions that the file has now.
    auto const rules = [&] {
        std::string texts;
        EXPECT_TRUE(assistant.ReloadCallRecordingRules());
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
            texts += std::to_string(rule->callrecordingrule_id) + rule->description + " ";
        return texts;
    };
    CallRecordingRuleParams rule =
        Rule(0, "2<00-99>", CALL_TYPE_NUMBER, "bob@pbx:5060", CALL_TYPE_SIP);
    EXPECT_EQ(rules(), "");
    for (char const* const name : {"a", "b", "c", "d"}) {
        rule.description = name;
        EXPECT_TRUE(db->AddRule(&rule));
    }
    EXPECT_EQ(rules(), "0a 1b 2c 3d ");
    EXPECT_TRUE(db->MoveRule("3", 0));
    EXPECT_EQ(rules(), "0d 1a 2b 3c ");
    EXPECT_TRUE(db->ReOrderRule("1", false));
    EXPECT_EQ(rules(), "0d 1b 2a 3c ");
    EXPECT_TRUE(db->DeleteRule("2"));
    rule.callrecordingrule_id = 1;
    rule.description = "#{=}";
    EXPECT_TRUE(db->ModifyRule(&rule, false));
    EXPECT_TRUE(db->SetRuleState("0", false));
    EXPECT_EQ(rules(), "0d 1#{=} 3c ");
    for (std::string const port : {"5060", "5061"}) {
        CallParams caller, called;
        caller.user = "242";
        called.user = "bob";
        called.host = "pbx";
        called.port = port;
        CallRecordingRuleParams taken;
        bool const isTaken = assistant.IsCallRecordingAllowed(caller, CALL_TYPE_NUMBER, called,
                                                              CALL_TYPE_SIP, &taken);
        EXPECT_EQ(isTaken ? taken.description : "none", port == "5060" ? "#{=}" : "none");
    }
    EXPECT_TRUE(db->DeleteRule(&rule));
    EXPECT_EQ(rules(), "0d 3c ");
}

} // namespace
} // namespace CallRecordingUtils
