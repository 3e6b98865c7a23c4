// The life of the database, its trace log, and loading hand-written rule files in both views.

#include <gtest/gtest.h>

#include <algorithm>
#include <locale>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>
#include <callrecordingutils/CRuleFileLock.h>
#include <callrecordingutils/NumberToString.h>
#include <callrecordingutils/tokensArray.h>

#include "support/DatabaseTest.h"
#include "support/Edits.h"

namespace CallRecordingUtils {
namespace {

class Loading : public DatabaseTest {
  protected:
    /// Returns the listed rules in short: identifier, sides, recording type, state, texts.
    static std::string Listing(CCallRecordingDB& db) {
        std::ostringstream out;
        for (CallRecordingRuleParams const* r : db.GetCallRecordingRules())
            out << r->callrecordingrule_id << " " << r->caller_pattern << "/" << r->caller_call_type
                << ">" << r->called_pattern << "/" << r->called_call_type << " "
                << r->call_recording_type << r->recording_rule_state << " " << r->record_to << "|"
                << r->recording_duration << "|" << r->description << "\n";
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

TEST_F(Loading, BasicViewMergesMirroredPairs) {
    // A rule about a called number, and its mirror image.
    auto const star = [](char const* key, char const* other = "*", CallType type = CALL_TYPE_ANY) {
        return Section(Rule(1, other, type, key, CALL_TYPE_NUMBER));
    };
    auto const mirror = [](char const* other = "*", CallType type = CALL_TYPE_ANY,
                           char const* recordTo = "") {
        return Section(Rule(2, "100", CALL_TYPE_NUMBER, other, type, recordTo));
    };
    struct {
        std::string file;
        char const* listing;
        bool hasAdvancedRules = false;
    } const rows[] = {
        {star("100") + mirror(), "1 */3>100/0 00 ||\n"},
        {mirror() + star("100"), "2 100/0>*/3 00 ||\n"}, // The first one is listed.
        {star("100"), "1 */3>100/0 02 ||\n"},
        {star("100") + star("100"), "1 */3>100/0 02 ||\n"},
        {star("100") + mirror("*", CALL_TYPE_ANY, "x"), "1 */3>100/0 02 ||\n"},
        {star("100", "1*") + mirror("1*"), "1 1*/3>100/0 02 ||\n"},
        {star("100", "*", CALL_TYPE_SIP) + mirror("*", CALL_TYPE_SIP), "1 */1>100/0 02 ||\n", true},
        {Section(kB) + star("100") + mirror(), "1 */3>100/0 00 ||\n", true},
        {star("9") + star("10"), "1 */3>10/0 02 ||\n1 */3>9/0 02 ||\n"}, // By the keys' bytes.
    };
    for (auto const& row : rows) {
        dir.WriteRules(row.file);
        CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, false);
        std::string const advanced = Listing(*db);
        CCallRecordingDB::SetMode(false);
        EXPECT_EQ(Listing(*db), advanced); // Until the next load.
        EXPECT_TRUE(db->Reload());
        EXPECT_EQ(Listing(*db), row.listing) << row.file;
        EXPECT_EQ(db->mHasAdvancedRules, row.hasAdvancedRules) << row.file;
        CCallRecordingDB::SetMode(true);
        CCallRecordingDB::CloseInstance();
    }
    // If both sides have call type number, the comparison with exchanged sides decides.
    CCallRecordingDB db;
    CallRecordingRuleMapParams entry;
    entry.params = Rule(1, "1", CALL_TYPE_NUMBER, "2", CALL_TYPE_NUMBER);
    CallRecordingRuleParams rule = entry.params;
    EXPECT_FALSE(db.IsIdenticallRules(nullptr, entry) || entry.has_mirror);
    EXPECT_FALSE(db.IsIdenticallRules(&rule, entry));
    EXPECT_TRUE(entry.has_mirror);
    std::swap(rule.caller_pattern, rule.called_pattern);
    EXPECT_TRUE(db.IsIdenticallRules(&rule, entry));
}

constexpr char kFailed[] = "Loading Call Recording configuration failed\n";
constexpr char kLoaded[] = "Loaded: Call Recording Configuration\n";
constexpr char kAlready[] = "Call Recording Configuration is already loaded\n";
constexpr char kReloading[] = "Reloading: Call Recording Configuration\n";

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
    EXPECT_EQ(Trace(), kLoaded + std::string(kAlready) + kAlready + kReloading + kLoaded);
    CCallRecordingAssistant first(false);
    CCallRecordingAssistant second(true); // Comes too late for a log.
    EXPECT_EQ(second.GetLogger(), nullptr);
}

TEST_F(Loading, AFailedLoadKeepsWhatWasReadAndCountsAsLoaded) {
    dir.WriteRules(Section(kB) + Section(With(kB, 2, std::string(70000, '1').c_str())));
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(false, true);
    EXPECT_FALSE(db->Load());
    EXPECT_EQ(db->GetCallRecordingRules().size(), 1U);
    EXPECT_TRUE(db->Load());
    CCallRecordingDB::SetMode(false);
    EXPECT_FALSE(db->Reload());
    EXPECT_TRUE(db->GetCallRecordingRules().empty());
    dir.WriteRules("");
    EXPECT_TRUE(db->Reload());
    EXPECT_EQ(Trace(), kFailed + std::string(kLoaded) + kAlready + kReloading + kFailed + kLoaded +
                           kReloading + kLoaded);
}

TEST_F(Loading, LevelsTellFailuresFromNotices) {
    std::string const notices = std::string(kLoaded) + kAlready + kReloading;
    struct {
        char const* logLevel;
        std::string trace;
    } const rows[] = {{"0", kFailed}, {"2", kFailed}, {"3", notices + kFailed + kLoaded}};
    for (auto const& [logLevel, trace] : rows) {
        setenv("QUVA_LOG_LEVEL", logLevel, 1);
        dir.WriteRules("");
        CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, true);
        db->Load();
        dir.WriteRules("{");
        db->Reload();
        CCallRecordingDB::CloseInstance();
        EXPECT_EQ(Trace(), trace) << logLevel;
    }
}

// By the bytes of a section, in which the description comes before the state.
TEST(Keys, AreExportedInTheOrderOfTheirIndex) {
    std::istringstream section(Section(kA));
    std::vector<std::string> keys;
    for (std::string line; std::getline(section, line);)
        if (line.find('=') != std::string::npos)
            keys.push_back(line.substr(0, line.find('=')));
    std::swap(keys[KEY_RECORDING_RULE_STATE], keys[KEY_DESCRIPTION]);
    EXPECT_EQ(std::vector<std::string>(tokensArray, tokensArray + RULE_FILE_KEY_COUNT), keys);
}

TEST_F(Loading, TheDirectoryIsJoinedAsPlainTextAndReadAgain) {
    dir.Write("deeptelephony/callrecordingdb", Section(kA));
    CCallRecordingDB* const db = CCallRecordingDB::GetInstance(true, false);
    EXPECT_TRUE(db->GetCallRecordingRules().empty()); // A missing file has no rules.
    setenv("QUVA_PATH", dir.Path("deep").c_str(), 1);
    EXPECT_TRUE(db->Reload());
    EXPECT_EQ(db->GetCallRecordingRules().size(), 1U);
}

// A clock that was wrong for a while must not make the rules unreadable, nor where times have 32
// bits.
TEST_F(Loading, TheTimeOfTheFileDoesNotMatter) {
    dir.WriteRules(Section(kA));
    timespec const year2050[2] = {{2524608000, 0}, {2524608000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, dir.Path(TempDir::RULE_FILE).c_str(), year2050, 0), 0);
    EXPECT_EQ(CCallRecordingDB::GetInstance(true, false)->GetCallRecordingRules().size(), 1U);
    EXPECT_TRUE(CRuleFileLock(0).IsHeld());
}

// The host may have set a locale that writes 1.234.567.
TEST(NumberToString, WritesPlainDigitsInEveryLocale) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale const before =
        std::locale::global(std::locale(std::locale::classic(), new Grouping));
    EXPECT_EQ(NumberToString(1234567), "1234567");
    EXPECT_EQ(NumberToString(-1234567L), "-1234567");
    EXPECT_EQ(NumberToString(CALL_RECORDING_TYPE_1), "1");
    std::locale::global(before);
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

TEST_F(Loading, TheTimestampFollowsAChangeOfTheZone) {
    CCallRecordingDB::GetInstance(false, true);
    std::string hours;
    for (char const* const zone : {"AAA0", "BBB-5", "AAA0"}) {
        setenv("TZ", zone, 1);
        dir.Write("callrecording.log", "");
        CCallRecordingDB::mpLogger->TRACE(0, true, "x\n");
        hours += std::to_string(std::stoi(dir.Read("callrecording.log").substr(11, 2))) + " ";
    }
    unsetenv("TZ");
    std::istringstream in(hours);
    int first = 0, second = 0, third = 0;
    in >> first >> second >> third;
    EXPECT_TRUE((second - first + 24) % 24 == 5 || (third - second + 24) % 24 == 19) << hours;
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
