// The analysis of rules, held against brute force: item lists against all short candidates, rule
// sides and whole lists against every call of a small world.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "analysis/AutomatonPool.h"
#include "analysis/RuleAnalysis.h"
#include "matching/CallSide.h"
#include "matching/ItemList.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kStates = 10000;
using Texts = std::vector<std::string>;

Texts AllTexts(std::string const& alphabet, std::size_t longest) {
    Texts texts{""};
    for (std::size_t i = 0; i < texts.size() && texts[i].size() < longest; ++i)
        for (char const c : alphabet)
            texts.push_back(texts[i] + c);
    return texts;
}

/// Random choices, the same ones on every run; --gtest_shuffle with --gtest_random_seed gives
/// others.
class Choices {
  public:
    std::size_t Below(std::size_t count) { return random_() % count; }
    std::string const& From(Texts const& texts) { return texts[Below(texts.size())]; }
    std::string Join(Texts const& texts, std::size_t most, char const* between = "") {
        std::string joined = From(texts);
        for (std::size_t left = Below(most); left > 0; --left)
            joined += between + From(texts);
        return joined;
    }

  private:
    std::mt19937 random_{static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()) +
                         1};
};

bool Admits(ItemAutomaton const& automaton, std::string const& candidate) {
    std::uint32_t state = automaton.start;
    for (char const c : candidate)
        state = automaton.states[state].next[SymbolOf(c)];
    return automaton.states[state].isAccepting;
}

TEST(Analysis, ItemListsAdmitWhatTheMatcherAdmits) {
    Texts const items{"1",     "a",     "?",     "1?",   "12",
                      "a?1",   "0-9",   "1-5",   "5-20", "9-12",
                      "10-12", "00-12", "09-21", "1-05", "a-c",
                      "ab-cd", "a-bb",  "Z-b",   "!1",   "!?",
                      "!a?",   "!12",   "!1-5",  "1[2]", "15-99999999999",
                      "!00-10"};
    // Of each kind of byte that no pattern names there are two.
    Texts const candidates = AllTexts("0159abdz-!|\xff", 3);
    Choices choices;
    for (int round = 0; round < 80; ++round) {
        std::string const list = choices.Join(items, 4, ",");
        auto const [automaton, problem] = ReadItemList(list, kStates);
        ASSERT_FALSE(problem) << list;
        for (std::string const& candidate : candidates) {
            Consumed consumed;
            ASSERT_EQ(AdmitsCandidate(list, candidate, consumed), Admits(automaton, candidate))
                << list << " " << candidate;
        }
    }
    for (auto const& [list, candidate] :
         std::map<std::string, std::string>{{"2147483640-99999999999", "21474836409"},
                                            {"3-1234567890123", "2147483646x99"},
                                            {"1-2147483646", "2147483647"},
                                            {"7-2147483647", "9999999999"}}) {
        Consumed consumed;
        EXPECT_EQ(AdmitsCandidate(list, candidate, consumed),
                  Admits(ReadItemList(list, kStates).automaton, candidate))
            << list;
    }
    for (char const* list : {"1!2", "a-5", "1-2-3", "?-3", "1-", "1-5a"})
        EXPECT_EQ(Unreadable::OutsideTheLanguage, ReadItemList(list, kStates).problem) << list;
}

/// The addresses of a world that is complete for patterns of three characters, or of one in each
/// piece of a SIP address: "x" and "*" stand for all that they do not name.
std::vector<CallParty> World() {
    std::vector<CallParty> world;
    for (std::string const& text : AllTexts("0123x*", 3)) {
        world.push_back({{text, {}, "", ""}, CALL_TYPE_NUMBER});
        world.push_back({{text, {}, "", ""}, CALL_TYPE_NUMBER2});
        world.push_back({{text, {}, "x", ""}, CALL_TYPE_SIP});
    }
    for (std::string const& user : AllTexts("0123x", 1))
        for (char const* host : {"", "0", "1", "2", "3", "x", "1:1"})
            for (char const* port : {"", "0", "1", "2", "3", "x", "xx"})
                world.push_back({{user, {}, host, port}, CALL_TYPE_SIP});
    return world;
}

