// The matching operations: item lists, exclusions, the matcher with its counters, sides of a call.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "support/SlowMatcher.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {

namespace {

using SlowMatcher::Counts;
using SlowMatcher::CountsOf;

class Matching : public testing::Test {
  protected:
    Matching() { dir.UseAsConfiguration(); }

    TempDir dir;
    CCallRecordingAssistant assistant{false};
};

struct ItemRow {
    char const* list;
    std::vector<std::string> accepted;
    std::vector<std::string> rejected;
};

/// Every candidate is in the one list of its row or the other, as isAccepted says.
template <std::size_t N, typename IsAccepted>
void ExpectAnswers(ItemRow const (&rows)[N], IsAccepted isAccepted) {
    for (ItemRow const& row : rows) {
        for (std::string const& candidate : row.accepted)
            EXPECT_TRUE(isAccepted(row.list, candidate)) << row.list << " " << candidate;
        for (std::string const& candidate : row.rejected)
            EXPECT_FALSE(isAccepted(row.list, candidate)) << row.list << " " << candidate;
    }
}

TEST_F(Matching, ItemListsAcceptWholeCandidates) {
    ItemRow const rows[] = {
        {"1-5", {"1", "3", "5"}, {"0", "6", "05", "15", ""}},
        {"10-20", {"10", "15", "20"}, {"9", "100", "21", "1"}},
        {"10-200", {"10", "100", "150", "200"}, {"201", "1000", "010"}},
        {"00-59", {"00", "07", "59"}, {"7", "60", "007"}},
        {"0-9", {"0", "7"}, {"07", "a"}},
        {"1-9", {"1"}, {"12"}},
        {"a-f", {"a", "c", "f"}, {"g", "A", "ab", "5"}},
        {"a-bc", {"a", "b", "aac"}, {"ac", "c", "bc"}}, // The low part grows to "ac".
        {"1,3,5", {"3"}, {"2", "35"}},
        {"1?3", {"123", "1x3"}, {"13", "1234", "2x3"}},
        {"?", {"1", "*", "\xff"}, {"12"}},
        {"12,1", {"12", "1"}, {"2"}},
        {"!5", {}, {"5", "6"}},
        {"!5,1-9", {"5", "6"}, {"10"}},
        {"1-9,!5", {"5"}, {}},
        {"", {}, {"1", ""}},
        {"1-20", {"5a"}, {"a5", "05"}}, // Valued by the leading digits.
        {"5-99999999999", {"2147483648"}, {"4"}},
        {"1,{,2", {"1", "2"}, {"{"}},
        {"1,2-", {"1", "2"}, {"-"}},
    };
    ExpectAnswers(rows, [this](char const* list, std::string const& candidate) {
        wild_card_counts counts;
        bool const isAccepted = assistant.IsInRange(list, candidate, counts, true);
        EXPECT_TRUE(isAccepted || CountsOf(counts) == Counts()) << list << " " << candidate;
        return isAccepted;
    });
}

TEST_F(Matching, ExclusionsStandAnywhereInTheList) {
    ItemRow const rows[] = {
        // Here "accepted" means: survives.
        {"0-9,!5", {"4", ""}, {"5"}},
        {"!5,!7,0-9", {"6"}, {"5", "7"}},
        {"100-199,!150", {"151"}, {"150"}},
        {"1-9", {"1", "x"}, {}},
        {"0-9,!?", {"12"}, {"1", "x"}},
        {"", {"1"}, {}},
        {"1,!", {"1"}, {}},
        {"1-9,!3-5", {"2", "6"}, {"3", "4", "5"}},
        {"1,!!", {"1", "!"}, {}},
    };
    ExpectAnswers(rows, [this](char const* list, std::string const& candidate) {
        return assistant.Exclude(list, candidate);
    });
}

struct MatchRow {
    char const* pattern;
    char const* address;
    Counts counts; // What the match adds.
};

TEST_F(Matching, MatchesWithTheCountsOfTheShortestRuns) {
    MatchRow const rows[] = {
        {"", "", {}},
        {"*", "", {0, 0, 0, 0, 0, 0, 1}},
        {"**", "12", {0, 0, 0, 0, 0, 0, 2}},
        {"12*", "12", {2, 0, 0, 0, 0, 0, 1}},
        {"*45", "4512345", {2, 0, 0, 0, 0, 0, 1}},
        {"1?3", "1x3", {2, 0, 1, 0, 0, 0, 0}},
        {"[1-3]5", "25", {1, 1, 0, 0, 1, 0, 0}},
        {"[1,?]", "1", {0, 1, 0, 0, 1, 0, 0}},
        {"[1,?]", "2", {0, 0, 0, 1, 1, 0, 0}},
        {"[a-c,!b]", "c", {0, 1, 0, 0, 1, 0, 0}},
        {"9<1-20>", "915", {1, 2, 0, 0, 0, 1, 0}}, // The 1 of 15, then what remains.
        {"<1,12>", "12", {0, 3, 0, 0, 0, 1, 0}},   // What 1 consumed of 12 stays counted.
        {"<1,11>*", "111", {0, 1, 0, 0, 0, 1, 1}},
        {"<1,11>1", "111", {1, 3, 0, 0, 0, 1, 0}},
        {"<?,?4><?,?4>5", "4445", {1, 1, 0, 3, 0, 2, 0}},
        {"*[1,?]*2", "3112", {1, 0, 0, 1, 1, 0, 2}},
        {"<?3,?>*[2,?]", "123", {0, 0, 0, 2, 1, 1, 1}},
        {"12{3-5}", "129", {2, 0, 0, 0, 0, 0, 0}}, // "{" ends the match with success.
        {"*5}", "1525", {1, 0, 0, 0, 0, 0, 1}},
        {"<1-3> ", "1234", {0, 1, 0, 0, 0, 1, 0}},
    };
    for (MatchRow const& row : rows)
        EXPECT_EQ(SlowMatcher::LibraryMatch(assistant, row.address, row.pattern), row.counts)
            << row.pattern << " " << row.address;
}

TEST_F(Matching, RejectsNearMisses) {
    std::pair<char const*, char const*> const rows[] = {
        {"", "1"},          {"?", ""},        {"5", ""},          {"[5]", ""},
        {"<5>", ""},        {"12*", "1"},     {"1?3", "13"},      {"1?3", "1234"},
        {"abc", "ABC"},     {"[1-3]5", "45"}, {"[1-3]5", "225"},  {"[1,3]", "2"},
        {"<10-20>", "21"},  {"[!5]", "6"},    {"<!5,!6>", "7"},   {"[1", "1"},
        {"*<1", "1"},       {"*[", "1"},      {"<1-9,!5>", "5"},  {"*a*b", "bbbba"},
        {"1*2*3", "1213x"}, {"<1-9>*4", "5"}, {"<00-99>5", "12"},
    };
    for (auto const& [pattern, address] : rows) {
        wild_card_counts counts;
        EXPECT_FALSE(assistant.IsMatching(address, pattern, counts)) << pattern << " " << address;
        EXPECT_EQ(CountsOf(counts), Counts()) << pattern << " " << address;
    }
}

TEST_F(Matching, CountsConstructsOutsideGroups) {
    std::pair<char const*, Counts> const rows[] = {
        {"1?[2-4]<10-20>*", {1, 0, 1, 0, 1, 1, 1}},
        {"", {}},
        {"a-b,{1}", {3, 0, 0, 0, 0, 0, 0}},
        {"1[2?*", {1, 0, 0, 0, 1, 0, 0}}, // Not closed: nothing after it counts.
        {"<1?", {0, 0, 0, 0, 0, 1, 0}},
    };
    for (auto const& [pattern, expected] : rows) {
        wild_card_counts counts;
        assistant.GetCountOfWildCard(pattern, counts);
        EXPECT_EQ(CountsOf(counts), expected) << pattern;
    }
    for (char c : std::string("7xZ#^/_=+%~@;().:$&'"))
        EXPECT_TRUE(assistant.IsAvailableSymbol(c)) << c;
    for (char c : std::string("*?[]<>{},-!\\ \"|\x80\xe9\xff"))
        EXPECT_FALSE(assistant.IsAvailableSymbol(c)) << c;
    EXPECT_TRUE(assistant.IsCharacter("a"));
    for (char const* text : {"ab", "1", "", "\xe9"})
        EXPECT_FALSE(assistant.IsCharacter(text)) << text;
}

// Nothing here may take long or much stack: the caller chooses the address.
TEST_F(Matching, HostileTextsEndSoon) {
    std::string const manyA(2000, 'a');
    std::string stars, ranges, sets;
    for (int i = 0; i < 40; ++i)
        stars += "*a";
    for (int i = 0; i < 30; ++i)
        ranges += "<a,aa,1-99>";
    for (int i = 0; i < 100000; ++i)
        sets += "[1-9]";
    std::string const huge(1 << 20, '5');
    wild_card_counts counts;
    EXPECT_FALSE(assistant.IsMatching(manyA, stars + "*b", counts));
    EXPECT_FALSE(assistant.IsMatching(manyA, "*" + ranges + "*b", counts));
    EXPECT_TRUE(assistant.IsMatching(manyA + "b", "*" + ranges + "*b", counts));
    EXPECT_TRUE(assistant.IsMatching(huge, huge, counts));
    EXPECT_FALSE(assistant.IsMatching(huge, sets, counts));
    EXPECT_TRUE(assistant.IsMatching(huge, "*5*" + sets, counts));
    EXPECT_FALSE(assistant.IsMatching(huge, "<1-9>*<1-9>6", counts));
    EXPECT_FALSE(assistant.IsMatching("1", std::string(1 << 20, '*') + "2", counts));
}

struct SideRow {
    CallParams side;
    CallType type;
    char const* pattern;
    CallType ruleType;
    bool matches;
};

TEST_F(Matching, SidesByCallType) {
    auto const side = [](char const* user, char const* host, char const* port) {
        return CallParams{user, {}, host, port};
    };
    SideRow const rows[] = {
        {side("201", "", ""), CALL_TYPE_NUMBER, "2*", CALL_TYPE_NUMBER, true},
        {side("201", "", ""), CALL_TYPE_NUMBER2, "2*", CALL_TYPE_NUMBER2, true},
        {side("201", "", ""), CALL_TYPE_NUMBER2, "*", CALL_TYPE_NUMBER, false},
        {side("201", "", ""), CALL_TYPE_NUMBER, "*", CALL_TYPE_NUMBER2, false},
        {side("201", "pbx", "5070"), CALL_TYPE_SIP, "201@pbx", CALL_TYPE_SIP, true},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "201@pbx:", CALL_TYPE_SIP, true},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "2*@p?x:<5060-5069>", CALL_TYPE_SIP, true},
        {side("201", "pbx", ""), CALL_TYPE_SIP, "201@pbx:5060", CALL_TYPE_SIP, false},
        {side("201", "pbx", ""), CALL_TYPE_SIP, "201@pbx", CALL_TYPE_SIP, true},
        {side("", "", ""), CALL_TYPE_SIP, "@", CALL_TYPE_SIP, true},
        {side("a@b", "c", ""), CALL_TYPE_SIP, "a@b@c", CALL_TYPE_SIP, true},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "201", CALL_TYPE_SIP, false},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "*", CALL_TYPE_SIP, false},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "sip:201@pbx", CALL_TYPE_SIP, false},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "201", CALL_TYPE_ANY, true},
        {side("201", "pbx", "5060"), CALL_TYPE_SIP, "201@pbx", CALL_TYPE_ANY, false},
        {side("201", "", ""), CALL_TYPE_NUMBER, "", CALL_TYPE_NUMBER, false},
        {side("", "", ""), CALL_TYPE_NUMBER, "", CALL_TYPE_ANY, false},
        {side("201", "", ""), CALL_TYPE_ANY, "*", CALL_TYPE_ANY, true},
        {side("5", "", ""), CALL_TYPE_ANY, "5", CALL_TYPE_ANY, false},
        {side("5", "", ""), static_cast<CallType>(7), "*", CALL_TYPE_ANY, true},
    };
    for (SideRow const& row : rows)
        EXPECT_EQ(assistant.IsSideMatched(row.side, row.type, row.pattern, row.ruleType),
                  row.matches)
            << row.pattern << " of type " << row.ruleType << " for type " << row.type;
}

TEST_F(Matching, SipAddressesSplitAtTheirLastSeparators) {
    struct Row {
        char const *address, *user, *host, *port;
        bool found;
    } const rows[] = {
        {"201@pbx:5060", "201", "pbx", "5060", true},
        {"201@pbx", "201", "pbx", "", true},
        {"1@2@3", "1@2", "3", "", true},
        {"sip:201@pbx", "u", "h", "201@pbx", false},
        {"1234", "u", "h", "", false},
        {"@:", "", "", "", true},
    };
    for (Row const& row : rows) {
        std::string user = "u", host = "h", port = "p";
        EXPECT_EQ(assistant.ParseSIPAddress(row.address, user, host, port), row.found);
        EXPECT_EQ(user + "|" + host + "|" + port,
                  std::string(row.user) + "|" + row.host + "|" + row.port)
            << row.address;
    }
    std::string text = "1@2:3", host;
    EXPECT_TRUE(assistant.ParseSIPAddress(text, text, host)); // An output may be the input.
    EXPECT_EQ(text + "|" + host, "1|2:3");
}

} // namespace
} // namespace CallRecordingUtils
