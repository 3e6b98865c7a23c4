// Matching and deciding: item lists, the matcher and its counters, sides of a call, whole rules.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "support/Edits.h"
#include "support/SlowMatcher.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {

namespace {

using SlowMatcher::Counts;
using SlowMatcher::CountsOf;

class Matching : public testing::Test {
  protected:
    Matching() { dir.UseAsConfiguration(); }

    void Load(std::string const& rules) {
        dir.WriteRules(rules);
        ASSERT_TRUE(assistant.ReloadCallRecordingRules());
    }

    TempDir dir;
    CCallRecordingAssistant assistant{false};
};

TEST_F(Matching, GroupsAdmitWholeCandidates) {
    struct {
        std::string list;
        std::vector<std::string> admitted, others;
    } const rows[] = {
        {"1-5", {"1", "3", "5"}, {"0", "6", "05", "15", ""}},
        {"10-20", {"10", "15", "20"}, {"9", "100", "21", "1"}},
        {"10-200", {"10", "100", "150", "200"}, {"201", "1000", "010"}},
        {"00-59", {"00", "07", "59"}, {"7", "60", "007"}},
        {"0-9", {"0", "7"}, {"07", "a"}},
        {"a-f", {"a", "c", "f"}, {"g", "A", "ab", "5"}},
        {"a-bc", {"a", "b", "aac"}, {"ac", "c", "bc"}}, // The low part grows to "ac".
        {"1?3,?", {"123", "1x3", "2", "*", "\xff"}, {"13", "1234", "2x3"}},
        {"5-20", {"5a"}, {"a5", "05"}}, // The value is that of the leading digits.
        {"1-2,1-3,?-1-0", {"3", "10"}, {"5", "11"}},
        {"5-99999999999", {"2147483648"}, {"4"}},
        {"1,{,2-", {"1", "2"}, {"{", "-"}},
        {"!5,!7,0-9", {"6"}, {"5", "7", "10"}},
        {"100-199,!150", {"151"}, {"150"}},
        {"1-9,!3-5", {"2", "6"}, {"3", "4", "5"}},
        {"!5", {}, {"5", "6"}},
        {"1,!,2,!!", {"1", "2"}, {"!"}},
    };
    for (auto const& [list, admitted, others] : rows) {
        auto const expect = [&, list = list](std::string const& candidate, bool isAdmitted) {
            SCOPED_TRACE(list + " " + candidate);
            wild_card_counts counts, ungrouped;
            bool const accepts = assistant.IsInRange(list, candidate, counts, true);
            EXPECT_EQ(accepts && assistant.Exclude(list, candidate), isAdmitted);
            EXPECT_TRUE(accepts || CountsOf(counts) == Counts());
            assistant.IsInRange(list, candidate, ungrouped, false);
            EXPECT_EQ(ungrouped.symbol_count, counts.grouped_symbol_count);
            EXPECT_EQ(ungrouped.question_count, counts.grouped_question_count);
            EXPECT_EQ(assistant.IsMatching(candidate + "/", "<" + list + ">/*", counts),
                      isAdmitted);
        };
        for (std::string const& candidate : admitted)
            expect(candidate, true);
        for (std::string const& candidate : others)
            expect(candidate, false);
    }
}

TEST_F(Matching, MatchesWithTheCountsOfTheShortestRuns) {
    struct {
        char const *pattern, *address;
        Counts counts; // What the match adds to them.
    } const rows[] = {
        {"", "", {}},
        {"*45", "4512345", {2, 0, 0, 0, 0, 0, 1}},
        {"1?3**", "1x3", {2, 0, 1, 0, 0, 0, 2}},
        {"[1-3]5", "25", {1, 1, 0, 0, 1, 0, 0}},
        {"[a-c,!b]", "c", {0, 1, 0, 0, 1, 0, 0}},
        {"9<1-20>", "915", {1, 2, 0, 0, 0, 1, 0}}, // The 1 of 15, then what remains.
        {"<1,12>", "12", {0, 3, 0, 0, 0, 1, 0}},   // What 1 consumed of 12 still counts.
        {"<?,?4><?,?4>5", "4445", {1, 1, 0, 3, 0, 2, 0}},
        {"*[1,?]*2", "3112", {1, 0, 0, 1, 1, 0, 2}},
        {"<?3,?>*[2,?]", "123", {0, 0, 0, 2, 1, 1, 1}},
    };
    for (auto const& [pattern, address, expected] : rows) {
        EXPECT_EQ(SlowMatcher::LibraryMatch(assistant, address, pattern), expected) << pattern;
        wild_card_counts counts;
        assistant.GetCountOfWildCard(pattern, counts);
        counts.grouped_symbol_count = expected[1];
        counts.grouped_question_count = expected[3];
        EXPECT_EQ(CountsOf(counts), expected) << pattern;
    }
    wild_card_counts odd;
    assistant.GetCountOfWildCard("a-b,{1}[2?*", odd); // Not closed: nothing after it counts.
    EXPECT_EQ(CountsOf(odd), (Counts{3, 0, 0, 0, 1, 0, 0}));
    EXPECT_TRUE(assistant.IsMatching("129", "12{3-5}", odd)); // "{" ends the match with success.

    std::pair<char const*, char const*> const misses[] = {
        {"1?3", "1234"},   {"abc", "ABC"},     {"[1-3]5", "225"}, {"[1", "1"},
        {"*a*b", "bbbba"}, {"1*2*3", "1213x"}, {"<1-9>*4", "5"},  {"<00-99>5", "12"},
    };
    for (auto const& [pattern, address] : misses) {
        wild_card_counts counts;
        EXPECT_FALSE(assistant.IsMatching(address, pattern, counts)) << pattern << " " << address;
        EXPECT_EQ(CountsOf(counts), Counts()) << pattern << " " << address;
    }
    for (char c : std::string("7xZ#^/_=+%~@;().:$&'"))
        EXPECT_TRUE(assistant.IsAvailableSymbol(c)) << c;
    for (char c : std::string("*?[]<>{},-!\\ \"|\x80\xe9\xff"))
        EXPECT_FALSE(assistant.IsAvailableSymbol(c)) << c;
    EXPECT_TRUE(assistant.IsCharacter("a"));
    for (char const* text : {"ab", "1", "", "\xe9"})
        EXPECT_FALSE(assistant.IsCharacter(text)) << text;
}

/// Returns every text of at most `length` pieces.
std::vector<std::string> Texts(int length, std::vector<std::string> const& pieces) {
    std::vector<std::string> texts{""};
    for (auto const& shorter : length > 0 ? Texts(length - 1, pieces) : std::vector<std::string>{})
        for (auto const& piece : pieces)
            texts.push_back(piece + shorter);
    return texts;
}

TEST_F(Matching, AgreesWithASlowMatcher) {
    auto const addresses = Texts(5, {"1", "2"});
    for (auto const& pattern : Texts(4, {"1", "?", "*", "[2,!1]", "[1?,?]", "<1,12>", "<1-21,!12>",
                                         "<1??,2?>", "<1-12>", "]"}))
        for (auto const& tail : {"", "<"}) // Not closed.
            for (auto const& address : addresses)
                ASSERT_EQ(SlowMatcher::Match(assistant, address, pattern + tail),
                          SlowMatcher::LibraryMatch(assistant, address, pattern + tail))
                    << pattern << tail << " against " << address;
}

// With rows of positions that take several words, and runs of several digits.
TEST_F(Matching, AgreesWithASlowMatcherOverLongAddresses) {
    std::mt19937 random(1);
    auto const below = [&](std::size_t bound) { return random() % bound; };
    std::vector<std::string> const pieces{"1",       "2",           "?",          "*",
                                          "[2,!1]",  "<1-9,10-99>", "<1,12,121>", "<1-212,!12>",
                                          "<00-21>", "<1??,2?>",    "<a-bc,1>",   "]"};
    int matched = 0;
    for (int i = 0; i < 1000; ++i) {
        std::string pattern, address;
        for (std::size_t n = 2 + below(6); n > 0; --n)
            pattern += pieces[below(pieces.size() - (n > 1 ? 1 : 0))];
        for (std::size_t n = below(15) > 0 ? below(12) : 55 + below(90); n > 0; --n)
            address += static_cast<char>('1' + below(2));
        auto const answer = SlowMatcher::LibraryMatch(assistant, address, pattern);
        ASSERT_EQ(SlowMatcher::Match(assistant, address, pattern), answer)
            << pattern << " against " << address;
        // A decision asks for no counts.
        ASSERT_EQ(assistant.IsSideMatched({address, {}, "", ""}, CALL_TYPE_NUMBER, pattern,
                                          CALL_TYPE_NUMBER),
                  answer.has_value());
        // A SIP pattern without a port takes every port.
        std::string const host = address.substr(0, below(address.size() + 1)) + (i % 2 ? ":" : "");
        ASSERT_EQ(assistant.IsSideMatched({address, {}, host, "1"}, CALL_TYPE_SIP, pattern + "@*",
                                          CALL_TYPE_SIP),
                  SlowMatcher::Match(assistant, address + "@" + host + ":1", pattern + "@*:*")
                      .has_value())
            << pattern << " against " << address << "@" << host;
        matched += answer ? 1 : 0;
    }
    EXPECT_GT(matched, 100);
}

// Nothing here may take much time or stack: callers choose their addresses.
TEST_F(Matching, HostileTextsEndSoon) {
    auto const repeated = [](int times, char const* part) {
        std::string text;
        while (times-- > 0)
            text += part;
        return text;
    };
    std::string const manyA(2000, 'a'), huge(1 << 20, '5');
    std::string const ranges = "*" + repeated(30, "<a,aa,1-99>") + "*b";
    std::string const sets = repeated(100000, "[1-9]");
    wild_card_counts counts;
    EXPECT_FALSE(assistant.IsMatching(manyA, repeated(40, "*a") + "*b", counts));
    EXPECT_FALSE(assistant.IsMatching(manyA, ranges, counts));
    EXPECT_TRUE(assistant.IsMatching(manyA + "b", ranges, counts));
    EXPECT_TRUE(assistant.IsMatching(huge, huge, counts));
    EXPECT_FALSE(assistant.IsMatching(huge, sets, counts));
    EXPECT_TRUE(assistant.IsMatching(huge, "*5*" + sets, counts));
    EXPECT_FALSE(assistant.IsMatching(huge, "<1-9>*<1-9>6", counts));
    EXPECT_FALSE(assistant.IsMatching("1", std::string(1 << 20, '*') + "2", counts));
    CallParams const side{manyA, {}, huge, ""};
    EXPECT_TRUE(assistant.IsSideMatched(side, CALL_TYPE_SIP, "a*a@5*5", CALL_TYPE_SIP));
    EXPECT_FALSE(assistant.IsSideMatched(side, CALL_TYPE_SIP, "a*a@5*6", CALL_TYPE_SIP));
}

TEST_F(Matching, SidesByCallType) {
    auto const side = [](char const* user, char const* host, char const* port) {
        return CallParams{user, {}, host, port};
    };
    CallParams const number = side("201", "", ""), sip = side("201", "pbx", "5060");
    CallParams const noPort = side("201", "pbx", "");
    struct {
        CallParams side;
        CallType type;
        char const* pattern;
        CallType ruleType;
        bool matches;
    } const rows[] = {
        {number, CALL_TYPE_NUMBER, "2*", CALL_TYPE_NUMBER, true},
        {number, CALL_TYPE_NUMBER2, "2*", CALL_TYPE_NUMBER2, true},
        {number, CALL_TYPE_NUMBER2, "*", CALL_TYPE_NUMBER, false},
        {number, CALL_TYPE_NUMBER, "*", CALL_TYPE_NUMBER2, false},
        {number, CALL_TYPE_NUMBER, "", CALL_TYPE_NUMBER, false},
        {number, CALL_TYPE_ANY, "*", CALL_TYPE_ANY, true},
        {number, CALL_TYPE_ANY, "201", CALL_TYPE_ANY, false},
        {number, static_cast<CallType>(7), "*", CALL_TYPE_ANY, true},
        {side("", "", ""), CALL_TYPE_NUMBER, "", CALL_TYPE_ANY, false},
        {sip, CALL_TYPE_SIP, "201@pbx", CALL_TYPE_SIP, true},
        {sip, CALL_TYPE_SIP, "201@pbx:", CALL_TYPE_SIP, true},
        {sip, CALL_TYPE_SIP, "2*@p?x:<5060-5069>", CALL_TYPE_SIP, true},
        {sip, CALL_TYPE_SIP, "2*@p?x:<5061-5069>", CALL_TYPE_SIP, false},
        {sip, CALL_TYPE_SIP, "201", CALL_TYPE_SIP, false},
        {sip, CALL_TYPE_SIP, "*", CALL_TYPE_SIP, false},
        {sip, CALL_TYPE_SIP, "sip:201@pbx", CALL_TYPE_SIP, false},
        {sip, CALL_TYPE_SIP, "201", CALL_TYPE_ANY, true},
        {sip, CALL_TYPE_SIP, "201@pbx", CALL_TYPE_ANY, false},
        {noPort, CALL_TYPE_SIP, "201@pbx:5060", CALL_TYPE_SIP, false},
        {noPort, CALL_TYPE_SIP, "201@pbx", CALL_TYPE_SIP, true},
        {side("", "", ""), CALL_TYPE_SIP, "@", CALL_TYPE_SIP, true},
        {side("a@b", "c", ""), CALL_TYPE_SIP, "a@b@c", CALL_TYPE_SIP, true},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.pattern);
        EXPECT_EQ(assistant.IsSideMatched(row.side, row.type, row.pattern, row.ruleType),
                  row.matches);
        for (bool const isCaller : {true, false}) {
            CallRecordingRuleParams rule;
            (isCaller ? rule.caller_pattern : rule.called_pattern) = row.pattern;
            (isCaller ? rule.called_pattern : rule.caller_pattern) = "*";
            (isCaller ? rule.caller_call_type : rule.called_call_type) = row.ruleType;
            Load(Section(rule));
            EXPECT_EQ(
                assistant.IsCallRecordingAllowed(row.side, row.type, row.side, row.type, nullptr),
                row.matches);
        }
    }
}

