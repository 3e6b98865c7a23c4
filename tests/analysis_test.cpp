// The analysis of rules, held against brute force: item lists against all short candidates, rule
// sides and whole lists against every call of a small world.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "analysis/RuleAnalysis.h"
#include "matching/CallSide.h"
#include "matching/ItemList.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kBytes = 1000000;
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
    // Without --gtest_shuffle the seed of GoogleTest is the time.
    std::mt19937 random_{
        GTEST_FLAG_GET(shuffle)
            ? static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed())
            : 7U};
};

bool Admits(ItemAutomaton const& automaton, std::string const& candidate) {
    std::uint32_t state = automaton.start;
    for (char const c : candidate)
        state = automaton.dfa.Next(state, SymbolOf(c));
    return automaton.dfa.isAccepting[state];
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
        auto const [automaton, problem] = ReadItemList(list, kBytes);
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
                  Admits(ReadItemList(list, kBytes).automaton, candidate))
            << list;
    }
    for (char const* list : {"1!2", "a-5", "1-2-3", "?-3", "1-", "1-5a"})
        EXPECT_EQ(Unreadable::OddItems, ReadItemList(list, kBytes).problem) << list;
}

CallParty SipParty(std::string const& user, std::string const& host, std::string const& port) {
    return {{user, {}, host, port}, CALL_TYPE_SIP};
}

/// The parties of a SIP address that is one text, as ParseSIPAddress divides it.
void AddSip(std::string const& text, std::vector<CallParty>& world) {
    if (auto const parts = SplitSipAddress(text))
        world.push_back(SipParty(std::string(parts->user), std::string(parts->host),
                                 std::string(parts->port.value_or(""))));
}

/// The sides of calls of a world that is complete for patterns of three characters, or of one in
/// each piece of a SIP address: "x" and "*" stand for all that they do not name.
std::vector<CallParty> TypedWorld() {
    std::vector<CallParty> world;
    for (std::string const& text : AllTexts("0123x*", 3)) {
        world.push_back({{text, {}, "", ""}, CALL_TYPE_NUMBER});
        world.push_back({{text, {}, "", ""}, CALL_TYPE_NUMBER2});
        world.push_back(SipParty(text, "x", ""));
    }
    for (std::string const& text : AllTexts("12x@:", 4))
        AddSip(text, world);
    for (char const user : std::string("0123x@:")) // Of one character, if it does not go on.
        for (char const host : std::string("0123x@:"))
            for (char const* port : {"", "0", "1", "2", "3", "xx", "@", "@:", "1@1:1"})
                AddSip(std::string{user, '@', host, ':'} + port, world);
    for (std::string const& user : AllTexts("0123x", 1))
        for (char const* host : {"", "0", "1", "2", "3", "x", "1:1"})
            for (char const* port : {"", "0", "1", "2", "3", "x", "xx"})
                world.push_back(SipParty(user, host, port));
    return world;
}

/// The same for parties.
std::vector<CallParty> PartyWorld() {
    std::vector<CallParty> world;
    for (std::string const& user : AllTexts("0123x*", 3)) {
        world.push_back({{user, {}, "", ""}, CALL_TYPE_NUMBER});
        world.push_back(SipParty(user, "xx", "5060"));
    }
    for (char const* user : {",", "1,", "-", "+", "+1", "+*", "^", "@"})
        world.push_back({{user, {}, "", ""}, CALL_TYPE_NUMBER});
    for (std::string const& user : AllTexts("0123x*,!-+", 1))
        for (char const* host : {"0", "1", "2", "3", "x", "-", "!", ",", "1!1"})
            for (char const* port : {"0", "1", "2", "3", "5060", "11"})
                world.push_back(SipParty(user, host, port));
    return world;
}

std::vector<CallParty> const& World(CallKind calls) {
    static std::vector<CallParty> const typed = TypedWorld();
    static std::vector<CallParty> const parties = PartyWorld();
    return calls == CallKind::Typed ? typed : parties;
}

