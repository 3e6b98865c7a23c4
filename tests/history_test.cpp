// The history as a library: differences between texts, and every order of edits, failures, kills
// and changes from outside against a plain list of what happened.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "administration/history/Database.h"
#include "administration/history/History.h"
#include "administration/history/HistoryFile.h"
#include "administration/history/RuleTimeline.h"
#include "administration/history/SaveRecorded.h"
#include "administration/history/TextDelta.h"
#include "administration/inspection/Digest.h"
#include "support/AsUser.h"
#include "support/TempDir.h"

// What outlives a loss of power is not the question here, and waiting for the disk takes long.
extern "C" int fsync(int) {
    return 0;
}
extern "C" int fdatasync(int) {
    return 0;
}

namespace CallRecordingUtils {
namespace {

class HistoryTest : public testing::Test {
  protected:
    HistoryTest() { std::filesystem::create_directories(dir.Path("telephony")); }

    std::string Text() const {
        return std::filesystem::exists(path) ? dir.ReadRules() : std::string();
    }
    std::string Edit(std::string const& command, std::string const& after,
                     std::int64_t undone = 0) const {
        return SaveRecorded(
            path, {"me", command, "why", "where", undone}, Text(), after,
            [&] { dir.WriteRules(after); });
    }

    TempDir dir;
    std::string const path = dir.Path(TempDir::RULE_FILE);
    std::string const historyPath = HistoryPath(path);
    std::mt19937 random{1}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
};

using TextDeltaTest = HistoryTest;

TEST_F(TextDeltaTest, GivesTheTextBackAndKnowsDamage) {
    auto const text = [this] {
        std::string lines;
        for (auto i = random() % 9; i > 0; --i)
            lines += "ab\n\nc"[random() % 5] + std::string(random() % 2, '\n');
        return lines;
    };
    for (int i = 0; i < 20000; ++i) {
        std::string const base = text(), wanted = text();
        std::string delta = DeltaBetween(base, wanted);
        ASSERT_EQ(ApplyDelta(base, delta, wanted.size()), wanted) << base << "\n--\n" << wanted;
        if (delta.empty())
            continue;
        delta[random() % delta.size()] ^= static_cast<char>(1 << random() % 8);
        auto const damaged = ApplyDelta(base, delta, wanted.size());
        EXPECT_TRUE(!damaged || damaged->size() == wanted.size());
    }
}

TEST_F(TextDeltaTest, IsSmallWhereRulesMoveOrChange) {
    std::vector<std::string> rules;
    for (int i = 0; i < 2000; ++i)
        rules.push_back("caller_pattern=" + std::to_string(random()) + "\nrecord_to=x\n}\n");
    auto const text = [&rules] { // Identifiers stay with the places.
        std::string all;
        for (std::size_t i = 0; i < rules.size(); ++i)
            all += "{\nid=" + std::to_string(i) + "\n" + rules[i];
        return all;
    };
    std::string const base = text();
    std::rotate(rules.begin() + 10, rules.begin() + 11, rules.end());
    EXPECT_LT(DeltaBetween(base, text()).size(), base.size() / 5);
    rules[7] += "# a comment\n";
    rules.erase(rules.begin() + 1000);
    EXPECT_EQ(ApplyDelta(base, DeltaBetween(base, text()), text().size()), text());
    EXPECT_LT(DeltaBetween(base, base + "{\n}\n").size(), 20U);
}

/// What somebody who saw everything would have written down.
struct Happened {
    std::string command; // Empty for a change from outside.
    std::string before, after;
    std::int64_t undone = 0;
    bool isKnown = true;
};

/// One random life of a rule file, beside the list of what happened in it.
class Life {
  public:
    Life(TempDir const& dir, std::string const& path, unsigned seed)
        : dir_(dir), path_(path), random_(seed) {}

    void Step() {
        std::string const fresh = text_ + "# " + std::to_string(random_()) + "\n";
        std::string const after =
            Draw(3) == 0 && !past_.empty() ? past_[Draw(past_.size())].before : fresh;
        switch (Draw(6)) {
        case 0: return ChangeOutside(fresh);
        case 1: return Fail(after, false);
        case 2: return Fail(after, true);
        case 3: return Kill(after);
        case 4: return Undo();
        default: return Save(after, 0);
        }
    }