/// With runs, the shortest call that shows something may be longer than those of the world.
enum Runs { kWithoutRuns, kWithRuns };

CallRecordingRuleParams RandomRule(Choices& choices, Runs runs) {
    Texts const steps{"1", "2", "?", "[1-2]", "[?,!1]", "<1-2>", "<2,!?>", "<1-3,!2>"};
    Texts elements{"0", "1", "?", "[0-3,!2]", "<1-12>", "<00-12,!0?>", "<1?,2>", "<?0,3>"};
    if (runs == kWithRuns)
        elements.insert(elements.end(), {"*", "*"});
    auto const side = [&](std::string& pattern, CallType& type) {
        type = static_cast<CallType>(choices.Below(4));
        do {
            pattern = choices.From(elements) + (choices.Below(2) == 0 ? choices.From(steps) : "");
            if (runs == kWithRuns)
                pattern += choices.From(elements);
            if (type == CALL_TYPE_SIP)
                pattern = choices.From(steps) + '@' +
                          choices.From(runs == kWithRuns ? elements : steps) +
                          (choices.Below(2) == 0 ? ":" + choices.From(steps) : "");
        } while (ExplainStored(pattern, type) || pattern.size() > 20);
        if (choices.Below(4) == 0) {
            pattern = "*";
            type = CALL_TYPE_ANY;
        }
    };
    CallRecordingRuleParams rule;
    side(rule.caller_pattern, rule.caller_call_type);
    side(rule.called_pattern, rule.called_call_type);
    rule.record_to = std::to_string(choices.Below(3));
    rule.recording_rule_state = choices.Below(8) == 0 ? RULE_DISABLED : RULE_ENABLED;
    return rule;
}

RuleParamsList RandomRules(Choices& choices, Runs runs, std::size_t most) {
    RuleParamsList rules;
    for (std::size_t count = choices.Below(most) + 1; count > 0; --count)
        rules.push_back(RandomRule(choices, runs));
    return rules;
}

/// Which sets of rules there is a call for in the world: a bit for each rule that matches it.
std::set<unsigned> SetsOf(RuleParamsList const& rules) {
    static std::vector<CallParty> const world = World();
    std::set<unsigned> callers;
    std::set<unsigned> called;
    for (CallParty const& party : world) {
        CallSide const side(party.params, party.type);
        auto const isSatisfied = [&side](std::string const& pattern, CallType type) {
            return side.MaySatisfy(pattern, type) && side.Satisfies(pattern, type);
        };
        unsigned from = 0;
        unsigned to = 0;
        for (std::size_t i = 0; i < rules.size(); ++i) {
            from |= isSatisfied(rules[i].caller_pattern, rules[i].caller_call_type) ? 1U << i : 0;
            to |= isSatisfied(rules[i].called_pattern, rules[i].called_call_type) ? 1U << i : 0;
        }
        callers.insert(from);
        called.insert(to);
    }
    std::set<unsigned> sets;
    for (unsigned const from : callers)
        for (unsigned const to : called)
            sets.insert(from & to);
    return sets;
}

/// The first enabled rule of the set, from begin to end.
std::optional<std::size_t> First(unsigned set, RuleParamsList const& rules, std::size_t begin,
                                 std::size_t end) {
    for (std::size_t i = begin; i < end; ++i)
        if ((set >> i & 1) != 0 && rules[i].recording_rule_state == RULE_ENABLED)
            return i - begin;
    return std::nullopt;
}

/// Two lists, or a list and a claim, with what brute force knows of both.
struct Case {
    RuleParamsList rules;
    RuleParamsList others;
    std::set<unsigned> sets; // Of rules and others.
    bool isComplete;         // The world shows everything.
    std::size_t memory;      // Usual, or too little for most.
    std::size_t undecided = 0;

