// The edits of the rule file: the result of each, and what it does to memory, file and trace log.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <locale>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pthread.h>
#include <unistd.h>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>
#include <callrecordingutils/CRuleFileLock.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"
#include "support/FileSizeLimit.h"

namespace CallRecordingUtils {
namespace {

using namespace std::string_literals;

using Edits = EditTest;

TEST_F(Edits, ChangeJustWhatTheySay) {
    std::string const a = Section(kA), t = Section(kTwinOfA), b = Section(kB), c = Section(kC);
    CallRecordingRuleParams const odd =
        Rule(0, " <1-2>#", CALL_TYPE_ANY, "=", CALL_TYPE_ANY, " { } ");
    std::string const comments =
        "# top\n\n{\n # own words\nx=1\ncallrecordingrule_id=4\n}\n\n# end";
    std::string const commented = Section(Rule(4, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP));
    struct {
        std::string before;
        Edit edit;
        std::string after;
        bool result = true;
    } const rows[] = {
        {"", Add(With(kB, 99)), Section(With(kB, 0))},
        {a + b + c, Add(kA),
         a + b + c + Section(With(kA, 8))}, // One more than the greatest identifier.
        {Section(kA, "-5"), Add(kA), Section(kA, "-5") + a},
        {b, Add(odd), b + Section(With(odd, 8))},
        {comments, Add(kA), comments + "\n" + Section(With(kA, 5))},
        {Section(kA, "2147483647"), Add(kA), Section(kA, "2147483647"), false},

        {a + b, Modify(With(kC, 7), false), a + Section(With(kC, 7))},
        {comments, Modify(Rule(4, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP), false),
         "# top\n\n{\n # own words\nx=1\n" + commented.substr(2) + "\n# end"},
        {Section(kA, " 07x") + a, Modify(With(kC, 7), false), Section(With(kC, 7)) + a},
        // Without the rule no twin is searched for.
        {a + Section(With(CallRecordingRuleParams(), 2)), Modify(With(kC, 5), true),
         a + Section(With(CallRecordingRuleParams(), 2))},
        {b + a + t + t, Modify(Disabled(With(kA, 0, "n")), true),
         b + Section(Disabled(With(kA, 0, "n"))) + Section(Disabled(With(kTwinOfA, 1, "n"))) + t},
        {t + a, Modify(With(kC, 0, "n"), true),
         Section(With(kTwinOfA, 1, "n")) + Section(With(kC, 0, "n"))},
        {c + b, Modify(With(kC, 3, "n"), true), Section(With(kC, 3, "n")) + b},

        {b + a + t + c, Delete(kA), b + c},
        {t + b + t, Delete(With(kA, 55)), b},
        {t + t + a + t, Delete(kA), t}, // All twins before the rule, or one after it.
        {a + t + t, Delete(kA), t},
        {a + Section(With(kA, 9)), Delete(With(kA, 9)), a},
        {c + Section(With(kC, 4)), Delete(kC), Section(With(kC, 4))},
        {"# 1\n" + a + "# 2\n" + b + "# 3\n", Delete(kB), "# 1\n" + a + "# 2\n# 3\n"},
        {"{\n}\n" + a, Delete(Rule(0, "", CALL_TYPE_NUMBER, "", CALL_TYPE_NUMBER)), a},

        {a + t + b, Delete("1"), a + b},
        {Section(kA, "05") + Section(kA, "5"), Delete("5"), Section(kA, "05")},
        {Section(kA, "abc"), Delete("abc"), Section(kA, "abc")},

        {a + b, Move("0", true), a + b},
        {a + b, Move("7", false), a + b},
        {a + b + c, Move("7", true), Section(With(kB, 0)) + Section(With(kA, 7)) + c},
        {a + b + c, Move("7", false), a + Section(With(kC, 7)) + Section(With(kB, 3))},
        {a + b, Move("-1", true), a + b},
        // Every rule in between takes over the identifier of its new place; comments stay.
        {a + "#1\n" + t + b + "#2\n" + c, MoveTo("3", 1),
         a + "#1\n" + Section(With(kC, 1)) + Section(With(kTwinOfA, 7)) + "#2\n" +
             Section(With(kB, 3))},
        {a + t + b, MoveTo("0", 2),
         Section(With(kTwinOfA, 0)) + Section(With(kB, 1)) + Section(With(kA, 7))},
        {Section(kA, "0") + "{\ncallrecordingrule_id=1\ncaller_call_type=x\n}", MoveTo("1", 1),
         a + "{\ncallrecordingrule_id=1\ncaller_call_type=x\n}"},
        {a + b, MoveTo("7", 2), a + b, false},
        {a + b, MoveTo("1", 0), a + b, false},
        {a + Section(kB, "x"), MoveTo("x", 0), a + Section(kB, "x"), false},

        {a + b, SetState("7", false), a + Section(Disabled(kB))},
        {Section(Disabled(kA)) + b, SetState("0", true), a + b},
        {Section(kB, "007"), SetState("07", false), Section(Disabled(kB), "007")},
        {"{\ncallrecordingrule_id=1\n}", SetState("1", false),
         "{\ncallrecordingrule_id=1\nrecording_rule_state=0\n}"},
        {a, SetState("9", false), a},
        {a, SetState("0x", false), a, false},
    };
    int number = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE("row " + std::to_string(++number));
        LoadRules(row.before);
        EXPECT_EQ(row.edit(*db), row.result);
        EXPECT_EQ(dir.ReadRules(), row.after);
        EXPECT_EQ(db->GetLastFailure().empty(), row.result);
    }
}

/// The edits of a list of rules, as plainly as can be. Each returns what the database's edit
/// returns.
struct PlainRules {
    std::vector<CallRecordingRuleParams> rules;