TEST_F(Matching, TheFirstEnabledRuleWithBothSidesDecides) {
    CallRecordingRuleParams const first = Rule(2, "20?", CALL_TYPE_NUMBER, "0044*", CALL_TYPE_ANY);
    CallRecordingRuleParams const second =
        Rule(3, "2*", CALL_TYPE_ANY, "00*", CALL_TYPE_NUMBER, "there");
    Load(Section(Disabled(kTwinOfA)) + Section(first) + Section(second));
    for (auto const& [from, to, expected] : {std::tuple{"201", "00441", &first},
                                             {"211", "00441", &second},
                                             {"201", "0041", &second},
                                             {"201", "100", &kB},
                                             {"300", "00441", &kB}}) {
        CallRecordingRuleParams rule = kB; // Stays as it is if no rule decides.
        EXPECT_EQ(assistant.IsCallRecordingAllowed({from, {}, "", ""}, CALL_TYPE_NUMBER,
                                                   {to, {}, "", ""}, CALL_TYPE_NUMBER, &rule),
                  expected != &kB);
        EXPECT_EQ(Section(rule), Section(*expected));
    }
}

/// Returns the identifiers of the rules that decide some calls, found by testing every rule.
std::string DecidedOneByOne(CCallRecordingAssistant const& assistant,
                            std::vector<CallRecordingRuleParams> const& rules) {
    std::string ids;
    for (int number = 100; number < 400; number += 7) {
        CallParams const side{std::to_string(number), {}, "", ""};
        auto const takes = [&](CallRecordingRuleParams const& rule) {
            auto const matches = [&](std::string const& pattern, CallType type) {
                return assistant.IsSideMatched(side, CALL_TYPE_NUMBER, pattern, type);
            };
            return rule.recording_rule_state == RULE_ENABLED &&
                   matches(rule.caller_pattern, rule.caller_call_type) &&
                   matches(rule.called_pattern, rule.called_call_type);
        };
        auto const rule = std::find_if(rules.begin(), rules.end(), takes);
        ids += rule == rules.end() ? " -" : " " + std::to_string(rule->callrecordingrule_id);
    }
    return ids;
}