    void CountUndecided() { ++undecided; }
};

void CheckReports(Case& c) {
    std::map<std::size_t, std::set<std::size_t>> takers; // Of the calls of each rule; also itself.
    for (unsigned const set : c.sets)
        if (auto const decider = First(set, c.rules, 0, c.rules.size()))
            for (std::size_t i = *decider; i < c.rules.size(); ++i)
                if ((set >> i & 1) != 0)
                    takers[i].insert(*decider);
    RuleAnalysis analysis(c.rules, c.memory);
    for (std::size_t i = 0; i < c.rules.size(); ++i) {
        RuleReport const report = analysis.Report(i);
        if (report.standing == RuleReport::kUndecided) {
            c.CountUndecided();
            continue;
        }
        bool const isOn = c.rules[i].recording_rule_state == RULE_ENABLED;
        EXPECT_EQ(isOn, report.standing != RuleReport::kOff);
        if (!isOn)
            continue;
        bool const decides = report.standing == RuleReport::kDecides;
        EXPECT_EQ(decides, report.call.has_value());
        EXPECT_TRUE(decides ? DecidingPlace(c.rules, *report.call) == i : takers[i].count(i) == 0);
        bool const matches = c.isComplete && takers[i].empty();
        EXPECT_TRUE(!matches || report.standing == RuleReport::kMatchesNothing);
        std::set<std::size_t> expected = takers[i];
        expected.erase(i);
        std::set<std::size_t> const found(report.takenBy.begin(), report.takenBy.end());
        if (c.memory < kAnalysisMemory)
            continue;
        EXPECT_TRUE(std::includes(found.begin(), found.end(), expected.begin(), expected.end()));
        if (c.isComplete) {
            EXPECT_EQ(expected, found);
            EXPECT_EQ(decides, takers[i].count(i) != 0);
        }
    }
}

bool AreAlike(RuleParamsList const& rules, std::optional<std::size_t> rule,
              RuleParamsList const& others, std::optional<std::size_t> other) {
    return rule && other ? rules[*rule].record_to == others[*other].record_to
                         : rule.has_value() == other.has_value();
}

void CheckComparison(Case& c) {
    RuleParamsList both = c.rules;
    both.insert(both.end(), c.others.begin(), c.others.end());
    using Pair = std::pair<std::optional<std::size_t>, std::optional<std::size_t>>;
    std::set<Pair> expected;
    for (unsigned const set : c.sets) {
        Pair const pair{First(set, both, 0, c.rules.size()),
                        First(set, both, c.rules.size(), both.size())};
        if (!AreAlike(c.rules, pair.first, c.others, pair.second))
            expected.insert(pair);
    }
    Comparison const comparison = Compare(c.rules, c.others, c.memory);
    std::set<Pair> found;
    for (Difference const& difference : comparison.differences) {
        EXPECT_EQ(difference.here, DecidingPlace(c.rules, difference.call));
        EXPECT_EQ(difference.there, DecidingPlace(c.others, difference.call));
        EXPECT_TRUE(found.emplace(difference.here, difference.there).second);
    }
    if (!comparison.same)
        c.CountUndecided();
    EXPECT_TRUE(!comparison.same || *comparison.same == found.empty());
    EXPECT_TRUE(comparison.same != true || expected.empty());
    if (c.memory < kAnalysisMemory)
        return;
    EXPECT_TRUE(std::includes(found.begin(), found.end(), expected.begin(), expected.end()));
    EXPECT_TRUE(!c.isComplete || expected == found);
}

