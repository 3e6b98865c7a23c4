/// @file
/// A test with a configuration directory, a log and a database of its own.

#ifndef TESTS_SUPPORT_DATABASETEST_H
#define TESTS_SUPPORT_DATABASETEST_H

#include <cstdlib>
#include <regex>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <callrecordingutils/CCallRecordingDB.h>

#include <support/TempDir.h>

namespace CallRecordingUtils {

class DatabaseTest : public testing::Test {
  protected:
    explicit DatabaseTest(char const* logLevel) {
        dir.UseAsConfiguration();
        setenv("QUVA_LOG_PATH", dir.Path("").c_str(), 1);
        setenv("QUVA_LOG_LEVEL", logLevel, 1);
    }
    ~DatabaseTest() override {
        while (CCallRecordingDB::mInstancesCount > 0)
            CCallRecordingDB::CloseInstance();
        CCallRecordingDB::SetMode(true);
    }

    /// Returns the messages since the last call, without their timestamps, which must all be well
    /// formed.
    std::string Trace() {
        std::string const log = dir.Read("callrecording.log");
        std::istringstream added(log.substr(mTraced));
        mTraced = log.size();
        std::regex const timestamp(
            R"([A-Z][a-z]{2} [A-Z][a-z]{2} [ 1-3]\d \d\d:\d\d:\d\d \d{4}\t\.\d{3} )");
        std::string messages;
        for (std::string line; std::getline(added, line);) {
            std::smatch match;
            EXPECT_TRUE(
                std::regex_search(line, match, timestamp, std::regex_constants::match_continuous))
                << line;
            messages += match.suffix().str() + "\n";
        }
        return messages;
    }

    TempDir dir;

  private:
    std::size_t mTraced = 0;
};

/// The same with an instance, of which failures are traced.
class EditTest : public DatabaseTest {
  protected:
    EditTest() : DatabaseTest("0"), db(CCallRecordingDB::GetInstance(false, true)) {}

    void LoadRules(std::string const& file) {
        dir.WriteRules(file);
        ASSERT_TRUE(db->Reload());
    }

    CCallRecordingDB* db;
};

} // namespace CallRecordingUtils

#endif