    using Place = std::vector<CallRecordingRuleParams>::iterator;
    Place WithId(int id) {
        return std::find_if(
            rules.begin(), rules.end(),
            [id](auto& rule) { return rule.callrecordingrule_id == id; });
    }
    static auto Sides(CallRecordingRuleParams const& rule) {
        return std::tuple(rule.caller_pattern, rule.caller_call_type, rule.called_pattern,
                          rule.called_call_type);
    }
    static auto Crossed(CallRecordingRuleParams const& rule) {
        return std::tuple(rule.called_pattern, rule.called_call_type, rule.caller_pattern,
                          rule.caller_call_type);
    }

    bool Add(CallRecordingRuleParams rule) {
        rule.callrecordingrule_id = 0;
        for (auto const& other : rules)
            rule.callrecordingrule_id =
                std::max(rule.callrecordingrule_id, other.callrecordingrule_id + 1);
        rules.push_back(rule);
        return true;
    }
    bool Modify(CallRecordingRuleParams const& rule, bool twin) {
        Place const at = WithId(rule.callrecordingrule_id);
        if (at == rules.end())
            return true;
        CallRecordingRuleParams const previous = std::exchange(*at, rule);
        for (auto& other : rules)
            if (twin && Sides(other) == Crossed(previous)) {
                other.record_to = rule.record_to;
                other.recording_duration = rule.recording_duration;
                other.call_recording_type = rule.call_recording_type;
                other.recording_rule_state = rule.recording_rule_state;
                break;
            }
        return true;
    }
    bool Delete(CallRecordingRuleParams const& rule) {
        bool isOwnDeleted = false, isTwinDeleted = false;
        for (Place at = rules.begin(); at != rules.end() && !(isOwnDeleted && isTwinDeleted);) {
            bool const isOwn =
                Sides(*at) == Sides(rule) && at->callrecordingrule_id == rule.callrecordingrule_id;
            bool const isTwin = Sides(*at) == Crossed(rule);
            isOwnDeleted = isOwnDeleted || isOwn;
            isTwinDeleted = isTwinDeleted || isTwin;
            at = isOwn || isTwin ? rules.erase(at) : std::next(at);
        }
        return true;
    }
    bool DeleteId(int id) {
        if (Place const at = WithId(id); at != rules.end())
            rules.erase(at);
        return true;
    }
    bool MoveTo(int id, std::size_t place) {
        Place const at = WithId(id);
        if (at == rules.end() || place >= rules.size())
            return false;
        std::vector<int> ids;
        for (auto const& rule : rules)
            ids.push_back(rule.callrecordingrule_id);
        CallRecordingRuleParams const moved = *at;
        rules.erase(at);
        rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(place), moved);
        for (std::size_t i = 0; i < ids.size(); ++i)
            rules[i].callrecordingrule_id = ids[i];
        return true;
    }
    bool Move(int id, bool up) {
        Place const at = WithId(id);
        auto const place = static_cast<std::size_t>(at - rules.begin());
        if (at != rules.end() && (place > 0 || !up))
            MoveTo(id, up ? place - 1 : place + 1);
        return true;
    }
    bool SetState(int id, bool enable) {
        if (Place const at = WithId(id); at != rules.end())
            at->recording_rule_state = enable ? RULE_ENABLED : RULE_DISABLED;
        return true;
    }
};