    void Compare() const {
        History history(path_);
        Snapshot const now = history.Read();
        EXPECT_EQ(now.text, text_);
        ASSERT_EQ(now.entries.size(), past_.size());
        for (std::size_t i = 0; i < past_.size(); ++i) {
            HistoryEntry const& entry = now.entries[i];
            EXPECT_EQ(entry.note.command, past_[i].command) << i;
            EXPECT_EQ(entry.IsOutside(), past_[i].command.empty()) << i;
            EXPECT_EQ(entry.before, DigestOf(past_[i].before)) << i;
            EXPECT_EQ(entry.after, DigestOf(past_[i].after)) << i;
            EXPECT_EQ(entry.state == EditState::Unknown, !past_[i].isKnown) << i;
            bool const mayBeUnseen = entry.IsOutside() && i + 1 == past_.size();
            EXPECT_TRUE(mayBeUnseen || history.TextOf(entry.after) == past_[i].after) << i;
            EXPECT_TRUE(i == 0 || now.entries[i - 1].seconds <= entry.seconds) << i;
        }
        // By digests alone, as undo goes; a plain undo never takes more than what was recorded.
        std::vector<HistoryEntry> const effective = EditsInEffect(now.entries);
        EXPECT_TRUE(effective.empty() || effective.back().state == EditState::Unknown ||
                    effective.back().after == DigestOf(text_));
        CompareEras();
    }

  private:
    std::size_t Draw(std::size_t below) { return random_() % below; }

    /// The file as it was at the end of every second in which something happened.
    void CompareEras() const {
        std::optional<RuleTimeline> asked;
        std::vector<HistoryEntry> entries;
        std::time_t second = 0;
        do { // A change from outside that is seen now is one of this second.
            second = std::time(nullptr);
            asked.emplace(path_);
            entries = History(path_).Entries(text_);
        } while (second != std::time(nullptr));
        RuleTimeline& timeline = *asked;
        std::vector<RuleEra> const& eras = timeline.Eras();
        EXPECT_EQ(timeline.TextOf(eras.back()), text_);
        EXPECT_TRUE(eras.front().from == RuleEra::kAlways && eras.back().to == RuleEra::kNow);
        std::size_t era = 0;
        for (std::size_t i = 0; i < past_.size(); ++i) {
            if (!past_[i].isKnown)
                continue;
            ++era;
            ASSERT_LT(era, eras.size());
            EXPECT_EQ(eras[era].digest, DigestOf(past_[i].after)) << i;
            EXPECT_EQ(eras[era - 1].to, eras[era].from) << i;
            EXPECT_EQ(eras[era].mayBeginAt,
                      past_[i].command.empty() ? entries[i - 1].seconds : entries[i].seconds);
            bool const isLast =
                i + 1 == past_.size() || entries[i + 1].seconds > entries[i].seconds;
            EXPECT_TRUE(!isLast || timeline.At(entries[i].seconds).digest == eras[era].digest);
        }
        EXPECT_EQ(era + 1, eras.size());
    }

    void Write(std::string const& text) {
        text_ = text;
        dir_.WriteRules(text);
    }

    /// Nobody sees what was there between two changes from outside, so they become one.
    void ChangeOutside(std::string const& after) {
        if (killed_) { // It is too late to tell whether that was saved.
            if (text_ == killed_->before)
                past_.push_back(*killed_);
            past_.back().isKnown = false;
            past_.push_back({"", killed_->before, after});
            killed_.reset();
        } else if (!isRecorded_) {
            past_.back().after = after;
        } else if (!past_.empty()) {
            past_.push_back({"", text_, after});
        }
        isRecorded_ = past_.empty();
        Write(after);
    }

    /// Begins to record an edit, which settles what was left open.
    Happened Begin(char const* name, std::string const& after, std::int64_t undone = 0) {
        killed_.reset();
        isRecorded_ = true;
        return {name + (" " + std::to_string(++count_)), text_, after, undone};
    }
    std::string Record(Happened const& edit, std::function<void()> const& save) const {
        return SaveRecorded(path_, {"me", edit.command, "", "", edit.undone}, edit.before,
                            edit.after, save);
    }

    void Save(std::string const& after, std::int64_t undone) {
        if (after == text_)
            return;
        Happened const edit = Begin("edit", after, undone);
        EXPECT_EQ(Record(edit, [&] { Write(after); }), "");
        past_.push_back(edit);
    }

    /// A save fails, before or after it has replaced the file.
    void Fail(std::string const& after, bool isReplaced) {
        if (after == text_)
            return;
        Happened const edit = Begin("failed", after);
        EXPECT_THROW(Record(edit,
                            [&] {
                                if (isReplaced)
                                    Write(after);
                                throw std::runtime_error("failed");
                            }),
                     std::runtime_error);
        if (isReplaced)
            past_.push_back(edit);
    }