/// What rule sides of a type compare of a party; nothing when they look at nothing of it.
std::optional<std::string> SeenText(CallParams const& party, std::int32_t type) {
    std::string const& user = party.user;
    bool const isNumber =
        !user.empty() && user.find_first_not_of("0123456789+*#") == std::string::npos;
    if (type == CALL_TYPE_NUMBER2 || (type == CALL_TYPE_NUMBER && !isNumber) ||
        (type == CALL_TYPE_SIP && party.host.empty()))
        return std::nullopt;
    std::map<char, char> codes{{'*', '#'}, {'?', '^'}, {'-', '%'}, {'!', ':'},
                               {'^', ' '}, {'%', ' '}, {'@', ' '}};
    auto const coded = [&codes](std::string text) {
        for (char& c : text)
            if (codes.count(c) != 0)
                c = codes[c];
        return text;
    };
    if (type == CALL_TYPE_SIP)
        return coded(user) + '@' + coded(party.host) + ':' + party.port;
    if (party.host.empty())
        codes[','] = '@';
    return coded(user);
}

/// Whether party satisfies a side of a rule, by the matcher alone.
bool IsSatisfied(CallParty const& party, RuleSide const& rule, CallKind calls) {
    auto const type = static_cast<CallType>(rule.type);
    if (calls == CallKind::Typed)
        return CallSide(party.params, party.type).Satisfies(rule.pattern, type);
    auto const text = SeenText(party.params, type);
    if (!text)
        return false;
    if (type != CALL_TYPE_SIP)
        return CallSide({*text, {}, "", ""}, CALL_TYPE_NUMBER)
            .Satisfies(rule.pattern, CALL_TYPE_ANY);
    CallParty coded{{}, type};
    auto const parts = SplitSipAddress(*text);
    return CallSide(SipParty(std::string(parts->user), std::string(parts->host),
                             std::string(*parts->port))
                        .params,
                    type)
        .Satisfies(rule.pattern, type);
}

/// With runs, the shortest call that shows something may be longer than those of the world.
enum Runs { kWithoutRuns, kWithRuns };