TEST_F(Edits, DoAsAPlainListDoes) {
    std::mt19937 random(1);
    auto const below = [&random](int n) { return static_cast<int>(random() % unsigned(n)); };
    auto const randomRule = [&] {
        char const* const patterns[] = {"1", "*"};
        CallRecordingRuleParams rule =
            Rule(below(9), patterns[below(2)], CallType(below(2) * 3), patterns[below(2)],
                 CallType(below(2) * 3), below(2) == 0 ? "x" : "y");
        rule.recording_duration = std::to_string(below(3));
        rule.call_recording_type = CallRecordingTypes(below(2));
        rule.recording_rule_state = below(3);
        return rule;
    };
    PlainRules plain;
    for (int step = 0; step < 500; ++step) {
        if (below(40) == 0) { // Now and then a file in which identifiers may be there twice.
            plain.rules.clear();
            for (int count = below(9); count > 0; --count)
                plain.rules.push_back(randomRule());
        }
        std::string file;
        for (auto const& rule : plain.rules)
            file += Section(rule);
        LoadRules(file);
        CallRecordingRuleParams rule = randomRule();
        int const id = rule.callrecordingrule_id;
        if (below(2) == 0 && id < int(plain.rules.size()))
            rule = plain.rules[std::size_t(id)];
        auto const place = std::size_t(below(9));
        bool const flag = below(2) == 0;
        int const kind = below(7);
        Edit const edits[] = {Add(rule),
                              Modify(rule, flag),
                              Delete(rule),
                              Delete(std::to_string(id)),
                              Move(std::to_string(id), flag),
                              MoveTo(std::to_string(id), place),
                              SetState(std::to_string(id), flag)};
        bool const expected = kind == 0   ? plain.Add(rule)
                              : kind == 1 ? plain.Modify(rule, flag)
                              : kind == 2 ? plain.Delete(rule)
                              : kind == 3 ? plain.DeleteId(id)
                              : kind == 4 ? plain.Move(id, flag)
                              : kind == 5 ? plain.MoveTo(id, place)
                                          : plain.SetState(id, flag);
        EXPECT_EQ(edits[kind](*db), expected);
        std::string after;
        for (auto const& listed : plain.rules)
            after += Section(listed);
        ASSERT_EQ(dir.ReadRules(), after) << "edit " << kind << " of\n" << file;
    }
}