    /// The process is killed before the file is replaced, or after it.
    void Kill(std::string const& after) {
        if (after == text_)
            return;
        bool const isReplaced = Draw(2) == 0;
        Happened const edit = Begin("killed", after);
        pid_t const child = fork();
        if (child == 0) {
            Record(
                edit,
                [&] {
                    if (isReplaced)
                        Write(after);
                    kill(getpid(), SIGKILL);
                });
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        killed_ = edit;
        if (!isReplaced)
            return;
        text_ = after;
        past_.push_back(edit);
    }

    void Undo() {
        std::vector<HistoryEntry> const effective = EditsInEffect(History(path_).Entries(text_));
        for (std::size_t i = effective.size(); i-- > 0 && effective[i].state == EditState::Saved;) {
            if (Draw(2) == 0) {
                auto const text = History(path_).TextOf(effective[i].before);
                ASSERT_TRUE(text);
                return Save(*text, static_cast<std::int64_t>(effective.size() - i));
            }
        }
    }

    TempDir const& dir_;
    std::string const& path_;
    std::mt19937 random_;
    std::string text_;
    std::vector<Happened> past_;
    std::optional<Happened> killed_; // The last edit, if its process was killed.
    bool isRecorded_ = true;         // Whether the last change is in the database.
    int count_ = 0;
};

TEST_F(HistoryTest, TellsWhatHappenedInEveryOrder) {
    char const* const lives = std::getenv("HISTORY_LIVES"); // More than the usual number.
    unsigned const count = lives != nullptr ? static_cast<unsigned>(std::atoi(lives)) : 40;
    for (unsigned seed = 0; seed < count && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        for (auto const& file : std::filesystem::directory_iterator(dir.Path("telephony")))
            std::filesystem::remove(file);
        Life life(dir, path, seed);
        for (int step = 0; step < 12 && !HasFailure(); ++step) {
            life.Step();
            life.Compare();
        }
    }
}

/// Returns what is wrong with the history, or nothing.
std::string WhyUnreadable(std::string const& path) {
    try {
        History(path).Read();
        return "";
    } catch (std::exception const& error) {
        return error.what();
    }
}

TEST_F(HistoryTest, RefusesWhatIsNotItsFileAndLeavesItAlone) {
    if (geteuid() != 0)
        GTEST_SKIP() << "one case takes root";
    std::string const other = dir.Path("other");
    auto const run = [&](char const* sql) {
        Database(historyPath, Database::Access::Write).Run(sql);
    };
    struct {
        char const* reason;
        std::function<void()> make;
        bool isOfOurs = false; // It begins with a history.
    } const rows[] = {
        {"symbolic link", [&] { std::filesystem::create_symlink(other, historyPath); }},
        {"more than one name", [&] { std::filesystem::create_hard_link(other, historyPath); }},
        {"not a regular file", [&] { mkfifo(historyPath.c_str(), 0600); }},
        {"not a regular file", [&] { std::filesystem::create_directory(historyPath); }},
        {"neither the owner nor the group", [&] { Give(historyPath, 0600, 7, 8); },
         true}, // Takes root.
        {"not a database", [&] { dir.Write("telephony/callrecordingdb.history", "none at all"); }},
        {"another application",
         [&] {
             dir.Write("telephony/callrecordingdb.history", "");
             run("CREATE TABLE a (b)");
         }},
        {"another application", [&] { run("PRAGMA application_id = 5"); }, true},
        {"a newer callrecordingctl", [&] { run("PRAGMA user_version = 2"); }, true},
    };
    int number = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(row.reason);
        std::filesystem::remove(historyPath);
        dir.Write("other", "");
        Give(other, 0640, geteuid(), getegid());
        Edit("edit", "# " + std::to_string(++number) + "\n"); // With a history of ours.
        if (!row.isOfOurs)
            std::filesystem::remove(historyPath);
        row.make();
        std::string const before = OwnerAndMode(historyPath) + OwnerAndMode(other);
        EXPECT_NE(Edit("edit", Text() + "# more\n").find(row.reason), std::string::npos);
        EXPECT_NE(WhyUnreadable(path).find(row.reason), std::string::npos) << WhyUnreadable(path);
        EXPECT_EQ(OwnerAndMode(historyPath) + OwnerAndMode(other), before);
        EXPECT_EQ(dir.Read("other"), "");
        EXPECT_EQ(Text(), "# " + std::to_string(number) + "\n# more\n"); // It was saved.
    }
}

TEST_F(HistoryTest, FollowsOwnerAndModeOfTheRules) {
    Edit("first", "# 1\n");
    EXPECT_EQ(OwnerAndMode(historyPath), OwnerAndMode(path));
    for (mode_t const mode : {0600, 0664, 0640}) {
        Give(path, mode, geteuid(), getegid());
        Edit("edit", Text() + "#\n");
        EXPECT_EQ(OwnerAndMode(historyPath), OwnerAndMode(path));
    }
    if (geteuid() != 0)
        GTEST_SKIP() << "the rest takes root";
    // Editors of one group, and somebody who only reads.
    Give(path, 0664, 1, 7);
    Give(historyPath, 0664, 1, 7);
    Give(dir.Path("telephony"), 02775, 0, 7);
    Give(dir.Path(), 0755, 0, 0);
    for (uid_t const user : {2U, 1U, 3U}) {
        EXPECT_EQ(AsUser(
                      user, {user + 100, 7}, [&] { return Edit("edit", Text() + "#\n"); }),
                  "");
        EXPECT_EQ(AsUser(9, {9}, [&] { return WhyUnreadable(path); }), "");
    }
    EXPECT_EQ(History(path).Read().entries.size(), 7U);
    EXPECT_EQ(OwnerAndMode(historyPath), "1:7 664");
}

TEST_F(HistoryTest, IsReadByThoseWhoMayNotUndoAHalfDoneChange) {
    Edit("first", "# 1\n");
    for (int size : {1, 100, 3000}) { // With some, a page, and very many pages.
        std::string const wanted = Text();
        pid_t const child = fork();
        if (child == 0) {
            Database database(historyPath, Database::Access::Write);
            database.Run("PRAGMA cache_size = 5");
            Transaction const transaction(database);
            database.Run("UPDATE states SET data = zeroblob(5)");
            for (int i = 0; i < size; ++i)
                database.Run("INSERT INTO settings VALUES (hex(randomblob(500)), 1)");
            kill(getpid(), SIGKILL);
        }
        int status = 0;
        waitpid(child, &status, 0);
        auto const read = [&] {
            History history(path);
            return history.Read().entries.front().note.command + *history.TextOf(DigestOf(wanted));
        };
        EXPECT_TRUE(std::filesystem::exists(historyPath + "-journal"));
        if (geteuid() == 0) {
            for (std::string const& file : {historyPath, historyPath + "-journal"})
                Give(file, 0644, 0, 0);
            Give(dir.Path(), 0755, 0, 0);
            EXPECT_EQ(AsUser(9, {9}, read), "first" + wanted);
            EXPECT_TRUE(std::filesystem::exists(historyPath + "-journal"));
        }
        EXPECT_EQ(read(), "first" + wanted);
        EXPECT_FALSE(std::filesystem::exists(historyPath + "-journal"));
    }
}

TEST_F(HistoryTest, LosesNothingButADamagedState) {
    std::vector<std::string> texts;
    for (int i = 0; i < 20; ++i) {
        texts.push_back("# " + std::to_string(random()) + "\n");
        Edit("edit " + std::to_string(i), texts.back());
    }
    Database(historyPath, Database::Access::Write)
        .Run("UPDATE states SET data = zeroblob(length(data)) WHERE digest = '" +
             DigestOf(texts[9]) + "'");
    History history(path);
    EXPECT_EQ(history.Read().entries.size(), 20U);
    int damaged = 0;
    for (std::string const& text : texts)
        try {
            EXPECT_EQ(history.TextOf(DigestOf(text)), text);
        } catch (std::exception const&) {
            ++damaged;
        }
    EXPECT_EQ(damaged, 1);
}

TEST_F(HistoryTest, KeepsWhoAndWhatLongerThanTheStates) {
    Edit("edit 0", "#\n");
    HistoryWriter(path).KeepAtMost(1);
    std::string text;
    for (int i = 1; i < 60; ++i) {
        text.clear();
        for (int k = 0; k < 30000; ++k)
            text += static_cast<char>(random() % 90 + 32);
        Edit("edit " + std::to_string(i), text);
    }
    EXPECT_LE(std::filesystem::file_size(historyPath), (1 << 20) + 65536); // And the last edit.
    History history(path);
    std::vector<HistoryEntry> const entries = history.Read().entries;
    ASSERT_EQ(entries.size(), 60U);
    EXPECT_EQ(entries[0].note.command, "edit 0");
    EXPECT_EQ(entries[0].note.message, "why");
    EXPECT_FALSE(history.TextOf(entries[1].after));
    EXPECT_TRUE(history.TextOf(entries[59].after) == text);
    EXPECT_TRUE(history.TextOf(entries[59].before));
}

} // namespace
} // namespace CallRecordingUtils