CallRecordingRuleParams RandomRule(Choices& choices, Runs runs) {
    Texts const steps{"1", "2", "?", "[1-2]", "[?,!1]", "<1-2>", "<2,!?>", "<1-3,!2>"};
    Texts elements{"0", "1", "?", "[0-3,!2]", "<1-12>", "<00-12,!0?>", "<1?,2>", "<?0,3>"};
    if (runs == kWithRuns)
        elements.insert(elements.end(), {"*", "*", "**", "@", ":", "1@", "{", "[1", "[@,1]"});
    auto const side = [&](std::string& pattern, CallType& type) {
        type = static_cast<CallType>(choices.Below(4));
        pattern = choices.From(elements) + (choices.Below(2) == 0 ? choices.From(steps) : "");
        if (runs == kWithRuns)
            pattern += choices.From(elements);
        if (type == CALL_TYPE_SIP)
            pattern = choices.From(runs == kWithRuns ? elements : steps) + '@' +
                      choices.From(runs == kWithRuns ? elements : steps) +
                      (choices.Below(2) == 0 ? ":" + choices.From(steps) : "");
        if (choices.Below(4) == 0) {
            pattern = "*";
            type = CALL_TYPE_ANY;
        }
    };
    CallRecordingRuleParams rule;
    side(rule.caller_pattern, rule.caller_call_type);
    side(rule.called_pattern, rule.called_call_type);
    rule.record_to = choices.From({"0", "1", kNeverRecord});
    rule.recording_duration = choices.From({"", "", "5"});
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
using Sets = std::set<unsigned>;
Sets SetsOf(RuleParamsList const& rules, CallKind calls) {
    Sets callers;
    Sets called;
    for (CallParty const& party : World(calls)) {
        unsigned from = 0;
        unsigned to = 0;
        for (std::size_t i = 0; i < rules.size(); ++i) {
            RuleSides const sides = SidesOf(rules[i]);
            from |= IsSatisfied(party, sides.caller, calls) ? 1U << i : 0;
            to |= IsSatisfied(party, sides.called, calls) ? 1U << i : 0;
        }
        callers.insert(from);
        called.insert(to);
    }
    Sets sets;
    for (unsigned const from : callers)
        for (unsigned const to : called)
            sets.insert(from & to);
    return sets;
}

using Place = std::optional<std::size_t>;

/// The first enabled rule of the set, from begin to end, apart from without.
Place First(unsigned set, RuleParamsList const& rules, std::size_t begin, std::size_t end,
            Place without = {}) {
    for (std::size_t i = begin; i < end; ++i)
        if ((set >> i & 1) != 0 && rules[i].recording_rule_state == RULE_ENABLED && i != without)
            return i - begin;
    return std::nullopt;
}

/// Two lists, or a list and a claim, with what brute force knows of both.
struct Case {
    RuleParamsList rules;
    RuleParamsList others;
    CallKind calls;
    Sets sets;          // Of rules and others.
    bool isComplete;    // The world shows everything.
    std::size_t memory; // Usual, or too little for most.
    std::size_t undecided = 0;

    Place Decider(unsigned set, Place without = {}) const {
        return First(set, rules, 0, rules.size(), without);
    }
    /// Whether f holds of all sets that rule is one of.
    template <typename F>
    bool OfAll(std::size_t rule, F const& f) const {
        return std::all_of(
            sets.begin(), sets.end(),
            [&](unsigned set) { return (set >> rule & 1) == 0 || f(set); });
    }
    bool Covers(std::vector<std::size_t> const& some, unsigned set) const {
        return std::any_of(
            some.begin(), some.end(), [set](std::size_t rule) { return (set >> rule & 1) != 0; });
    }
    bool HaveSameOutcome(Place a, Place b) const {
        return CallRecordingUtils::HaveSameOutcome(a ? &rules[*a] : nullptr,
                                                   b ? &rules[*b] : nullptr);
    }
};

/// No rules that decide, and fewer than those of the reason, match all calls of rule.
void CheckReason(Case const& c, std::size_t rule, RuleReport const& report) {
    for (std::size_t const other : report.takenBy)
        EXPECT_TRUE(other < rule && c.rules[other].recording_rule_state == RULE_ENABLED);
    EXPECT_TRUE(c.OfAll(rule, [&](unsigned set) { return c.Covers(report.takenBy, set); }));
    for (unsigned bits = 0; bits < 1U << rule && c.isComplete && report.isComplete; ++bits) {
        std::vector<std::size_t> fewer;
        for (std::size_t other = 0; other < rule; ++other)
            if ((bits >> other & 1) != 0 && c.rules[other].recording_rule_state == RULE_ENABLED)
                fewer.push_back(other);
        EXPECT_TRUE(fewer.size() >= report.takenBy.size() ||
                    !c.OfAll(rule, [&](unsigned set) { return c.Covers(fewer, set); }));
    }
}

void CheckHidden(Case const& c, std::size_t rule, HiddenRule const& hidden) {
    bool const isAlike = c.OfAll(
        rule, [&](unsigned set) { return c.HaveSameOutcome(c.Decider(set), rule); });
    bool const isForbidden = Records(&c.rules[rule]) && !c.OfAll(rule, [&](unsigned set) {
        return !ForbidsRecording(c.rules[*c.Decider(set)]);
    });
    EXPECT_TRUE(isAlike || hidden.isTakenAlike == false);
    EXPECT_TRUE(!isForbidden || hidden.isForbidden);
    EXPECT_TRUE(!c.isComplete ||
                (hidden.isTakenAlike == isAlike && hidden.isForbidden == isForbidden));
    EXPECT_EQ(hidden.isTakenAlike == false, hidden.call.has_value());
    if (hidden.call) {
        EXPECT_EQ(hidden.taker, DecidingPlace(c.rules, *hidden.call, c.calls));
        EXPECT_FALSE(c.HaveSameOutcome(hidden.taker, rule));
    }
}

void CheckRemoval(Case const& c, std::size_t rule, Removal const& removal) {
    bool const isNeedless = c.OfAll(rule, [&](unsigned set) {
        return c.Decider(set) != rule || c.HaveSameOutcome(c.Decider(set, rule), rule);
    });
    EXPECT_TRUE(isNeedless || removal.changesNothing == false);
    EXPECT_TRUE(!c.isComplete || removal.changesNothing == isNeedless);
    EXPECT_EQ(removal.changesNothing == false, removal.call.has_value());
    if (!removal.call)
        return;
    EXPECT_EQ(rule, DecidingPlace(c.rules, *removal.call, c.calls));
    RuleParamsList without = c.rules;
    without[rule].recording_rule_state = RULE_DISABLED;
    EXPECT_EQ(removal.decidedBy, DecidingPlace(without, *removal.call, c.calls));
    EXPECT_FALSE(c.HaveSameOutcome(removal.decidedBy, rule));
}

void CheckReports(Case& c) {
    std::map<std::size_t, std::set<std::size_t>> takers; // Of the calls of each rule; also itself.
    for (unsigned const set : c.sets)
        if (auto const decider = c.Decider(set))
            for (std::size_t i = *decider; i < c.rules.size(); ++i)
                if ((set >> i & 1) != 0)
                    takers[i].insert(*decider);
    RuleAnalysis analysis(c.rules, c.memory, c.calls);
    for (std::size_t i = 0; i < c.rules.size(); ++i) {
        RuleReport const report = analysis.Report(i);
        if (report.standing == RuleReport::kUndecided) {
            EXPECT_TRUE(report.why);
            ++c.undecided;
            continue;
        }
        bool const isOn = c.rules[i].recording_rule_state == RULE_ENABLED;
        EXPECT_EQ(isOn, report.standing != RuleReport::kOff);
        if (!isOn)
            continue;
        bool const decides = report.standing == RuleReport::kDecides;
        EXPECT_EQ(decides, report.call.has_value());
        EXPECT_TRUE(decides ? DecidingPlace(c.rules, *report.call, c.calls) == i
                            : takers[i].count(i) == 0);
        bool const matches = c.isComplete && takers[i].empty();
        EXPECT_TRUE(!matches || report.standing == RuleReport::kMatchesNothing);
        if (c.memory < kAnalysisMemory)
            continue;
        EXPECT_TRUE(!c.isComplete || decides == (takers[i].count(i) != 0));
        if (report.standing == RuleReport::kHidden) {
            CheckReason(c, i, report);
            CheckHidden(c, i, analysis.Judge(i, report.takenBy));
        }
        if (!decides)
            continue;
        CheckRemoval(c, i, analysis.WithoutRule(i));
        std::set<std::size_t> expected = takers[i];
        expected.erase(i);
        std::set<std::size_t> const found(report.takenBy.begin(), report.takenBy.end());
        EXPECT_TRUE(std::includes(found.begin(), found.end(), expected.begin(), expected.end()));
        EXPECT_TRUE(!c.isComplete || expected == found);
        for (std::size_t const taker : found) {
            auto const call = analysis.CallTaken(taker, i);
            EXPECT_TRUE(call && DecidingPlace(c.rules, *call, c.calls) == taker);
        }
    }
}

void CheckNeedless(Case const& c) {
    RuleParamsList after = c.rules;
    for (NeedlessRule const& rule : RuleAnalysis(c.rules, c.memory, c.calls).FindNeedless())
        after[rule.place].recording_rule_state = RULE_DISABLED;
    for (unsigned const set : c.sets)
        EXPECT_TRUE(c.HaveSameOutcome(c.Decider(set), First(set, after, 0, after.size())));
    EXPECT_TRUE(Compare(c.rules, after, c.memory, c.calls).same == true ||
                c.memory < kAnalysisMemory);
}

void CheckComparison(Case& c) {
    RuleParamsList both = c.rules;
    both.insert(both.end(), c.others.begin(), c.others.end());
    auto const areAlike = [&](Place here, Place there) {
        return HaveSameOutcome(here ? &c.rules[*here] : nullptr,
                               there ? &c.others[*there] : nullptr);
    };
    using Pair = std::pair<Place, Place>;
    std::set<Pair> expected;
    for (unsigned const set : c.sets) {
        Pair const pair{c.Decider(set), First(set, both, c.rules.size(), both.size())};
        if (!areAlike(pair.first, pair.second))
            expected.insert(pair);
    }
    Comparison const comparison = Compare(c.rules, c.others, c.memory, c.calls);
    std::set<Pair> found;
    for (Difference const& difference : comparison.differences) {
        EXPECT_EQ(difference.here, DecidingPlace(c.rules, difference.call, c.calls));
        EXPECT_EQ(difference.there, DecidingPlace(c.others, difference.call, c.calls));
        EXPECT_TRUE(found.emplace(difference.here, difference.there).second);
    }
    c.undecided += comparison.undecided.size();
    Comparison const some = Compare(c.rules, c.others, c.memory, c.calls, 1);
    if (c.isComplete && comparison.undecided.empty()) {
        EXPECT_EQ(some.same, comparison.same);
        EXPECT_LE(some.differences.size(), comparison.differences.size());
        EXPECT_TRUE(!some.areAllLookedFor ||
                    some.differences.size() == comparison.differences.size());
    }
    EXPECT_EQ(comparison.same == false, !found.empty());
    EXPECT_EQ(comparison.same == true, found.empty() && comparison.undecided.empty());
    for (UndecidedPair const& pair : comparison.undecided)
        found.emplace(pair.here, pair.there);
    EXPECT_TRUE(std::includes(found.begin(), found.end(), expected.begin(), expected.end()));
    EXPECT_TRUE(!c.isComplete || c.memory < kAnalysisMemory || expected == found);
}

Claim RandomClaim(Choices& choices, RuleParamsList const& rules, RuleParamsList const& others) {
    Claim claim{};
    claim.calls = SidesOf(others[0]);
    if (others.size() > 1 && choices.Below(2) == 0)
        claim.exceptCallers.push_back(SidesOf(others[1]).caller);
    if (others.size() > 2 && choices.Below(2) == 0)
        claim.exceptCalled.push_back(SidesOf(others[2]).called);
    switch (choices.Below(6)) {
    case 0: claim.isRecorded = true; break;
    case 1: claim.isRecorded = false; break;
    case 2: claim.rule = choices.Below(rules.size()); break;
    case 3: claim.callRecordingType = rules[0].call_recording_type; break;
    default: claim.recordTo = choices.From({"0", "1", kNeverRecord});
    }
    if (choices.Below(4) == 0)
        claim.duration = "5";
    return claim;
}

bool IsIn(CallParty const& party, AddressPattern const& pattern, CallKind calls) {
    return (!pattern.only || *pattern.only == party.type) &&
           IsSatisfied(party, {pattern.pattern, pattern.type}, calls);
}

std::vector<CallParty> Satisfying(RuleSide const& side, CallKind calls) {
    std::vector<CallParty> parties;
    for (CallParty const& party : World(calls))
        if (IsSatisfied(party, side, calls))
            parties.push_back(party);
    return parties.empty() ? World(calls) : parties;
}

/// Whether patterns are exactly those calls of the world that isMember says, which are some of
/// those that sides match; as far as calls that are drawn at random tell.
template <typename IsMember>
void CheckPatterns(CallKind calls, CallPatterns const& patterns, RuleSides const& sides,
                   Choices& choices, IsMember const& isMember) {
    if (!patterns.areExact)
        return;
    std::vector<CallParty> const& world = World(calls);
    std::vector<CallParty> const callers = Satisfying(sides.caller, calls);
    std::vector<CallParty> const called = Satisfying(sides.called, calls);
    for (int i = 0; i < 200; ++i) {
        ExampleCall const call{i % 8 == 0 ? world[choices.Below(world.size())]
                                          : callers[choices.Below(callers.size())],
                               called[choices.Below(called.size())]};
        bool const isIn = std::any_of(patterns.patterns.begin(), patterns.patterns.end(),
                                      [&](CallPattern const& pattern) {
                                          return IsIn(call.caller, pattern.caller, calls) &&
                                                 IsIn(call.called, pattern.called, calls);
                                      });
        EXPECT_EQ(isMember(call), isIn)
            << AddressTextOf(call.caller) << " (" << call.caller.type << ") to "
            << AddressTextOf(call.called) << " (" << call.called.type << ")";
    }
}

bool IsMeant(Claim const& claim, ExampleCall const& call, CallKind calls) {
    auto const satisfies = [calls](CallParty const& party) {
        return [&party, calls](RuleSide const& side) { return IsSatisfied(party, side, calls); };
    };
    return satisfies(call.caller)(claim.calls.caller) &&
           satisfies(call.called)(claim.calls.called) &&
           std::none_of(claim.exceptCallers.begin(), claim.exceptCallers.end(),
                        satisfies(call.caller)) &&
           std::none_of(claim.exceptCalled.begin(), claim.exceptCalled.end(),
                        satisfies(call.called));
}

void CheckGaps(Case const& c, Claim const& claim, RuleAnalysis& analysis, Choices& choices) {
    AnalysedRules const rules(c.rules, c.memory, c.calls);
    auto const isGap = [&](ExampleCall const& call) {
        return IsMeant(claim, call, c.calls) &&
               !claim.Wants(rules, DecidingPlace(c.rules, call, c.calls));
    };
    Gaps const gaps = analysis.FindGaps(claim, 30);
    CheckPatterns(c.calls, gaps.calls, claim.calls, choices, isGap);
    for (ExampleCall const& call : gaps.examples)
        EXPECT_TRUE(isGap(call));
    if (gaps.areExamplesComplete && c.memory == kAnalysisMemory) {
        bool const isTrue = analysis.Prove(claim).proved == true;
        EXPECT_EQ(isTrue, gaps.calls.patterns.empty() && gaps.examples.empty());
        EXPECT_EQ(isTrue && gaps.calls.areExact, gaps.calls.count == 0U);
    }
}

void CheckExplanation(Case const& c, std::size_t rule, RuleAnalysis& analysis, Choices& choices) {
    Explanation const explanation = analysis.Explain(rule, 30);
    CheckPatterns(
        c.calls, explanation.decides, SidesOf(c.rules[rule]), choices,
        [&](ExampleCall const& call) { return DecidingPlace(c.rules, call, c.calls) == rule; });
    for (Explanation::Loss const& loss : explanation.losses) {
        EXPECT_EQ(loss.taker, DecidingPlace(c.rules, loss.call, c.calls));
        EXPECT_TRUE(IsSatisfied(loss.call.called, SidesOf(c.rules[rule]).called, c.calls));
    }
    bool const isOn = c.rules[rule].recording_rule_state == RULE_ENABLED;
    for (Difference const& difference : explanation.ifGone.differences)
        EXPECT_EQ(rule, difference.here);
    for (Difference const& difference : explanation.ifFirst.differences)
        EXPECT_TRUE(isOn && difference.there == rule);
    bool const isKnown =
        c.memory == kAnalysisMemory && isOn && explanation.report.standing == RuleReport::kDecides;
    EXPECT_TRUE(!isKnown || explanation.ifGone.same == analysis.WithoutRule(rule).changesNothing);
}

/// What the proof says can be checked by somebody who does not look for proofs.
void CheckProof(Case const& c, Claim const& claim, Proof const& proof, Sets const& meant) {
    AnalysedRules const rules(c.rules, c.memory, c.calls);
    for (unsigned const set : meant) {
        EXPECT_TRUE(claim.Wants(rules, std::nullopt) || c.Covers(proof.covering, set));
        for (Proof::Other const& other : proof.others)
            EXPECT_TRUE((set >> other.rule & 1) == 0 || c.Covers(other.covering, set));
        for (std::size_t i = 0; i < c.rules.size() && c.isComplete; ++i) {
            bool const isNamed = std::any_of(proof.others.begin(), proof.others.end(),
                                             [i](auto const& other) { return other.rule == i; });
            bool const isBehind = !claim.Wants(rules, std::nullopt) &&
                                  (proof.covering.empty() || i > proof.covering.back());
            EXPECT_TRUE(claim.Wants(rules, i) || isNamed || isBehind || (set >> i & 1) == 0 ||
                        c.rules[i].recording_rule_state != RULE_ENABLED);
        }
    }
    for (std::size_t const rule : proof.covering)
        EXPECT_TRUE(claim.Wants(rules, rule) && rules.IsEnabled(rule));
    for (Proof::Other const& other : proof.others)
        for (std::size_t const rule : other.covering)
            EXPECT_TRUE(rule < other.rule && claim.Wants(rules, rule) && rules.IsEnabled(rule));
}

/// Claims about the calls that the first of the others matches.
void CheckProofs(Case& c, Choices& choices) {
    RuleAnalysis analysis(c.rules, c.memory, c.calls);
    AnalysedRules const rules(c.rules, c.memory, c.calls);
    for (int i = 0; i < 8; ++i) {
        Claim const claim = RandomClaim(choices, c.rules, c.others);
        // The sets of those that are meant: the exceptions are rules of a list of their own.
        RuleParamsList all = c.rules;
        all.push_back(c.others[0]);
        auto const add = [&all](RuleSides const& sides) {
            CallRecordingRuleParams& rule = all.emplace_back();
            rule.caller_pattern = sides.caller.pattern;
            rule.caller_call_type = static_cast<CallType>(sides.caller.type);
            rule.called_pattern = sides.called.pattern;
            rule.called_call_type = static_cast<CallType>(sides.called.type);
        };
        RuleSide const any{"*", CALL_TYPE_ANY};
        for (RuleSide const& side : claim.exceptCallers)
            add({side, any});
        for (RuleSide const& side : claim.exceptCalled)
            add({any, side});
        Sets meant;
        for (unsigned const set : SetsOf(all, c.calls))
            if (set >> c.rules.size() == 1)
                meant.insert(set);
        bool const isTrue = std::all_of(meant.begin(), meant.end(), [&](unsigned set) {
            return claim.Wants(rules, c.Decider(set));
        });
        CheckGaps(c, claim, analysis, choices);
        Proof const proof = analysis.Prove(claim);
        if (!proof.proved) {
            EXPECT_TRUE(proof.why);
            ++c.undecided;
            continue;
        }
        EXPECT_TRUE(!*proof.proved || isTrue);
        EXPECT_TRUE(*proof.proved || !isTrue || !c.isComplete);
        EXPECT_TRUE(!proof.isOfNoCall || meant.empty());
        EXPECT_TRUE(!c.isComplete || !meant.empty() || proof.isOfNoCall);
        EXPECT_NE(*proof.proved, proof.counterexample.has_value());
        if (*proof.proved)
            CheckProof(c, claim, proof, meant);
        if (!proof.counterexample)
            continue;
        EXPECT_EQ(proof.decidedBy, DecidingPlace(c.rules, *proof.counterexample, c.calls));
        EXPECT_FALSE(claim.Wants(rules, proof.decidedBy));
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(c.rules.size()));
        all[0].recording_rule_state = RULE_ENABLED;
        EXPECT_EQ(0U, DecidingPlace(all, *proof.counterexample, c.calls));
        all.erase(all.begin());
        EXPECT_FALSE(DecidingPlace(all, *proof.counterexample, c.calls));
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

void CheckRandomRules(CallKind calls) {
    Choices choices;
    std::size_t undecided = 0;
    for (int round = 0; round < 100; ++round) {
        Runs const runs = round % 2 == 0 ? kWithoutRuns : kWithRuns;
        bool const isStarved = round % 10 == 9;
        Case c{RandomRules(choices, runs, 6),
               RandomRules(choices, runs, 4),
               calls,
               {},
               // Some calls of parties that tell rules apart are outside of the small world.
               runs == kWithoutRuns && calls == CallKind::Typed,
               isStarved ? 20000U + choices.Below(1000000) : kAnalysisMemory};
        // Half of the lists to compare are the first ones with two rules exchanged.
        if (round % 4 < 2) {
            c.others = c.rules;
            std::swap(c.others.front(), c.others[choices.Below(c.others.size())]);
        }
        RuleParamsList both = c.rules;
        both.insert(both.end(), c.others.begin(), c.others.end());
        c.sets = SetsOf(both, calls);
        CheckReports(c);
        CheckNeedless(c);
        CheckComparison(c);
        CheckProofs(c, choices);
        RuleAnalysis analysis(c.rules, c.memory, c.calls);
        CheckExplanation(c, choices.Below(c.rules.size()), analysis, choices);
        undecided += isStarved ? 0 : c.undecided;
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round << "\n"
                                                  << TextOf(c.rules) << "against\n"
                                                  << TextOf(c.others);
    }
    EXPECT_EQ(0U, undecided);
}

TEST(Analysis, SaysNothingOfTypedCallsThatASmallWorldRefutes) {
    CheckRandomRules(CallKind::Typed);
}

TEST(Analysis, SaysNothingOfPartiesThatASmallWorldRefutes) {
    CheckRandomRules(CallKind::Parties);
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

/// The called sides of the gaps of a claim, and how many calls from one number they are.
std::string GapsTo(char const* claimed, std::vector<char const*> const& recorded) {
    RuleParamsList rules;
    for (char const* pattern : recorded)
        rules.push_back(RuleTo(pattern));
    Claim claim{};
    claim.calls = {{"201", CALL_TYPE_NUMBER}, {claimed, CALL_TYPE_NUMBER}};
    claim.isRecorded = true;
    Gaps const gaps = RuleAnalysis(rules).FindGaps(claim);
    std::string text = gaps.calls.areExact ? "" : "not exact ";
    for (CallPattern const& pattern : gaps.calls.patterns)
        text += pattern.called.pattern + ' ';
    return text + (gaps.calls.count ? std::to_string(*gaps.calls.count) : "endless");
}

TEST(Analysis, WritesGapsAsPatterns) {
    EXPECT_EQ("1[5-9][0-9] 50", GapsTo("1[0-9][0-9]", {"1[0-4]?"}));
    EXPECT_EQ("[0,2-9][0-9] 1[0-2,6-9] 97", GapsTo("[0-9][0-9]", {"1[3-5]"}));
    EXPECT_EQ("1 1[?,!2]* 12[?,!3]? endless", GapsTo("1*", {"12", "123*", "12?", "12???*"}));
    EXPECT_EQ("*5 endless", GapsTo("*5", {"a"}));
    EXPECT_EQ("not exact endless", GapsTo("*5", {"15"}));
    EXPECT_EQ("0", GapsTo("15", {"1?"}));
}

TEST(Analysis, ReadsMalformedPatternsAsTheMatcherDoes) {
    RuleParamsList const rules{RuleTo("13{"),   RuleTo("12{3-5}"), RuleTo("12<3-5-7>"),
                               RuleTo("12"),    RuleTo("13??"),    RuleTo("14<3-5-7>"),
                               RuleTo("14<3>"), RuleTo("[1"),      RuleTo("15")};
    RuleAnalysis analysis(rules);
    RuleReport::Standing const expected[] = {
        RuleReport::kDecides,   RuleReport::kDecides,        RuleReport::kHidden,
        RuleReport::kHidden,    RuleReport::kHidden,         RuleReport::kUndecided,
        RuleReport::kUndecided, RuleReport::kMatchesNothing, RuleReport::kDecides};
    for (std::size_t place = 0; place < rules.size(); ++place) {
        RuleReport const report = analysis.Report(place);
        EXPECT_EQ(expected[place], report.standing) << place;
        if (report.why) {
            EXPECT_EQ(UndecidedReason::kOddItems, report.why->reason);
            EXPECT_EQ(5U, report.why->rule);
            EXPECT_EQ(WhichSide::Called, report.why->side);
        }
    }
    // Rules that both lists have are no difference, whatever they match; what one has may be one,
    // beside those that are certain.
    RuleParamsList others = rules;
    others.erase(others.begin() + 4);
    EXPECT_EQ(true, Compare(rules, others).same);
    others.back().record_to = others[4].record_to = "elsewhere";
    Comparison const comparison = Compare(rules, others);
    EXPECT_EQ(false, comparison.same);
    EXPECT_EQ(1U, comparison.differences.size());
    ASSERT_FALSE(comparison.undecided.empty());
    EXPECT_EQ(UndecidedReason::kOddItems, comparison.undecided[0].why.reason);
    EXPECT_EQ(comparison.undecided[0].isWhyThere ? 4U : 5U, comparison.undecided[0].why.rule);
}

TEST(Analysis, DecidesPatternsThatAreLarge) {
    std::string const digits(3000, '1');
    for (std::string const& pattern : {std::string("<2-2147483647><5-2147483640>"),
                                       std::string("*<23-2147483646>"), '*' + digits + '*'}) {
        RuleParamsList const rules{RuleTo(pattern.c_str()), RuleTo(pattern.c_str())};
        RuleAnalysis analysis(rules);
        EXPECT_EQ(RuleReport::kDecides, analysis.Report(0).standing) << pattern;
        EXPECT_EQ(RuleReport::kHidden, analysis.Report(1).standing) << pattern;
    }
    RuleParamsList const rules{RuleTo("5"), RuleTo(("*1" + std::string(40, '?')).c_str())};
    RuleReport const report = RuleAnalysis(rules).Report(1);
    ASSERT_TRUE(report.why);
    EXPECT_EQ(UndecidedReason::kLargePattern, report.why->reason);
    EXPECT_EQ(1U, report.why->rule);
}

TEST(Analysis, EndsWithinItsBounds) {
    RuleParamsList rules{RuleTo("*2????????????????????"), RuleTo("2*1*")};
    std::string order = "123456789";
    for (int i = 0; i < 40; ++i) {
        std::string pattern = "*";
        for (char const digit : order)
            pattern += std::string(1, digit) + '*';
        rules.push_back(RuleTo(pattern.c_str()));
        rules.push_back(RuleTo(('*' + std::string(1, order[0]) + "?????????").c_str()));
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