/// Claims about the calls that the first of the others matches.
void CheckProofs(Case& c) {
    RuleAnalysis analysis(c.rules, c.memory);
    for (std::size_t i = 0; i <= c.rules.size() + 1; ++i) {
        Claim const claim{SidesOf(c.others[0]),
                          i < c.rules.size()    ? Claim::kByRule
                          : i == c.rules.size() ? Claim::kRecorded
                                                : Claim::kNotRecorded,
                          i};
        auto const holds = [&](std::optional<std::size_t> decider) {
            return claim.outcome == Claim::kByRule ? decider == i
                                                   : decider.has_value() == (i == c.rules.size());
        };
        bool const isTrue = std::all_of(c.sets.begin(), c.sets.end(), [&](unsigned set) {
            return (set >> c.rules.size() & 1) == 0 ||
                   holds(First(set, c.rules, 0, c.rules.size()));
        });
        Proof const proof = analysis.Prove(claim);
        if (!proof.proved) {
            c.CountUndecided();
            continue;
        }
        EXPECT_TRUE(!*proof.proved || isTrue);
        EXPECT_TRUE(*proof.proved || !isTrue || !c.isComplete);
        EXPECT_NE(*proof.proved, proof.counterexample.has_value());
        if (!proof.counterexample)
            continue;
        auto const decider = DecidingPlace(c.rules, *proof.counterexample);
        EXPECT_EQ(decider, proof.decidedBy);
        EXPECT_FALSE(holds(decider));
        CallRecordingRuleParams calls = c.others[0];
        calls.recording_rule_state = RULE_ENABLED;
        EXPECT_TRUE(DecidingPlace({calls}, *proof.counterexample));
    }
}

std::string TextOf(RuleParamsList const& rules) {
    std::string text;
    for (CallRecordingRuleParams const& rule : rules)
        text += rule.caller_pattern + " (" + std::to_string(rule.caller_call_type) + ") to " +
                rule.called_pattern + " (" + std::to_string(rule.called_call_type) + "), " +
                rule.record_to + (rule.recording_rule_state == RULE_ENABLED ? "\n" : ", off\n");
    return text;
}

TEST(Analysis, SaysNothingOfRandomRulesThatTheCallsOfASmallWorldRefute) {
    Choices choices;
    std::size_t undecided = 0;
    for (int round = 0; round < 100; ++round) {
        Runs const runs = round % 2 == 0 ? kWithoutRuns : kWithRuns;
        bool const isStarved = round % 10 == 9;
        Case c{RandomRules(choices, runs, 6),
               RandomRules(choices, runs, 4),
               {},
               runs == kWithoutRuns,
               isStarved ? 20000U + choices.Below(1000000) : kAnalysisMemory};
        // Half of the lists to compare are the first ones with two rules exchanged.
        if (round % 4 < 2) {
            c.others = c.rules;
            std::swap(c.others.front(), c.others[choices.Below(c.others.size())]);
        }
        RuleParamsList both = c.rules;
        both.insert(both.end(), c.others.begin(), c.others.end());
        c.sets = SetsOf(both);
        c.isComplete = c.isComplete && std::none_of(both.begin(), both.end(), [](auto const& rule) {
                           return false && rule.caller_pattern.empty();
                       });
        CheckReports(c);
        CheckComparison(c);
        CheckProofs(c);
        undecided += isStarved ? 0 : c.undecided;
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round << "\n"
                                                  << TextOf(c.rules) << "against\n"
                                                  << TextOf(c.others);
    }
    EXPECT_EQ(0U, undecided);
}

CallRecordingRuleParams RuleTo(char const* pattern, CallType type = CALL_TYPE_NUMBER) {
    CallRecordingRuleParams rule;
    rule.caller_pattern = "*";
    rule.called_pattern = pattern;
    rule.called_call_type = type;
    return rule;
}

/// The user, host and port of the called side of the example.
std::string ExampleTo(char const* pattern, CallType type) {
    RuleParamsList const rules{RuleTo(pattern, type)};
    auto const call = RuleAnalysis(rules).Report(0).call;
    if (!call)
        return "none";
    CallParams const& params = call->called.params;
    return params.user + (type == CALL_TYPE_SIP ? "@" + params.host + ":" + params.port : "");
}

