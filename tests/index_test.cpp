// The index: its traits against what rules take, its decisions against the walk, over random lists
// and calls; what it costs; and what it does without memory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <list>
#include <new>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "matching/Decision.h"
#include "matching/RuleIndex.h"

namespace {
long allocations = 0;
long failingFrom = -1; // The allocation from which on there is no memory; never when negative.
} // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
    if (++allocations > failingFrom && failingFrom >= 0)
        throw std::bad_alloc();
    void* const memory = std::malloc(size > 0 ? size : 1);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace CallRecordingUtils {
namespace {

using Rule = CallRecordingRuleParams;
using Texts = std::vector<std::string>;

/// Random rules, and calls that often are close to one of them.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::size_t Below(std::size_t bound) { return random_() % bound; }
    bool OneOf(std::size_t count) { return Below(count) == 0; }
    std::string const& Pick(Texts const& texts) { return texts[Below(texts.size())]; }
    CallType Type() { return static_cast<CallType>(OneOf(3) ? Below(4) : OneOf(60) ? 263 : 0); }

    std::string Digits(std::size_t length) {
        std::string digits;
        while (length-- > 0)
            digits += static_cast<char>('0' + Below(10));
        return digits;
    }

    /// Well formed and odd groups: items that look like others, bounds beyond 32 bits, exclusions
    /// of all kinds, texts that are wider than what a view sees.
    std::string Group() {
        static Texts const sets{
            "1-5",      "0-9,!5",    "24",         "1,3,5",    "a-f,?",  "a-bc",     "1-23",
            "12-3",     "1-a",       "a-5",        "-3",       "-a",     "5-1",      "Z-a",
            "(-)",      "1-3-5",     "1,,2",       "1!2",      "!1,0-9", "1-9,!",    "?,!1",
            "a-z,!b-y", "0-9,!1-3",  "a-g,!a",     "!1-8,1-9", "1-3,!?", "1,!,2,!!", "5-",
            "*,1",      "a-c,A-C,1", "0-9,a-f,!0", "\xe9,1"};
        static Texts const ranges{"00-59",
                                  "10-29,!13",
                                  "1-9,10-99",
                                  "5,15",
                                  "123-129",
                                  "1?,2?",
                                  "9-99",
                                  "a1-29,b5",
                                  "00-99,!5?",
                                  "?",
                                  "-5,7",
                                  "31-24",
                                  "1-2",
                                  "12,34-56,!4?",
                                  "ab-cd",
                                  "1?-3",
                                  "05-20",
                                  "0-9",
                                  "a-f",
                                  "1-5-9",
                                  "12!3,45",
                                  "1-99999999999",
                                  "007-012,1?4",
                                  "5000000000-6000000000",
                                  "1000000000-2147483647",
                                  "2147483646-3000000000",
                                  "999999999-999999999",
                                  "123456789012345678901234,1-9",
                                  "1234567890123456789012345?7",
                                  "111111111111111111111111111111,222222222222222222222222222222"};
        return OneOf(2) ? "[" + Pick(sets) + "]" : "<" + Pick(OneOf(4) ? sets : ranges) + ">";
    }

    std::string Pattern(CallType type) {
        std::string pattern = OneOf(3) ? "*" : OneOf(20) ? "+" : "";
        for (std::size_t n = 1 + Below(4); n > 0; --n)
            pattern += OneOf(2)    ? Group()
                       : OneOf(4)  ? Pick({"*", "?", "ab", "]", "[1", "?????", "x:", "@"})
                       : OneOf(30) ? Digits(90)
                                   : Digits(1 + Below(4));
        if (type == CALL_TYPE_SIP && !OneOf(20))
            pattern += Pick({"@h", "@g", "@*", "@h:5060", "@h1:<5060-5061>", "@[gh]",
                             "@h:", "@:", "@?:", "@h1*", "@h:*", "@h:?"});
        return pattern;
    }

    Rule MakeRule(std::size_t kind) {
        Rule rule;
        rule.caller_call_type = Type();
        rule.called_call_type = Type();
        rule.caller_pattern = OneOf(2) ? "*" : Pattern(rule.caller_call_type);
        std::string const digits = Digits(2 + Below(4));
        rule.called_pattern = Pick({Pattern(rule.called_call_type), digits, "49891" + digits + "*",
                                    "*" + digits, "*" + digits + "*", "[1-5][02468]" + digits});
        if (kind == 0) // Nothing but sets.
            rule.called_pattern =
                "[" + Digits(1) + "-9][1,3,5][" + Digits(1) + "," + Digits(1) + "]";
        else if (kind == 1)
            rule.called_pattern = "*" + digits + (OneOf(2) ? "?*" : "*");
        rule.recording_rule_state = OneOf(8) ? RULE_DISABLED : RULE_ENABLED;
        return rule;
    }

    /// A text that an item of the list may accept.
    std::string Candidate(std::string const& list) {
        Texts items{""};
        for (char const c : list)
            if (c == ',')
                items.emplace_back();
            else
                items.back() += c;
        std::string item = Pick(items);
        for (char& c : item)
            if (c == '?')
                c = Digits(1)[0];
        std::size_t const dash = item.find('-');
        if (dash == std::string::npos || OneOf(4))
            return item.substr(0, dash);
        std::string const high = item.substr(dash + 1);
        if (high.size() == 1 && dash == 1 && item[0] < high[0])
            return {static_cast<char>(
                item[0] +
                static_cast<char>(Below(static_cast<std::size_t>(high[0] - item[0]) + 1)))};
        return OneOf(2) ? high : Digits(OneOf(2) ? dash : high.size());
    }

    /// A text that pattern may match.
    std::string Address(std::string pattern) {
        std::string address;
        while (!pattern.empty()) {
            char const c = pattern.front();
            std::size_t const end = c == '[' ? pattern.find(']') : c == '<' ? pattern.find('>') : 0;
            if (c == '*')
                address += Digits(Below(4));
            else if (c == '?')
                address += OneOf(9) ? Pick({"\xe9", "a", "*", ":", "@"}) : Digits(1);
            else if (c == '[' || c == '<')
                address += Candidate(pattern.substr(1, end - 1));
            else
                address += c;
            pattern.erase(0, end == std::string::npos ? end : end + 1);
        }
        if (OneOf(5) && !address.empty())
            address[Below(address.size())] = static_cast<char>('0' + Below(10));
        return OneOf(10) ? address + Digits(1) : address;
    }

    CallParams Params(std::string const& pattern) {
        std::size_t const at = std::min(pattern.rfind('@'), pattern.size());
        std::string const user = Address(pattern.substr(0, at));
        return {user, {}, Pick({"h", "g", "h1", ""}), Pick({"5060", "5061", "", "x:1"})};
    }

    /// A call that is often like those of model.
    struct RandomCall {
        CallParams caller, called;
        CallType callerType, calledType;

        Call AsSeen() const { return {caller, callerType, called, calledType}; }
    };
    RandomCall CallFor(Rule const& model) {
        auto const typeFor = [this](CallType type) {
            return type == CALL_TYPE_ANY || OneOf(8) ? Type() : type;
        };
        return {Params(model.caller_pattern), Params(model.called_pattern),
                typeFor(model.caller_call_type), typeFor(model.called_call_type)};
    }

  private:
    std::mt19937 random_;
};

std::ostream& operator<<(std::ostream& out, Generator::RandomCall const& call) {
    for (auto const& [params, type] :
         {std::pair(call.caller, call.callerType), std::pair(call.called, call.calledType)})
        out << " " << params.user << "@" << params.host << ":" << params.port << " (" << type
            << ")";
    return out;
}

/// Whether the call has a slot of the rule's for each trait: for those of the middle with some
/// character of the address as the origin.
bool HasTraits(RuleTraits const& rule, CallTraits call) {
    auto const has = [&](std::size_t first, std::size_t count) {
        bool all = true;
        for (std::size_t t = first; t < first + count; ++t)
            all = all && (rule[t] & OnlySlot(call.SlotAt(kTraitTable[t]))) != 0;
        return all;
    };
    bool all = true;
    for (std::size_t side = 0; side < 2; ++side) {
        std::size_t const middle = FirstTrait(side, View::Middle);
        all = all && has(side * kTraitsOfSide, middle - side * kTraitsOfSide);
        bool const asksForMiddle = rule[middle] != kAnySlot;
        bool found = !asksForMiddle;
        for (std::size_t origin = 0; origin < call.Address(side).size() && !found; ++origin) {
            call.SetOrigin(side, origin);
            found = has(middle, TraitsOfView(View::Middle));
        }
        all = all && found;
    }
    return all;
}

// Why an index may leave out the rules that it leaves out.
TEST(Index, WhatARuleTakesHasItsTraits) {
    Generator random(3);
    std::size_t taken = 0;
    for (int i = 0; i < 200000; ++i) {
        Rule rule = random.MakeRule(2);
        rule.called_pattern = random.Pattern(rule.called_call_type);
        rule.recording_rule_state = RULE_ENABLED;
        auto const call = random.CallFor(rule);
        Call const seen = call.AsSeen();
        std::size_t steps = 0;
        if (!Takes(rule, seen))
            continue;
        ++taken;
        ASSERT_TRUE(HasTraits(TraitsOf(rule, steps), CallTraits(seen)))
            << rule.caller_pattern << " (" << rule.caller_call_type << ") " << rule.called_pattern
            << " (" << rule.called_call_type << ") takes" << call;
        ASSERT_LE(steps, 180U);
    }
    EXPECT_GT(taken, 40000U);
}

TEST(Index, DecidesAsTheWalkDoes) {
    Generator random(1);
    std::size_t decided = 0;
    for (int round = 0; round < 150; ++round) {
        std::vector<Rule> rules;
        std::size_t const kind = random.Below(6);
        for (std::size_t n = 2 + random.Below(random.OneOf(6) ? 1500 : 120); n > 0; --n)
            rules.push_back(random.MakeRule(kind));
        std::list<Rule*> list;
        for (Rule& rule : rules)
            list.push_back(random.OneOf(100) ? nullptr : &rule);
        RuleIndex index;
        index.Build(list);
        if (rules.size() <= 16 && !index.IsUsable())
            continue; // Left to the walk.
        ASSERT_TRUE(index.IsUsable());
        for (int i = 0; i < 120; ++i) {
            auto const call = random.CallFor(rules[random.Below(rules.size())]);
            Call const seen = call.AsSeen();
            for (int pass = 0; pass < 3; ++pass) {
                auto const walked = FirstTaking(list, seen);
                Rule const* const found = index.Find(seen).rule;
                ASSERT_EQ(found, walked == list.end() ? nullptr : *walked)
                    << "in round " << round << call;
                if (found == nullptr)
                    break;
                ++decided;
                (*walked)->recording_rule_state = RULE_DISABLED; // It counts at once.
            }
            rules[random.Below(rules.size())].recording_rule_state = RULE_ENABLED;
        }
    }
    EXPECT_GT(decided, 3000U);
}

// What an index is there for. The bounds are a third above what it takes.
TEST(Index, LooksAtFewOfManyRules) {
    struct {
        char const* kind;
        std::string (*make)(Generator&);
        std::size_t mostEffort; // On an average.
    } const rows[] = {
        {"exact", [](Generator& g) { return g.Digits(7); }, 6},
        {"prefix", [](Generator& g) { return "498912" + g.Digits(5) + "*"; }, 6},
        {"tail", [](Generator& g) { return "*" + g.Digits(7); }, 6},
        {"middle", [](Generator& g) { return "*" + g.Digits(7) + "*"; }, 9},
        {"range", [](Generator& g) { return g.Digits(5) + "<10-29>"; }, 6},
        {"prefix or tail",
         [](Generator& g) { return g.OneOf(2) ? g.Digits(5) + "*" : "*" + g.Digits(5); }, 11},
        {"sets first", [](Generator& g) { return "[1-4][2,3]" + g.Digits(6); }, 6},
        {"sets only",
         [](Generator& g) {
             std::string sets;
             for (int i = 0; i < 9; ++i)
                 sets += "[" + g.Digits(1) + (i % 2 == 0 ? "," : "-") + g.Digits(1) + "]";
             return sets;
         },
         20},
    };
    for (auto const& [kind, make, mostEffort] : rows) {
        Generator random(2);
        std::vector<Rule> rules(4000);
        std::list<Rule*> list;
        for (Rule& rule : rules) {
            rule.caller_pattern = "*";
            rule.called_pattern = make(random);
            list.push_back(&rule);
        }
        RuleIndex index;
        index.Build(list);
        std::size_t effort = 0;
        for (int i = 0; i < 500; ++i) {
            CallParams const called =
                random.Params(rules[random.Below(rules.size())].called_pattern);
            long const before = allocations;
            effort += index.Find(Call({}, CALL_TYPE_NUMBER, called, CALL_TYPE_NUMBER)).effort;
            ASSERT_EQ(allocations, before);
        }
        EXPECT_LE(effort, 500 * mostEffort) << kind;
    }
}

// A reload must not take much longer because of its index. The bound is that of the reading and of
// the branches, and some more for the leaves.
TEST(Index, IsBuiltInFewStepsForAnyRules) {
    auto const repeated = [](std::string const& text, std::size_t times) {
        std::string all;
        while (times-- > 0)
            all += text;
        return all;
    };
    Generator random(4);
    std::function<std::string()> const kinds[] = {
        [&] { return "*[!1" + repeated(",-z", 40) + "]"; },
        [&] { return "[" + repeated("1,2,3-5,!4,", 80) + "7]"; },
        [&] { return repeated("[1-9]", 12000); },
        [&] { return repeated("*", 230); },
        [&] { return repeated("*", 65000); },
        [&] { return repeated("*1", 40); },
        [&] { return "<" + repeated("1-9,", 16000) + "1>"; },
        [&] { return repeated("<1-9>", 16); },
        [&] { return repeated("@:", 32000); },
        [&] { return random.Digits(40); },
        [&] { return random.Digits(1); },
        [&] { return random.Pattern(CALL_TYPE_NUMBER); },
        [&] { return "*" + random.Digits(3) + "*"; },
        [&] { return "[" + random.Digits(1) + "-9]?[" + random.Digits(1) + "-9]*"; },
        [&] { return std::string("1"); },
    };
    for (auto const& makePattern : kinds) {
        std::string const example = makePattern().substr(0, 40);
        std::size_t const size = makePattern().size() > 1000 ? 300 : 20000;
        std::vector<Rule> rules(size);
        std::list<Rule*> list;
        for (Rule& rule : rules) {
            rule.caller_pattern = makePattern();
            rule.called_pattern = makePattern();
            rule.called_call_type = random.OneOf(2) ? CALL_TYPE_SIP : CALL_TYPE_ANY;
            list.push_back(&rule);
        }
        RuleIndex index;
        index.Build(list);
        EXPECT_GT(index.BuildSteps(), size) << example;
        EXPECT_LT(index.BuildSteps(), 1000000 + 380 * size) << example;
    }
}

// Where each rule would be tested for each place of the address, the index gives up.
TEST(Index, ManyRulesAlikeTakeTheTimeOfAWalk) {
    std::vector<Rule> rules(2000);
    std::list<Rule*> list;
    for (Rule& rule : rules) {
        rule.caller_pattern = "*";
        rule.called_pattern = "*5*5?5*x";
        list.push_back(&rule);
    }
    rules.back().called_pattern = "*5";
    RuleIndex index;
    index.Build(list);
    CallParams const address{std::string(20000, '5'), {}, "", ""};
    Call const call(address, CALL_TYPE_NUMBER, address, CALL_TYPE_NUMBER);
    EXPECT_EQ(index.Find(call).rule, &rules.back());
    EXPECT_LT(index.Find(call).effort, 2 * rules.size());
}

TEST(Index, WithoutMemoryForItTheWalkServes) {
    std::vector<Rule> rules(300);
    std::list<Rule*> list;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        rules[i].called_pattern =
            (i % 3 == 0 ? "*" : "") + std::to_string(7919 * i % 1000) + "[1-5]*";
        list.push_back(&rules[i]);
    }
    RuleIndex index;
    int failures = 0;
    for (bool isBuilt = false; !isBuilt; isBuilt = index.IsUsable()) {
        allocations = 0;
        failingFrom = failures++;
        index.Build(list);
        failingFrom = -1;
    }
    EXPECT_GT(failures, 20);
    index.Clear();
    EXPECT_FALSE(index.IsUsable());
}

TEST(Index, WhatIsLentIsWalked) {
    std::vector<Rule> rules(40);
    std::list<Rule*> list;
    for (Rule& rule : rules)
        list.push_back(&rule);
    RuleIndex index;
    index.Build(list);
    EXPECT_TRUE(index.IsUsable());
    index.LendRecord();
    EXPECT_FALSE(index.IsUsable());
    index.Build(list);
    EXPECT_TRUE(index.IsUsable());
    index.LendList();
    EXPECT_FALSE(index.IsUsable());
    index.Build(list);
    EXPECT_FALSE(index.IsUsable());
}

} // namespace
} // namespace CallRecordingUtils
