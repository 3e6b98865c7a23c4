// The edits of the rule file: results, memory, file bytes and trace of each.

#include <gtest/gtest.h>

#include <string>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

using namespace std::string_literals;

using Edits = EditTest;

struct EditRow {
    char const* name;
    std::string before;
    Edit edit;
    std::string after;
    bool result = true;
};

TEST_F(Edits, ChangeJustWhatTheySay) {
    std::string const a = Section(kA), t = Section(kTwinOfA), b = Section(kB), c = Section(kC);
    CallRecordingRuleParams const odd =
        Rule(0, " <1-2>#", CALL_TYPE_ANY, "=", CALL_TYPE_ANY, " { } ");
    std::string const comments =
        "# top\n\n{\n # own words\nx=1\ncallrecordingrule_id=4\n}\n\n# end";
    EditRow const rows[] = {
        {"add to nothing", "", Add(With(kB, 99)), Section(With(kB, 0))},
        {"add takes the greatest identifier", a + b + c, Add(kA), a + b + c + Section(With(kA, 8))},
        {"add above negative identifiers", Section(kA, "-5"), Add(kA), Section(kA, "-5") + a},
        {"add with odd texts", b, Add(odd), b + Section(With(odd, 8))},
        {"add behind comments", comments, Add(kA), comments + "\n" + Section(With(kA, 5))},
        {"add with no identifier left", Section(kA, "2147483647"), Add(kA),
         Section(kA, "2147483647"), false},

        {"modify first", a + b, Modify(With(kC, 0), false), Section(With(kC, 0)) + b},
        {"modify last", a + b, Modify(With(kC, 7), false), a + Section(With(kC, 7))},
        {"modify keeps foreign lines", comments,
         Modify(Rule(4, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP), false),
         "# top\n\n{\n # own words\nx=1\n" +
             Section(Rule(4, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP)).substr(2, 23) +
             Section(Rule(4, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP)).substr(25) + "\n# end"},
        {"modify finds numbers", Section(kA, " 07x") + a, Modify(With(kC, 7), false),
         Section(With(kC, 7)) + a},
        {"modify nothing", a, Modify(With(kC, 5), false), a},
        {"modify nothing, no twin is looked for", a + Section(With(CallRecordingRuleParams(), 2)),
         Modify(With(kC, 5), true), a + Section(With(CallRecordingRuleParams(), 2))},
        {"modify with the twin behind", b + a + t, Modify(Disabled(With(kA, 0, "new")), true),
         b + Section(Disabled(With(kA, 0, "new"))) + Section(Disabled(With(kTwinOfA, 1, "new")))},
        {"modify with the twin before", t + a, Modify(With(kC, 0, "new"), true),
         Section(With(kTwinOfA, 1, "new")) + Section(With(kC, 0, "new"))},
        {"only the first twin", t + a + t, Modify(With(kA, 0, "n"), true),
         Section(With(kTwinOfA, 1, "n")) + Section(With(kA, 0, "n")) + t},
        {"a rule that mirrors itself", c + b, Modify(With(kC, 3, "n"), true),
         Section(With(kC, 3, "n")) + b},

        {"delete a pair", b + a + t + c, Delete(kA), b + c},
        {"delete a pair by the other", b + a + t + c, Delete(kTwinOfA), b + c},
        {"delete twins of no rule", t + b + t, Delete(With(kA, 55)), b},
        {"delete all twins before, one behind", t + t + a + t, Delete(kA), t},
        {"delete no more than one behind", a + t + t, Delete(kA), t},
        {"delete compares identifiers of its own side", a + Section(With(kA, 9)),
         Delete(With(kA, 9)), a},
        {"delete a self mirrored rule", c + Section(With(kC, 4)), Delete(kC), Section(With(kC, 4))},
        {"delete nothing", a + t, Delete(kB), a + t},
        {"delete keeps comments", "# 1\n" + a + "# 2\n" + b + "# 3\n", Delete(kB),
         "# 1\n" + a + "# 2\n# 3\n"},
        {"delete a section without keys", "{\n}\n" + a,
         Delete(Rule(0, "", CALL_TYPE_NUMBER, "", CALL_TYPE_NUMBER)), a},

        {"delete by text", a + t + b, Delete("1"), a + b},
        {"delete by text compares text", Section(kA, "05") + Section(kA, "5"), Delete("5"),
         Section(kA, "05")},
        {"delete by the text of no number", Section(kA, "abc"), Delete("abc"), Section(kA, "abc")},
        {"delete by unknown text", a, Delete("00"), a},

        {"move the first up", a + b, Move("0", true), a + b},
        {"move the last down", a + b, Move("7", false), a + b},
        {"move up", a + b + c, Move("7", true), Section(With(kB, 0)) + Section(With(kA, 7)) + c},
        {"move down", a + b + c, Move("7", false), a + Section(With(kC, 7)) + Section(With(kB, 3))},
        {"move no number", a + b, Move("-1", true), a + b},
        {"move compares text", a + b, Move("07", true), a + b},
        {"move the only one", a, Move("0", true), a},

        {"disable", a + b, SetState("7", false), a + Section(Disabled(kB))},
        {"enable", Section(Disabled(kA)) + b, SetState("0", true), a + b},
        {"disable by number", Section(kB, "007"), SetState("07", false),
         Section(Disabled(kB), "007")},
        {"disable adds a missing key", "{\ncallrecordingrule_id=1\n}", SetState("1", false),
         "{\ncallrecordingrule_id=1\nrecording_rule_state=0\n}"},
        {"disable nothing", a, SetState("9", false), a},
        {"disable no number", a, SetState("0x", false), a, false},
    };
    for (EditRow const& row : rows) {
        LoadRules(row.before);
        EXPECT_EQ(row.edit(*db), row.result) << row.name;
        EXPECT_EQ(dir.ReadRules(), row.after) << row.name;
    }
}