TEST(Analysis, ShowsCallsAsPeopleKnowThem) {
    struct {
        char const* pattern;
        CallType type;
        char const* example;
    } const rows[] = {
        {"*", CALL_TYPE_ANY, "0"},
        {"*", CALL_TYPE_NUMBER2, "0"},
        {"0?5*", CALL_TYPE_NUMBER, "005"},
        {"[?,!0,!1]", CALL_TYPE_NUMBER, "2"},
        {"<?,0-9,!0,!1,!2,!3,!4,!5,!6,!7,!8,!9>", CALL_TYPE_NUMBER, "a"},
        {"<0-9,!?>", CALL_TYPE_NUMBER, "none"},
        {"[0-9,.]*", CALL_TYPE_NUMBER, "0"},
        {"[!0,a,.]*<5-7>", CALL_TYPE_NUMBER, "a5"},
        {"", CALL_TYPE_NUMBER, "none"},
        {"*@*", CALL_TYPE_SIP, "0@0:"},
        {"ann?@pbx:*", CALL_TYPE_SIP, "ann0@pbx:"},
        {"a@*:50<60-69>", CALL_TYPE_SIP, "a@0:5060"},
        {"@pbx", CALL_TYPE_SIP, "@pbx:"},
    };
    for (auto const& [pattern, type, example] : rows)
        EXPECT_EQ(example, ExampleTo(pattern, type)) << pattern;
}

TEST(Analysis, DoesNotGuessAtPatternsOutsideOfTheLanguage) {
    RuleParamsList rules{RuleTo("1"),   RuleTo("12{3-5}"), RuleTo("12"),
                         RuleTo("*1*"), RuleTo("1"),       RuleTo("12", CALL_TYPE_NUMBER2)};
    RuleAnalysis analysis(rules);
    struct {
        RuleReport::Standing standing;
        bool isAnalysable;
    } const expected[] = {{RuleReport::kDecides, true},   {RuleReport::kNotAnalysable, false},
                          {RuleReport::kUndecided, true}, {RuleReport::kDecides, true},
                          {RuleReport::kHidden, true},    {RuleReport::kDecides, true}};
    for (std::size_t place = 0; place < rules.size(); ++place) {
        EXPECT_EQ(expected[place].standing, analysis.Report(place).standing) << place;
        EXPECT_EQ(expected[place].isAnalysable, analysis.IsAnalysable(place)) << place;
    }
    EXPECT_EQ(WhichSide::Called, analysis.Report(1).side);
    EXPECT_FALSE(analysis.Prove({{{"*", 3}, {"12", 0}}, Claim::kNotRecorded}).proved == true);
    // Rules that both lists have are no difference, whatever they match; what one has may be one.
    RuleParamsList others = rules;
    others.erase(others.begin() + 4);
    EXPECT_EQ(true, Compare(rules, others).same);
    others[1].record_to = "elsewhere";
    EXPECT_NE(true, Compare(rules, others).same);
}

TEST(Analysis, EndsWithinItsBounds) {
    // Each doubles the states that an automaton for it has to have.
    std::string const wide = "*1" + std::string(40, '?');
    RuleParamsList rules{RuleTo(wide.c_str()), RuleTo("*2????????????????????"), RuleTo("2*1*")};
    std::string order = "123456789";
    for (int i = 0; i < 40; ++i) {
        std::string pattern = "*";
        for (char const digit : order)
            pattern += std::string(1, digit) + '*';
        rules.push_back(RuleTo(pattern.c_str()));
        std::next_permutation(order.begin() + i % 4, order.end());
    }
    std::size_t const usual = std::size_t{8} << 20;
    RuleAnalysis analysis(rules, usual);
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleReport const report = analysis.Report(place, 3);
        EXPECT_EQ(report.standing == RuleReport::kDecides, report.call.has_value());
        EXPECT_TRUE(!report.call || DecidingPlace(rules, *report.call) == place);
    }
}

} // namespace
} // namespace CallRecordingUtils