std::string Decided(CCallRecordingAssistant& assistant) {
    std::string ids;
    for (int number = 100; number < 400; number += 7) {
        CallParams const side{std::to_string(number), {}, "", ""};
        CallRecordingRuleParams rule;
        ids +=
            assistant.IsCallRecordingAllowed(side, CALL_TYPE_NUMBER, side, CALL_TYPE_NUMBER, &rule)
                ? " " + std::to_string(rule.callrecordingrule_id)
                : " -";
    }
    return ids;
}

// Whatever is done to rules, list and file, a decision is what testing every rule gives.
TEST_F(Matching, DecisionsFollowWhateverIsDoneToTheRules) {
    std::string text;
    for (int id = 0; id < 120; ++id) {
        std::string const digits = std::to_string(id * 37 % 300 + 100);
        std::string const caller = id % 4 == 0 ? "*" + digits.substr(1) : "*";
        std::string const called = id % 3 == 0 ? digits.substr(0, 2) + "*" : digits;
        text += Section(Rule(id, caller.c_str(), CALL_TYPE_ANY, called.c_str(), CALL_TYPE_NUMBER));
    }
    Load(text);
    CCallRecordingDB& db = *CCallRecordingDB::GetInstance(true, false);
    std::mt19937 random(1);
    auto const anId = [&] { return std::to_string(random() % 120); };
    auto const expectSame = [&](char const* step) {
        std::vector<CallRecordingRuleParams> rules;
        db.VisitRules([&](CallRecordingRuleParams const& rule) { rules.push_back(rule); });
        EXPECT_EQ(Decided(assistant), DecidedOneByOne(assistant, rules)) << step;
    };
    for (int round = 0; round < 12; ++round) {
        EXPECT_TRUE(db.SetRuleState(anId(), false));
        EXPECT_TRUE(db.SetRuleState(anId(), true));
        expectSame("states");
        EXPECT_TRUE(db.ReOrderRule(anId(), round % 2 == 0));
        expectSame("moved in memory");
        EXPECT_TRUE(db.Reload());
        expectSame("reloaded");
        std::string const id = anId();
        CallRecordingRuleParams* const lent = db.GetSelectedRule(id);
        lent->called_pattern = "3*";
        expectSame("changed while lent");
        CallRecordingRuleParams copy;
        EXPECT_TRUE(db.CopyRule(id, copy));
        EXPECT_EQ(copy.called_pattern, "3*");
        EXPECT_TRUE(db.ModifyRule(&copy, false));
        EXPECT_TRUE(db.Reload());
        expectSame("returned by a reload");
    }
    CallRecordingRuleParams untouched = kB;
    EXPECT_FALSE(db.CopyRule("777", untouched));
    EXPECT_EQ(Section(untouched), Section(kB));

    auto& list = db.GetCallRecordingRules();
    EXPECT_TRUE(db.Reload()); // The reference outlives it.
    list.reverse();
    expectSame("the list reversed");
    list.insert(std::next(list.begin()), nullptr);
    delete list.front();
    list.pop_front();
    expectSame("the list cut, and a null entry in it");
    db.DestroyCallRecordList();
    expectSame("emptied");
    CCallRecordingDB::CloseInstance();
}