TEST_F(Edits, MovesAndStatesShowInMemory) {
    LoadRules(Section(kA) + Section(kB) + Section(kC));
    EXPECT_TRUE(db->ReOrderRule("7", true));
    CallRecordingRuleParams* const moved = db->GetSelectedRule("0");
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(moved->record_to, "b");
    EXPECT_EQ(db->GetCallRecordingRules().front()->callrecordingrule_id, 7);

    // The list no longer mirrors the file: another move of either would tear a rule.
    std::string const file = dir.ReadRules();
    EXPECT_TRUE(db->ReOrderRule("7", false));
    EXPECT_TRUE(db->ReOrderRule("3", true));
    EXPECT_EQ(dir.ReadRules(), file);
    EXPECT_EQ(db->GetSelectedRule("0"), moved);
    EXPECT_TRUE(db->Reload());
    EXPECT_TRUE(db->ReOrderRule("0", false));
    EXPECT_EQ(dir.ReadRules(), Section(kA) + Section(kB) + Section(kC));

    CallParams const five{"5", {}, "", ""};
    CCallRecordingAssistant assistant(false);
    auto const decide = [&] {
        return assistant.IsCallRecordingAllowed(five, CALL_TYPE_NUMBER, five, CALL_TYPE_NUMBER,
                                                nullptr);
    };
    EXPECT_TRUE(decide());
    EXPECT_TRUE(db->SetRuleState("3", false));
    EXPECT_FALSE(decide());
    db->GetSelectedRule("3")->recording_rule_state = RULE_NOT_SHOWABLE;
    EXPECT_TRUE(db->SetRuleState("3", true));
    EXPECT_TRUE(decide());
    EXPECT_EQ(Trace(), "");
}

