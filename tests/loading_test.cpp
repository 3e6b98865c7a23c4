// The database's life, its trace log, and the loading of hand-written rule files in both view
// modes.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

class Loading : public DatabaseTest {
  protected:
    Loading() : DatabaseTest("9") {}

    /// The listed rules in short: identifier, sides, recording type, state, then the texts.
    static std::string Listing(CCallRecordingDB& db) {
        std::ostringstream out;
        for (CallRecordingRuleParams const* rule : db.GetCallRecordingRules())
            out << rule->callrecordingrule_id << " " << rule->caller_pattern << "/"
                << rule->caller_call_type << ">" << rule->called_pattern << "/"
                << rule->called_call_type << " " << rule->call_recording_type
                << rule->recording_rule_state << " " << rule->record_to << "|"
                << rule->recording_duration << "|" << rule->description << "\n";
        return out.str();
    }
};

TEST_F(Loading, AdvancedViewListsEverySectionAsItDecodes) {
    dir.WriteRules("# rules by hand\n{\n}\n"
                   "{\r\n  callrecordingrule_id= +12abc\r\ncaller_pattern=<1-9>#\r\n"
                   "caller_call_type=7\r\ncalled_call_type=2\r\ncall_recording_type=2\r\n"
                   "record_to= a = b # {\r\nrecording_rule_state=10\r\n\tdescription=x \r\n}\r\n" +
                   Section(Rule(0, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_SIP), "99999999999") +
                   "{\ncallrecordingrule_id=-3\ncaller_pattern=*\ncaller_call_type=3\n"
                   "called_pattern=*\ncalled_call_type= 0\ncall_recording_type=1\n"
                   "recording_rule_state=yes\n}\n");
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, false);
    EXPECT_EQ(Listing(*db), "0 /3>/3 11 ||\n"
                            "12 <1-9>#/3>/2 10  a = b # {||x \n"
                            "2147483647 1/0>2/1 00 ||\n"
                            "-3 */3>*/3 11 ||\n");
    EXPECT_FALSE(db->mHasAdvancedRules);
}

struct BasicRow {
    char const* name;
    std::string file;
    char const* listing;
    bool hasAdvancedRules;
};

TEST_F(Loading, BasicViewMergesMirroredPairs) {
    std::string const star = Section(Rule(1, "*", CALL_TYPE_ANY, "100", CALL_TYPE_NUMBER));
    std::string const mirror = Section(Rule(2, "100", CALL_TYPE_NUMBER, "*", CALL_TYPE_ANY));
    BasicRow const rows[] = {
        {"pair", star + mirror, "1 */3>100/0 00 ||\n", false},
        {"the first of a pair is listed, whichever side it is keyed on", mirror + star,
         "2 100/0>*/3 00 ||\n", false},
        {"alone", star, "1 */3>100/0 02 ||\n", false},
        {"a duplicate is no mirror", star + star, "1 */3>100/0 02 ||\n", false},
        {"the pair disagrees",
         star + Section(Rule(2, "100", CALL_TYPE_NUMBER, "*", CALL_TYPE_ANY, "x")),
         "1 */3>100/0 02 ||\n", false},
        {"other side is not everyone",
         Section(Rule(1, "1*", CALL_TYPE_ANY, "100", CALL_TYPE_NUMBER)), "1 1*/3>100/0 02 ||\n",
         false},
        {"other side has a type", Section(Rule(1, "*", CALL_TYPE_SIP, "100", CALL_TYPE_NUMBER)),
         "1 */1>100/0 02 ||\n", true},
        {"no key side", Section(Rule(4, "a", CALL_TYPE_SIP, "*", CALL_TYPE_ANY)) + star + mirror,
         "1 */3>100/0 00 ||\n", true},
        {"listed by bytes of the key pattern",
         Section(Rule(1, "*", CALL_TYPE_ANY, "9", CALL_TYPE_NUMBER)) +
             Section(Rule(2, "*", CALL_TYPE_ANY, "10", CALL_TYPE_NUMBER)),
         "2 */3>10/0 02 ||\n1 */3>9/0 02 ||\n", false},
    };
    for (BasicRow const& row : rows) {
        dir.WriteRules(row.file);
        CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, false);
        std::string const advanced = Listing(*db);
        CCallRecordingDB::SetMode(false);
        EXPECT_EQ(Listing(*db), advanced) << row.name; // Until the next load.
        EXPECT_TRUE(db->Reload());
        EXPECT_EQ(Listing(*db), row.listing) << row.name;
        EXPECT_EQ(db->mHasAdvancedRules, row.hasAdvancedRules) << row.name;
        CCallRecordingDB::SetMode(true);
        CCallRecordingDB::CloseInstance();
    }
}

TEST_F(Loading, ComparisonsWhereBothSidesAreKeys) {
    CCallRecordingDB db;
    CallRecordingRuleMapParams entry;
    entry.params.caller_call_type = entry.params.called_call_type = CALL_TYPE_NUMBER;
    entry.params.caller_pattern = "1";
    entry.params.called_pattern = "2";
    CallRecordingRuleParams rule = entry.params;
    EXPECT_FALSE(db.IsIdenticallRules(nullptr, entry));
    EXPECT_FALSE(entry.has_mirror);
    EXPECT_FALSE(db.IsIdenticallRules(&rule, entry)); // The crossed comparison comes last.
    EXPECT_TRUE(entry.has_mirror);
    std::swap(rule.caller_pattern, rule.called_pattern);
    EXPECT_TRUE(db.IsIdenticallRules(&rule, entry));
    db.VerifyBasicViewModeRuleValidation(entry);
    EXPECT_EQ(entry.params.recording_rule_state, RULE_NOT_SHOWABLE);
}