TEST_F(Matching, RulesAreLentWhileCallsAreDecided) {
    std::string text;
    for (int id = 100; id < 180; ++id)
        text += Section(Rule(id, "*", CALL_TYPE_ANY, std::to_string(id).c_str(), CALL_TYPE_NUMBER));
    Load(text);
    std::thread lender([&] {
        CCallRecordingDB& db = *CCallRecordingDB::GetInstance(true, false);
        EXPECT_NE(db.GetSelectedRule("150"), nullptr);
        EXPECT_EQ(db.GetCallRecordingRules().size(), 80U);
        CCallRecordingDB::CloseInstance();
    });
    std::string const first = Decided(assistant);
    lender.join();
    EXPECT_EQ(Decided(assistant), first);
}

TEST_F(Matching, ReloadSwitchesBetweenWholeLists) {
    std::string const odd = Section(Rule(1, "*", CALL_TYPE_ANY, "*", CALL_TYPE_ANY, "1"));
    std::string const even =
        Section(kC) + Section(Rule(2, "*", CALL_TYPE_ANY, "*", CALL_TYPE_ANY, "2"));
    Load(even);
    std::atomic<bool> done{false};
    std::thread decider([&] {
        CallParams const side{"6", {}, "", ""};
        while (!done) {
            CallRecordingRuleParams rule;
            EXPECT_TRUE(assistant.IsCallRecordingAllowed(side, CALL_TYPE_NUMBER, side,
                                                         CALL_TYPE_NUMBER, &rule));
            EXPECT_EQ(rule.record_to, std::to_string(rule.callrecordingrule_id));
        }
    });
    for (int i = 0; i < 100; ++i)
        Load(i % 2 == 0 ? odd : even);
    done = true;
    decider.join();
}