TEST_F(Edits, NeedALoadedDatabaseAndARecord) {
    dir.WriteRules(Section(kA));
    CallRecordingRuleParams rule = With(kA, 0, "new");
    EXPECT_FALSE(db->AddRule(&rule));
    EXPECT_TRUE(db->ModifyRule(&rule, true));
    EXPECT_TRUE(db->SaveSelectedRule(nullptr, &rule));
    EXPECT_TRUE(db->GetCurrentSection(nullptr, rule));
    EXPECT_EQ(rule.callrecordingrule_id, 0);
    EXPECT_TRUE(db->Reload());
    EXPECT_FALSE(db->AddRule(nullptr));
    EXPECT_TRUE(db->ModifyRule(nullptr, true));
    EXPECT_EQ(dir.ReadRules(), Section(kA));
    EXPECT_EQ(Trace(), "");
}

TEST_F(Edits, LookUpByNumberAndByPatterns) {
    EXPECT_EQ(db->GetSelectedRule("0"), nullptr);
    LoadRules(Section(kB) + Section(kA) + Section(With(kC, 7)));
    EXPECT_EQ(db->GetSelectedRule("abc")->record_to, "a");
    EXPECT_EQ(db->GetSelectedRule("7abc")->record_to, "b");
    EXPECT_EQ(db->GetSelectedRule("8"), nullptr);
    EXPECT_TRUE(db->Find("100", "*"));
    EXPECT_FALSE(db->Find("*", "100"));
    EXPECT_FALSE(db->Find("100", "2*"));
}

TEST_F(Edits, TextsThatAreNoLineFailAndChangeNothing) {
    std::string const file = Section(kA) + Section(kB);
    for (std::string const& text : {"a\nb"s, "a\r"s, "a\0b"s, std::string(65536, 'x')}) {
        for (auto const field :
             {&CallRecordingRuleParams::caller_pattern, &CallRecordingRuleParams::called_pattern,
              &CallRecordingRuleParams::record_to, &CallRecordingRuleParams::recording_duration,
              &CallRecordingRuleParams::description}) {
            LoadRules(file);
            CallRecordingRuleParams rule = kA;
            rule.*field = text;
            EXPECT_FALSE(db->AddRule(&rule));
            rule.callrecordingrule_id = 0;
            EXPECT_FALSE(db->ModifyRule(&rule, false));
            db->GetSelectedRule("7")->*field = text;
            EXPECT_TRUE(db->ReOrderRule("0", false));
            EXPECT_TRUE(db->ReOrderRule("0", true));
            std::string const failed = "Save currently selected call recording rule failed\n";
            EXPECT_EQ(Trace(), failed + failed + failed);
            EXPECT_EQ(dir.ReadRules(), file);
        }
    }
    // The rewrite fails, the twin is still brought up to date, and no half of the rewrite is saved.
    LoadRules(Section(kA) + Section(kTwinOfA));
    CallRecordingRuleParams rule = With(kA, 0, "new");
    rule.description = "a\nb";
    EXPECT_FALSE(db->ModifyRule(&rule, true));
    EXPECT_EQ(dir.ReadRules(), Section(kA) + Section(With(kTwinOfA, 1, "new")));
}

TEST_F(Edits, TextsComeBackAsTheyWereSaved) {
    LoadRules("");
    for (char const* text : {" a ", "\t", "=", "a=b=c", "#", " # x", "{", "}", "\xff\x80", ""}) {
        CallRecordingRuleParams rule = Rule(0, text, CALL_TYPE_SIP, text, CALL_TYPE_NUMBER2, text);
        rule.recording_duration = rule.description = text;
        EXPECT_TRUE(db->AddRule(&rule));
        EXPECT_TRUE(db->Reload());
        EXPECT_EQ(Section(*db->GetCallRecordingRules().back()), Section(rule));
    }
}

TEST_F(Edits, AFileThatCannotBeReadIsNeverWritten) {
    std::string const broken = Section(kA) + "{\nhalf a section=";
    for (Edit const& edit : {Add(kA), Modify(kA, true), Delete(kA), Delete("0"), Move("0", true),
                             SetState("0", false)}) {
        LoadRules(Section(kA));
        dir.WriteRules(broken);
        EXPECT_FALSE(edit(*db));
        EXPECT_NE(Trace(), "");
        EXPECT_EQ(dir.ReadRules(), broken);
    }
}

} // namespace
} // namespace CallRecordingUtils