TEST_F(Edits, MovesAndStatesShowInMemory) {
    std::string const file = Section(kA) + Section(kB) + Section(kC);
    LoadRules(file);
    EXPECT_TRUE(db->ReOrderRule("7", true));
    EXPECT_EQ(db->GetSelectedRule("0")->record_to, "b");
    EXPECT_EQ(db->GetCallRecordingRules().front()->callrecordingrule_id, 7);
    // The list no longer agrees with the file, so another move of either would mix up two rules.
    std::string const moved = dir.ReadRules();
    EXPECT_TRUE(db->ReOrderRule("7", false));
    EXPECT_TRUE(db->ReOrderRule("3", true));
    EXPECT_EQ(dir.ReadRules(), moved);
    EXPECT_EQ(db->GetSelectedRule("0")->record_to, "b");
    EXPECT_FALSE(db->MoveRule("3", 0));
    EXPECT_NE(db->GetLastFailure().find("reload"), std::string::npos);
    EXPECT_EQ(dir.ReadRules(), moved);
    EXPECT_TRUE(db->Reload());
    EXPECT_TRUE(db->ReOrderRule("0", false));
    EXPECT_EQ(dir.ReadRules(), file);
    EXPECT_TRUE(db->Reload());
    EXPECT_TRUE(db->MoveRule("3", 0));
    std::string ids;
    for (CallRecordingRuleParams const* const rule : db->GetCallRecordingRules())
        ids += std::to_string(rule->callrecordingrule_id) + rule->record_to + " ";
    EXPECT_EQ(ids, "7a 3b 0c "); // In the order of the list, with the identifiers of the file.
    dir.WriteRules(file);
    EXPECT_TRUE(db->Reload());

    CallParams const five{"5", {}, "", ""};
    CCallRecordingAssistant assistant(false);
    for (bool const isEnabled : {false, true}) {
        EXPECT_TRUE(db->SetRuleState("3", isEnabled));
        EXPECT_EQ(assistant.IsCallRecordingAllowed(five, CALL_TYPE_NUMBER, five, CALL_TYPE_NUMBER,
                                                   nullptr),
                  isEnabled);
        db->GetSelectedRule("3")->recording_rule_state = RULE_NOT_SHOWABLE;
    }
    EXPECT_EQ(Trace(), "Reordering recording rule failed\n");
}

TEST_F(Edits, NeedALoadedDatabaseAndARecord) {
    std::string const file = Section(kB) + Section(kA) + Section(With(kC, 7));
    dir.WriteRules(file);
    EXPECT_EQ(db->GetSelectedRule("0"), nullptr);
    CallRecordingRuleParams rule = With(kA, 0, "new");
    EXPECT_FALSE(db->AddRule(&rule));
    EXPECT_TRUE(db->ModifyRule(&rule, true));
    EXPECT_TRUE(db->SaveSelectedRule(nullptr, &rule) && db->GetCurrentSection(nullptr, rule));
    EXPECT_EQ(Section(rule), Section(With(kA, 0, "new")));
    EXPECT_TRUE(db->Reload());
    EXPECT_FALSE(db->AddRule(nullptr));
    EXPECT_TRUE(db->ModifyRule(nullptr, true));
    EXPECT_EQ(dir.ReadRules(), file);
    EXPECT_EQ(Trace(), "");

    EXPECT_EQ(db->GetSelectedRule("abc")->record_to, "a");
    EXPECT_EQ(db->GetSelectedRule("7abc")->record_to, "b");
    EXPECT_EQ(db->GetSelectedRule("8"), nullptr);
    EXPECT_TRUE(db->Find("100", "*"));
    EXPECT_FALSE(db->Find("*", "100") || db->Find("100", "2*"));
}

