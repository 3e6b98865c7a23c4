/// @file
/// Tests with a configuration directory, a log and a database of their own.

#ifndef TESTS_SUPPORT_DATABASETEST_H
#define TESTS_SUPPORT_DATABASETEST_H

#include <cstdlib>
#include <regex>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <callrecordingutils/CCallRecordingDB.h>

#include <support/TempDir.h>

namespace CallRecordingUtils {

class DatabaseTest : public testing::Test {
  protected:
    explicit DatabaseTest(char const* logLevel = "9") {
        dir.UseAsConfiguration();
        setenv("QUVA_LOG_PATH", dir.Path("").c_str(), 1);
        setenv("QUVA_LOG_LEVEL", logLevel, 1);
    }
    ~DatabaseTest() override {
        while (CCallRecordingDB::mInstancesCount > 0)
            CCallRecordingDB::CloseInstance();
        CCallRecordingDB::SetMode(true);
    }

    /// Returns the messages traced since the last call. Lines without a proper timestamp are left
    /// out.
    std::string Trace() {
        std::string const log = dir.Read("callrecording.log");
        std::regex const line(R"((\w{3} ){2}[ 1-3]\d \d\d:\d\d:\d\d 20\d\d\t\.\d{3} (.*\n))");
        return std::regex_replace(log.substr(std::exchange(mTraced, log.size())), line, "$2",
                                  std::regex_constants::format_no_copy);
    }

    TempDir dir;

  private:
    std::size_t mTraced = 0;
};

/// The same with an instance of the database that traces failures.
struct EditTest : DatabaseTest {
    EditTest() : DatabaseTest("0"), db(CCallRecordingDB::GetInstance(false, true)) {}
    void LoadRules(std::string const& file) {
        dir.WriteRules(file);
        ASSERT_TRUE(db->Reload());
    }

    CCallRecordingDB* db;
};

} // namespace CallRecordingUtils

#endif
