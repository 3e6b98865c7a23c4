// What the library does if the buffer that values are read into cannot be used:
// tests/second_platform can say so.

#include <gtest/gtest.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

TEST_F(EditTest, AnUnusableBufferLeavesDefaultsAndTheFile) {
    std::string const file = Section(kA) + Section(With(kB, 7));
    CallRecordingRuleParams const empty = Rule(0, "", CALL_TYPE_NUMBER, "", CALL_TYPE_NUMBER);
    for (char const* const capacity : {"0", "4294967295"}) {
        setenv("BUFFER_CAPACITY", capacity, 1);
        LoadRules(file);
        EXPECT_TRUE(db->DeleteRule("7") && db->ReOrderRule("7", false) && db->DeleteRule(&empty));
        EXPECT_TRUE(db->ModifyRule(&kA, true)); // No section has its identifier, 0.
        EXPECT_FALSE(db->MoveRule("7", 0));
        EXPECT_EQ(dir.ReadRules(), file);
        CallRecordingRuleParams added = kC;
        EXPECT_TRUE(db->AddRule(&added));
        EXPECT_EQ(dir.ReadRules(), file + Section(With(kC, 1)));
        EXPECT_EQ(db->GetCallRecordingRules().size(), 2U);
        for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
            EXPECT_EQ(Section(*rule), Section(Rule(-1, "", CALL_TYPE_ANY, "", CALL_TYPE_ANY)));
        EXPECT_EQ(Trace(), "Reordering recording rule failed\n");
    }
}

TEST_F(EditTest, WhatFitsTheFileIsNotTheBuffersToSay) {
    setenv("BUFFER_CAPACITY", "2", 1);
    LoadRules("");
    CallRecordingRuleParams added = kC;
    added.description = "longer than the buffer";
    EXPECT_TRUE(db->AddRule(&added));
    EXPECT_EQ(dir.ReadRules(), Section(added));
}

} // namespace
} // namespace CallRecordingUtils