TEST_F(Loading, InstanceAndLoggerLiveFromTheFirstReferenceToTheLast) {
    dir.WriteRules(Section(kA));
    CCallRecordingDB::CloseInstance();
    EXPECT_EQ(CCallRecordingDB::mInstancesCount, 0);
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(false, true);
    EXPECT_TRUE(db->GetCallRecordingRules().empty());
    EXPECT_EQ(CCallRecordingDB::GetInstance(true, false), db);
    EXPECT_EQ(db->GetCallRecordingRules().size(), 1U);
    EXPECT_TRUE(db->Load());
    CCallRecordingDB::CloseInstance();
    EXPECT_EQ(CCallRecordingDB::mpInstance, db);
    {
        CCallRecordingAssistant assistant(false);
        EXPECT_EQ(assistant.GetLogger(), CCallRecordingDB::mpLogger);
        EXPECT_TRUE(assistant.ReloadCallRecordingRules());
    }
    CCallRecordingDB::CloseInstance();
    EXPECT_EQ(CCallRecordingDB::mpInstance, nullptr);
    EXPECT_EQ(CCallRecordingDB::mpLogger, nullptr);
    EXPECT_EQ(Trace(), "Loaded: Call Recording Configuration\n"
                       "Call Recording Configuration is already loaded\n"
                       "Call Recording Configuration is already loaded\n"
                       "Reloading: Call Recording Configuration\n"
                       "Loaded: Call Recording Configuration\n");
    CCallRecordingAssistant first(false);
    CCallRecordingAssistant second(true); // Comes too late for a log.
    EXPECT_EQ(second.GetLogger(), nullptr);
}

TEST_F(Loading, AFailedLoadKeepsWhatWasReadAndCountsAsLoaded) {
    std::string const good = Section(kB);
    dir.WriteRules(good + Section(With(kA, 2, std::string(70000, '1').c_str())) + good);
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(false, true);
    EXPECT_FALSE(db->Load());
    EXPECT_EQ(db->GetCallRecordingRules().size(), 1U);
    EXPECT_TRUE(db->Load());
    CCallRecordingDB::SetMode(false);
    EXPECT_FALSE(db->Reload());
    EXPECT_TRUE(db->GetCallRecordingRules().empty());
    dir.WriteRules(good + "{\n");
    EXPECT_FALSE(db->Reload());
    dir.WriteRules("");
    EXPECT_TRUE(db->Reload());
    std::string const failed = "Loading Call Recording configuration failed\n"
                               "Loaded: Call Recording Configuration\n";
    std::string const reload = "Reloading: Call Recording Configuration\n";
    EXPECT_EQ(Trace(), failed + "Call Recording Configuration is already loaded\n" + reload +
                           failed + reload + failed + reload +
                           "Loaded: Call Recording Configuration\n");
}

TEST_F(Loading, TheDirectoryIsJoinedAsPlainTextAndReadAgain) {
    dir.Write("deeptelephony/callrecordingdb", Section(kA));
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, false);
    EXPECT_TRUE(db->GetCallRecordingRules().empty()); // No file there is a file without rules.
    setenv("QUVA_PATH", dir.Path("deep").c_str(), 1);
    EXPECT_TRUE(db->Reload());
    EXPECT_EQ(db->GetCallRecordingRules().size(), 1U);
}

TEST_F(Loading, TracingIsDecidedWhenTheLoggerIsMade) {
    for (bool const isTraced : {false, true}) {
        isTraced ? setenv("QUVA_LOG_LEVEL", "9", 1) : unsetenv("QUVA_LOG_LEVEL");
        CCallRecordingDB::GetInstance(false, true);
        setenv("QUVA_LOG_LEVEL", "9", 1);
        CCallRecordingDB::mpLogger->TRACE(0, false, "%d%%s %s\n", 3, "%s");
        CCallRecordingDB::CloseInstance();
        EXPECT_EQ(dir.Read("callrecording.log"), isTraced ? "3%s %s\n" : "");
    }
}

TEST_F(Loading, ThreadsTraceWholeLinesAndShareTheInstance) {
    dir.WriteRules(Section(kA));
    CCallRecordingDB::GetInstance(true, true);
    CallParams const side{"100", {}, "", ""};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 50; ++n) {
                CCallRecordingAssistant assistant(false);
                EXPECT_TRUE(assistant.IsCallRecordingAllowed(side, CALL_TYPE_NUMBER, side,
                                                             CALL_TYPE_NUMBER, nullptr));
                assistant.GetLogger()->TRACE(3, true, "thread %s\n", "line");
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    std::string const trace = Trace();
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 1 + 4 * 50 * 2);
    EXPECT_EQ(CCallRecordingDB::mInstancesCount, 1);
}

} // namespace
} // namespace CallRecordingUtils