TEST_F(Edits, TextsThatAreNoLineFailAndChangeNothing) {
    std::string const file = Section(kA) + Section(kTwinOfA) + Section(kB);
    std::string const failed = "Save currently selected call recording rule failed\n";
    for (std::string const& text : {"a\nb"s, "a\r"s, "a\0b"s, std::string(65536, 'x')}) {
        for (auto const field :
             {&CallRecordingRuleParams::caller_pattern, &CallRecordingRuleParams::called_pattern,
              &CallRecordingRuleParams::record_to, &CallRecordingRuleParams::recording_duration,
              &CallRecordingRuleParams::description}) {
            LoadRules(file);
            CallRecordingRuleParams rule = kA;
            rule.*field = text;
            EXPECT_FALSE(db->AddRule(&rule));
            EXPECT_FALSE(db->ModifyRule(&(rule = With(rule, 0)), false));
            EXPECT_EQ(Trace(), failed + failed);
            std::string const reason = db->GetLastFailure();
            EXPECT_EQ(reason.find(dir.Path(TempDir::RULE_FILE) + ": "), 0U) << reason;
            EXPECT_NE(reason.find("the new value of \""), std::string::npos) << reason;
            EXPECT_EQ(dir.ReadRules(), file);
        }
    }
    // A reason that two steps have in common is given once, different ones follow each other.
    CallRecordingRuleParams noLine = With(kA, 0, "a\n");
    EXPECT_FALSE(db->ModifyRule(&noLine, true));
    EXPECT_EQ(db->GetLastFailure(),
              dir.Path(TempDir::RULE_FILE) + ": the new value of \"record_to\" has a line break");
    noLine.description = "b\n";
    noLine.caller_pattern = "c\n";
    EXPECT_FALSE(db->ModifyRule(&noLine, true));
    EXPECT_NE(db->GetLastFailure().find("\"caller_pattern\" has a line break; "),
              std::string::npos);
    // The rewrite fails; the twin is updated all the same, and no part of the rewrite is saved.
    LoadRules(file);
    CallRecordingRuleParams rule = With(kA, 0, "new");
    rule.description = "a\nb";
    EXPECT_FALSE(db->ModifyRule(&rule, true));
    EXPECT_EQ(dir.ReadRules(), Section(kA) + Section(With(kTwinOfA, 1, "new")) + Section(kB));
}

/// Writes 12 as 1.2, as the locale of a host process may.
struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\1"; }
};

TEST_F(Edits, TextsComeBackAsTheyWereSaved) {
    std::locale const before = std::locale::global(std::locale(std::locale(), new Grouping));
    LoadRules(Section(With(kA, 10)));
    for (char const* text : {" a ", "\t", "=", "a=b=c", "#", " # x", "{", "}", "\xff\x80", ""}) {
        CallRecordingRuleParams rule = Rule(0, text, CALL_TYPE_SIP, text, CALL_TYPE_NUMBER2, text);
        rule.recording_duration = rule.description = text;
        EXPECT_TRUE(db->AddRule(&rule));
        EXPECT_TRUE(db->Reload());
        EXPECT_EQ(Section(*db->GetCallRecordingRules().back()), Section(rule));
    }
    std::locale::global(before);
    EXPECT_NE(dir.ReadRules().find("callrecordingrule_id=20\n"), std::string::npos);
}

TEST_F(Edits, AFileThatCannotBeReadIsNeverWritten) {
    std::pair<Edit, char const*> const rows[] = {
        {Add(kA), "Adding new call recording rule failed\n"},
        {Modify(kA, true), "Save call recording rule failed\n"},
        {Delete(kA), "Removing recording rule failed\n"},
        {Delete("0"), "Removing recording rule failed\n"},
        {Move("0", true), "Reordering recording rule failed\n"},
        {MoveTo("0", 0), "Reordering recording rule failed\n"},
        {SetState("0", false), "Set call recording rule state failed\n"},
    };
    for (auto const& [edit, message] : rows) {
        LoadRules(Section(kA));
        dir.WriteRules("{\nhalf a section=");
        EXPECT_FALSE(edit(*db));
        EXPECT_EQ(Trace(), message);
        EXPECT_EQ(db->GetLastFailure().find(dir.Path(TempDir::RULE_FILE) +
                                            ":2: the file ends in the section opened at line 1"),
                  0U);
        EXPECT_EQ(dir.ReadRules(), "{\nhalf a section=");
    }
    // A value that is too long to be read can be replaced.
    CallRecordingRuleParams rule;
    LoadRules(Section(kA));
    dir.WriteRules(Section(With(kA, 0, std::string(70000, '1').c_str())));
    EXPECT_TRUE(db->ModifyRule(&kA, true));
    EXPECT_EQ(Trace(), "Loading Call Recording configuration failed\n");
    EXPECT_EQ(dir.ReadRules(), Section(kA));
    // An edit that cannot read on keeps what it has saved until then.
    std::string const unread =
        Section(Rule(9, std::string(70000, '1').c_str(), CALL_TYPE_ANY, "", CALL_TYPE_ANY));
    dir.WriteRules(Section(kA) + unread + Section(kTwinOfA));
    EXPECT_FALSE(db->ModifyRule(&(rule = With(kA, 0, "n")), true));
    EXPECT_EQ(dir.ReadRules(), Section(With(kA, 0, "n")) + unread + Section(kTwinOfA));
    EXPECT_FALSE(db->DeleteRule(&kA));
    EXPECT_EQ(dir.ReadRules(), unread + Section(kTwinOfA));
    EXPECT_EQ(Trace(), "Save call recording rule failed\nRemoving recording rule failed\n");
}