TEST_F(Matching, SipAddressesSplitAtTheirLastSeparators) {
    for (auto const& [address, parts] : {std::pair{"201@pbx:5060", "1 201|pbx|5060"},
                                         {"201@pbx", "1 201|pbx|"},
                                         {"1@2@3", "1 1@2|3|"},
                                         {"sip:201@pbx", "0 u|h|201@pbx"},
                                         {"1234", "0 u|h|"},
                                         {"@:", "1 ||"}}) {
        std::string user = "u", host = "h", port = "p";
        std::string const found =
            assistant.ParseSIPAddress(address, user, host, port) ? "1 " : "0 ";
        EXPECT_EQ(found + user + "|" + host + "|" + port, parts) << address;
    }
    std::string text = "1@2:3", host;
    EXPECT_TRUE(assistant.ParseSIPAddress(text, text, host)); // An output may be the input.
    EXPECT_EQ(text + "|" + host, "1|2:3");
    // Without a port, the output for it is emptied first. So one text for user and port gets the
    // user, and one text for address and port is empty when it is split.
    text = "1@2";
    std::string both = "p";
    EXPECT_TRUE(assistant.ParseSIPAddress(text, both, host, both));
    EXPECT_EQ(both + "|" + host, "1|2");
    EXPECT_FALSE(assistant.ParseSIPAddress(text, both, host, text));
    EXPECT_EQ(text + "|" + both + "|" + host, "|1|2");
    text = "1@2:3";
    EXPECT_TRUE(assistant.ParseSIPAddress(text, both, host, text));
    EXPECT_EQ(text + "|" + both + "|" + host, "3|1|2");
    EXPECT_TRUE(assistant.ParseSIPAddress("1@2:3", both, host, both));
    EXPECT_EQ(both, "3");
}

} // namespace
} // namespace CallRecordingUtils
