// The index compared with the walk, over random lists and calls; and what it does without memory.

#include <gtest/gtest.h>

#include <cstdlib>
#include <list>
#include <new>
#include <random>
#include <string>
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
    CallType Type() { return static_cast<CallType>(OneOf(3) ? Below(4) : 0); }

    std::string Digits(std::size_t length) {
        std::string digits;
        while (length-- > 0)
            digits += static_cast<char>('0' + Below(10));
        return digits;
    }

    std::string Pattern(CallType type) {
        static Texts const pieces{
            "*",         "?",       "[1-5]",   "[0-9,!5]",    "[24]",        "[1,3,5]",
            "[a-f,?]",   "[a-bc]",  "<00-59>", "<10-29,!13>", "<1-9,10-99>", "<5,15>",
            "<123-129>", "<1?,2?>", "<9-99>",  "<a1-29,b5>",  "ab",          "<00-99,!5?>",
            "]",         "[1",      "<?>",     "[!1,0-9]",    "<-5,7>",      "<31-24>"};
        std::string pattern = OneOf(3) ? "*" : "";
        for (std::size_t n = 1 + Below(3); n > 0; --n)
            pattern += OneOf(2) ? Pick(pieces) : Digits(1 + Below(4));
        if (type == CALL_TYPE_SIP && !OneOf(20))
            pattern += Pick({"@h", "@g", "@*", "@h:5060", "@h1:<5060-5061>", "@[gh]"});
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

    /// A text that pattern may match.
    std::string Address(std::string pattern) {
        std::string address;
        while (!pattern.empty()) {
            char const c = pattern.front();
            std::size_t const end = c == '[' ? pattern.find(']') : c == '<' ? pattern.find('>') : 0;
            if (c == '*')
                address += Digits(Below(4));
            else if (c == '?')
                address += Digits(1);
            else if (c == '[' || c == '<')
                address += Pick({"1", "2", "15", "17", "125", "a", "b5", "3"});
            else
                address += c;
            pattern.erase(0, end == std::string::npos ? end : end + 1);
        }
        if (OneOf(4) && !address.empty())
            address[Below(address.size())] = static_cast<char>('0' + Below(10));
        return OneOf(10) ? address + Digits(1) : address;
    }

    CallParams Params(std::string const& pattern) {
        std::string const user = pattern.substr(0, pattern.find('@'));
        return {Address(user), {}, Pick({"h", "g", "h1", ""}), Pick({"5060", "5061", "", "x:1"})};
    }

  private:
    std::mt19937 random_;
};

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
            Rule const& model = rules[random.Below(rules.size())];
            CallParams const caller = random.Params(model.caller_pattern);
            CallParams const called = random.Params(model.called_pattern);
            Call const call(caller, random.OneOf(8) ? random.Type() : model.caller_call_type,
                            called, random.OneOf(8) ? random.Type() : model.called_call_type);
            for (int pass = 0; pass < 3; ++pass) {
                auto const walked = FirstTaking(list, call);
                long const before = allocations;
                Rule const* const found = index.Find(call).rule;
                ASSERT_EQ(allocations, before);
                ASSERT_EQ(found, walked == list.end() ? nullptr : *walked)
                    << caller.user << " to " << called.user << "@" << called.host << ":"
                    << called.port << " in round " << round;
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

// What an index is there for. The bounds are a third more than it takes.
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
                 sets += "[" + g.Digits(1) + "," + g.Digits(1) + "]";
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
            effort += index.Find(Call({}, CALL_TYPE_NUMBER, called, CALL_TYPE_NUMBER)).effort;
        }
        EXPECT_LE(effort, 500 * mostEffort) << kind;
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