// A limit on the size of files acts like a full disk. The log stays below it.
TEST_F(Edits, AFailedSaveKeepsWhatWasSavedBefore) {
    std::string const failed = "Save currently selected call recording rule failed\n";
    std::string const modifyFailed = "Save call recording rule failed\n";
    CallRecordingRuleParams const longA = With(kA, 0, "a longer destination");
    CallRecordingRuleParams const longB = With(kB, 7, "a longer destination");
    std::string const pair = Section(longA) + Section(kTwinOfA);
    std::string const settings = Section(Disabled(longA)) + Section(kTwinOfA);
    struct {
        std::string before;
        CallRecordingRuleParams rule;
        std::string after, trace;
    } const rows[] = {
        {Section(kB), longB, Section(kB), failed}, // It has no twin.
        {Section(kC), longB, Section(kC), ""},     // Nor is there the rule itself.
        {Section(kA) + Section(kTwinOfA), longA, Section(kA) + Section(kTwinOfA),
         failed + modifyFailed},
        // A rule that mirrors itself is its own twin.
        {Section(kC), With(kC, 3, "a longer destination"), Section(kC), failed + modifyFailed},
        {pair, Disabled(longA), settings, modifyFailed}, // The twin alone grows.
    };
    for (auto const& row : rows) {
        std::string const comment = "#" + std::string(64 * 1024, '.') + "\n";
        LoadRules(comment + row.before);
        bool isDone = false;
        {
            FileSizeLimit const limit(comment.size() + row.before.size());
            isDone = db->ModifyRule(&row.rule, true);
        }
        EXPECT_EQ(isDone, row.trace.empty());
        EXPECT_EQ(Trace(), row.trace);
        EXPECT_EQ(dir.ReadRules(), comment + row.after);
        EXPECT_EQ(db->GetLastFailure(),
                  isDone ? ""
                         : dir.Path(TempDir::RULE_FILE) +
                               ": its temporary file cannot be written: File too large");
    }
}

TEST_F(Edits, CancellationWaitsForTheirEnd) {
    LoadRules(Section(kA) + Section(kB));
    std::function<bool()> const operations[] = {
        [&] { return db->SetRuleState("0", false); },
        [&] { return db->Reload(); },
        [&] { return CCallRecordingDB::GetInstance(true, true) == db; },
        [&] { return CCallRecordingDB::mpLogger->TRACE(0, true, "traced\n"), true; },
        [&] { return CRuleFileLock(100).IsHeld(); },
        [&] { return CCallRecordingDB::CloseInstance(), true; },
    };
    for (auto const& operation : operations) {
        std::pair<std::function<bool()>, bool> work(operation, false);
        auto const cancelled = [](void* argument) -> void* {
            auto* const own = static_cast<decltype(work)*>(argument);
            pthread_cancel(pthread_self());
            own->second = own->first();
            pthread_testcancel();
            return nullptr;
        };
        pthread_t thread{};
        ASSERT_EQ(pthread_create(&thread, nullptr, cancelled, &work), 0);
        void* result = nullptr;
        EXPECT_EQ(pthread_join(thread, &result), 0);
        EXPECT_EQ(result, PTHREAD_CANCELED);
        EXPECT_TRUE(work.second);
    }
    EXPECT_EQ(dir.ReadRules(), Section(Disabled(kA)) + Section(kB));
    EXPECT_EQ(Trace(), "traced\n");
}

} // namespace
} // namespace CallRecordingUtils
