// Edits taken back from the middle, and rules followed back, against lives that were lived without
// the edit.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "administration/edit/Reversal.h"
#include "administration/edit/RuleTrail.h"
#include "administration/inspection/ReadRules.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

/// An edit that means the same whatever was done before: it names its rule by the description.
struct NamedEdit {
    char kind; // add, modify, state, first, delete
    std::string name;
    std::string value;
};

/// Lives of such edits, with the text before each and after the last.
class ReversalTest : public testing::Test {
  protected:
    ReversalTest() { std::filesystem::create_directories(dir.Path("telephony")); }

    static std::optional<std::size_t> PlaceOf(RuleList const& rules, std::string const& name) {
        for (std::size_t i = 0; i < rules.size(); ++i)
            if (rules[i].description == name)
                return i;
        return std::nullopt;
    }

    std::string After(std::string const& text, NamedEdit const& named) {
        dir.WriteRules(text);
        RuleEdit edit(path);
        Rule rule;
        rule.description = named.name;
        auto const place = PlaceOf(edit.Before(), named.name);
        EXPECT_EQ(place.has_value(), named.kind != 'a') << named.name;
        if (place)
            rule = edit.Before()[*place];
        switch (named.kind) {
        case 'a': edit.Append(rule); break;
        case 's': edit.SetState(*place, rule.recording_rule_state != RULE_ENABLED); break;
        case 'f': edit.Move(*place, 0); break;
        case 'd': edit.Delete(*place); break;
        default: rule.record_to = named.value; edit.Set(*place, rule);
        }
        return edit.TextAfter();
    }

    void Live(int length) {
        edits.clear();
        texts = {""};
        for (int i = 0; i < length; ++i) {
            RuleList const rules = RulesOf(texts.back(), "life");
            bool const adds = i < 3 || rules.empty() || random() % 4 == 0;
            std::size_t const place = rules.empty() ? 0 : random() % rules.size();
            edits.push_back({adds ? 'a' : "msdf"[random() % (place > 0 ? 4 : 3)],
                             adds ? std::to_string(i) : rules[place].description,
                             "to " + std::to_string(i)});
            texts.push_back(After(texts.back(), edits.back()));
        }
    }

    TempDir dir;
    std::string const path = dir.Path(TempDir::RULE_FILE);
    std::mt19937 random{1}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
    std::vector<NamedEdit> edits;
    std::vector<std::string> texts;
};

/// The rules without their identifiers, which belong to places; the one named last comes last.
std::vector<std::string> Contents(std::string const& text, std::string const& last) {
    std::vector<std::string> contents, end;
    for (Rule rule : RulesOf(text, "life")) {
        rule.callrecordingrule_id = 0;
        (rule.description == last ? end : contents).push_back(AllFields(rule));
    }
    contents.insert(contents.end(), end.begin(), end.end());
    return contents;
}

TEST_F(ReversalTest, IsTheSameLifeWithoutTheEdit) {
    int taken = 0, refused = 0;
    for (int life = 0; life < 150 && !HasFailure(); ++life) {
        Live(9);
        std::size_t const middle = 3 + random() % 6;
        NamedEdit const& edit = edits[middle];
        SCOPED_TRACE(testing::Message() << life << ": " << edit.kind << " " << edit.name);
        Reversal reversal(texts[middle], texts[middle + 1]);
        bool isTouched = false, isNamedAgain = false, hasMoves = false;
        for (std::size_t i = middle + 1; i < edits.size(); ++i) {
            isTouched = !reversal.Follow(texts[i + 1]).empty() || isTouched;
            isNamedAgain = isNamedAgain || edits[i].name == edit.name;
            hasMoves = hasMoves || edits[i].kind == 'f';
        }
        EXPECT_TRUE(isNamedAgain || !isTouched || hasMoves);
        if (reversal.IsEmpty() || isTouched) {
            ++refused;
            continue;
        }
        ++taken;
        std::string without = texts[middle];
        for (std::size_t i = middle + 1; i < edits.size(); ++i)
            without = After(without, edits[i]);
        dir.WriteRules(texts.back());
        RuleEdit now(path);
        reversal.TakeBack(now);
        // Where the rule itself goes is a choice once others have moved.
        bool const isPlaceOpen = hasMoves && (edit.kind == 'f' || edit.kind == 'd');
        std::string const open = isPlaceOpen ? edit.name : "";
        EXPECT_EQ(Contents(now.TextAfter(), open), Contents(without, open));
        EXPECT_TRUE(middle + 1 < edits.size() || now.TextAfter() == texts[middle]);
        std::int32_t last = -1;
        for (Rule const& rule : now.After())
            EXPECT_LT(std::exchange(last, rule.callrecordingrule_id), rule.callrecordingrule_id);
    }
    EXPECT_GT(taken, 50);
    EXPECT_GT(refused, 20);
}

TEST_F(ReversalTest, FollowsEachRuleThroughItsLife) {
    for (int life = 0; life < 30; ++life) {
        Live(9);
        for (Rule const& rule : RulesOf(texts.back(), "life")) {
            RuleTrail trail(RulesOf(texts.back(), "life"), rule.callrecordingrule_id);
            for (std::size_t i = edits.size(); i-- > 0;) {
                RuleList const before = RulesOf(texts[i], "life");
                auto const change = trail.StepBack(before);
                EXPECT_TRUE(change || edits[i].name != rule.description) << i;
                if (change) {
                    Rule const* const it = change->before ? change->before : change->after;
                    EXPECT_EQ(it->description, rule.description);
                }
            }
        }
    }
}

} // namespace
} // namespace CallRecordingUtils
