// The suspicions about well-formed patterns: what each of them says is compared with the matcher.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "language/Elements.h"
#include "language/Forms.h"
#include "matching/ItemList.h"
#include "matching/PatternMatcher.h"
#include "validation/SidePattern.h"
#include "validation/Suspicions.h"

namespace CallRecordingUtils {
namespace {

bool Matches(std::string const& address, std::string const& pattern) {
    return PatternMatcher(address, pattern).Matches();
}

bool Accepts(std::string const& list, std::string const& candidate) {
    Consumed consumed;
    return AcceptsCandidate(list, candidate, consumed);
}

TEST(Suspicions, EachHasAnExampleThatIsDocumented) {
    std::ifstream file(PATTERN_LANGUAGE_PATH);
    std::string const page(std::istreambuf_iterator<char>(file), {});
    for (Suspicion const& suspicion : AllSuspicions()) {
        std::string const example = suspicion.example;
        auto const problem = SuspectEntry(example, suspicion.type);
        ASSERT_TRUE(problem) << example;
        EXPECT_NE(problem->message.find(suspicion.sentence), std::string::npos) << example;
        EXPECT_NE(page.find(example.empty() ? "(empty)" : '`' + example + '`'), std::string::npos)
            << example << " is not in docs/pattern-language.md";
    }
}

TEST(Suspicions, PointAtTheirPlace) {
    struct {
        CallType type;
        char const* entry;
        std::size_t position;
        char const* part; // Nothing when there is no suspicion.
    } const rows[] = {
        {CALL_TYPE_NUMBER, "", 0, "write *"},
        {CALL_TYPE_NUMBER, "[1,!2]!3", 6, R"("!" is not in a group)"},
        {CALL_TYPE_NUMBER, "[1,!{]2}", 7, R"("}" is not in a group)"},
        {CALL_TYPE_NUMBER, R"(\*{1,[2]})", 5, R"("[" inside { })"},
        {CALL_TYPE_NUMBER, "{5,1[2]3}", 4, R"("[" inside { })"},
        {CALL_TYPE_NUMBER, "{200..299}", 1, "200..299"},
        {CALL_TYPE_NUMBER, "{1..,..1}", 0, nullptr},
        {CALL_TYPE_NUMBER, "{1,ab-cd}", 3, R"("ab-cd" has more)"},
        {CALL_TYPE_NUMBER, "{a-c,A-z}", 0, nullptr},
        {CALL_TYPE_NUMBER, "{1-05}", 1, "leading zero"},
        {CALL_TYPE_NUMBER, "{01-05,1-5,0-9}", 0, nullptr},
        {CALL_TYPE_NUMBER, "{1-3000000000}", 1, "greater numbers"},
        {CALL_TYPE_NUMBER, "{1-2147483647,3000000000}", 0, nullptr},
        {CALL_TYPE_NUMBER, "{1-9999999999}", 0, nullptr}, // No number of this length is greater.
        {CALL_TYPE_NUMBER, "{0000000001-3000000000}", 0, nullptr}, // Compared as text.
        {CALL_TYPE_NUMBER, R"({\*,!\-})", 4, R"("!\-" excludes nothing)"},
        {CALL_TYPE_NUMBER, "{01-03,!01,!02,!03}", 1, R"("01-03" has no effect)"},
        {CALL_TYPE_NUMBER, "{08-10,!08,!09,!10}", 0, nullptr}, // 0a is left.
        {CALL_TYPE_NUMBER, "{08-10,!0?,!10}", 0, nullptr},     // 1 and another character are left.
        {CALL_TYPE_NUMBER, "{08-10,!0?,!1?}", 1, R"("08-10" has no effect)"},
        {CALL_TYPE_NUMBER, "{9-11,!9,!10,!11}", 0, nullptr}, // 9a is left.
        {CALL_TYPE_NUMBER, "{9-11,!9,!10,!11,!9?}", 1, R"("9-11" has no effect)"},
        {CALL_TYPE_NUMBER, "{10-11,!10,!11}", 1, R"("10-11" has no effect)"},
        {CALL_TYPE_NUMBER, "{0-99,!?,!??}", 1, R"("0-99" has no effect)"},
        {CALL_TYPE_NUMBER, "{0-100,!?,!??,!???}", 0, nullptr}, // Too many to try.
        // Numbers that are greater than 32 bits are left.
        {CALL_TYPE_NUMBER, "{2147483646-2147483647,!2147483646,!2147483647}", 0, nullptr},
        {CALL_TYPE_NUMBER, "+[0-9]{1-5}+", 11, R"("+" after a group)"},
        {CALL_TYPE_NUMBER, "20[+]1+", 0, nullptr},
        {CALL_TYPE_ANY, "_[1-3]ZX", 0, R"("_[1-3]ZX" is compared as it stands)"},
        {CALL_TYPE_NUMBER, "_20.", 0, nullptr},
        {CALL_TYPE_NUMBER, "2X.5", 0, nullptr},
        {CALL_TYPE_SIP, "2XX@pbx", 0, nullptr},
        {CALL_TYPE_NUMBER, "4E+09", 0, "all of its digits"},
        {CALL_TYPE_NUMBER, "1.E+10", 0, nullptr},
        {CALL_TYPE_NUMBER, "[-1]", 0, nullptr}, // Malformed.
        {CALL_TYPE_ANY, "201@pbx", 0, nullptr}, // Malformed.
        {CALL_TYPE_SIP, "201@pbx:5060", 0, nullptr},
        {CALL_TYPE_SIP, "*@*:", 0, nullptr},
        {CALL_TYPE_SIP, "@", 0, "every user"},
        {CALL_TYPE_SIP, "*@", 2, "every host"},
        {CALL_TYPE_SIP, "*@:*", 2, "every host"},
        {CALL_TYPE_SIP, R"(\!@[1,!1]:5)", 4, R"("1" has no effect)"},
        {CALL_TYPE_SIP, "201@pbx:5[0,!1]", 12, R"("!1" excludes nothing)"},
        {CALL_TYPE_SIP, "201@pbx:65535", 0, nullptr},
        {CALL_TYPE_SIP, "201@pbx:65536", 8, "greater than 65535"},
        {CALL_TYPE_SIP, "201@pbx:99999999999", 8, "greater than 65535"},
        {CALL_TYPE_SIP, "201@pbx:{70000-80000}?*", 0, nullptr},
        {CALL_TYPE_SIP, "201@pbx:50;x", 10, R"(";" is not a digit)"},
        {CALL_TYPE_SIP, R"(201@pbx:[a]5\*)", 0, nullptr},
    };
    for (auto const& [type, entry, position, part] : rows) {
        auto const problem = SuspectEntry(entry, type);
        ASSERT_EQ(problem.has_value(), part != nullptr) << entry;
        if (!problem)
            continue;
        EXPECT_EQ(problem->position, position) << entry;
        EXPECT_NE(problem->message.find(part), std::string::npos) << problem->message;
    }
    std::string const large = '{' + std::string(997, '1') + ",!2}";
    EXPECT_TRUE(SuspectEntry(large, CALL_TYPE_NUMBER));
    EXPECT_FALSE(SuspectEntry("1" + large.substr(0, 1) + "1" + large.substr(1), CALL_TYPE_NUMBER));
}

/// A group with one of its items.
struct ItemInGroup {
    std::string text, list;
};

/// What the suspicion with this example says about an item, for one candidate.
struct Claim {
    char const* example;
    std::function<bool(ItemInGroup const&, std::string const& candidate)> holds;
};

std::vector<Claim> Claims() {
    return {
        {"{1,[2]}", [](auto& item, auto& c) { return !Accepts(item.text, c); }},
        {"{200..299}",
         [](auto& item, auto& c) {
             return !Accepts(item.text, c) || c.find("..") != std::string::npos;
         }},
        {"{ab-cd}",
         [](auto& item, auto& c) {
             char const low = item.text[0], high = item.text[item.text.find('-') + 1];
             return c.size() != 1 || !IsLetter(c[0]) ||
                    c == item.text.substr(0, item.text.find('-')) ||
                    Accepts(item.text, c) == (low < c[0] && c[0] <= high);
         }},
        {"{1-05}", [](auto& item,
                      auto& c) { return !Accepts(item.text, c) || c.size() == 1 || c[0] != '0'; }},
        {"{1-3000000000}",
         [](auto& item, auto&) {
             std::string const high = item.text.substr(item.text.find('-') + 1);
             std::string const greater(high.size(), '9');
             return high < greater && Accepts(item.text, greater);
         }},
        {"[1,!2]",
         [](auto& item, auto& c) {
             return !Accepts(item.list, c) || !ExcludesCandidate(item.text, c);
         }},
        {"[1,!1]",
         [](auto& item, auto& c) {
             return !Accepts(item.text, c) || ExcludesCandidate(item.list, c);
         }},
    };
}

std::vector<std::string> TextsOver(std::string const& alphabet, std::size_t longest) {
    std::vector<std::string> texts = {""};
    for (std::size_t begin = 0, length = 1; length <= longest; ++length)
        for (std::size_t const end = texts.size(); begin < end; ++begin)
            for (char const c : alphabet)
                texts.push_back(texts[begin] + c);
    return texts;
}

// Every suspicion about a random group is true of all short candidates. The two that name an item
// without effect are also found whenever they are true, apart from exclusions with a "?".
TEST(Suspicions, AreTrueOfAllCandidates) {
    std::vector<std::string> const candidates = TextsOver("01289abc.[\x01\xff", 3);
    std::vector<std::string> const items = {"0",
                                            "1",
                                            "9",
                                            "12",
                                            "1?",
                                            "?",
                                            "a",
                                            "1.2",
                                            "1..2",
                                            ".?..2",
                                            "[1]",
                                            "2]",
                                            "0-9",
                                            "1-2",
                                            "9-11",
                                            "8-9",
                                            "10-12",
                                            "0-10",
                                            "01-02",
                                            "08-11",
                                            "1-02",
                                            "a-c",
                                            "A-b",
                                            "ab-c",
                                            "a-bc",
                                            "2-9999999999",
                                            "2-3000000000",
                                            "0000000001-3000000000",
                                            "!0",
                                            "!1",
                                            "!9",
                                            "!10",
                                            "!11",
                                            "!12",
                                            "!9?",
                                            "!1?",
                                            "!??",
                                            "!a",
                                            "!b",
                                            "!01",
                                            "!02",
                                            "!1[2]",
                                            "!1..2"};
    std::mt19937 random(1);
    std::map<std::string, int> found;
    for (int round = 0; round < 3000; ++round) {
        std::string list;
        std::vector<std::string> chosen;
        for (std::size_t count = 1 + random() % 6; chosen.size() < count;) {
            chosen.push_back(items[random() % items.size()]);
            list += (list.empty() ? "" : ",") + chosen.back();
        }
        if (ToStored('{' + list + '}', CALL_TYPE_NUMBER).problem)
            continue;
        PatternPiece const piece{PatternPiece::Kind::Number, '<' + list + '>'};
        for (Claim const& claim : Claims()) {
            auto const suspicion =
                std::find_if(AllSuspicions().begin(), AllSuspicions().end(),
                             [&](auto& s) { return std::strcmp(s.example, claim.example) == 0; });
            auto const stretch = suspicion->find(piece);
            std::size_t begin = 1;
            for (std::string const& text : chosen) {
                ItemInGroup const item{text, list};
                bool const isFound =
                    stretch && begin <= stretch->begin && stretch->begin < begin + text.size();
                bool const isExclusion = text[0] == '!';
                std::size_t const longest = text.size() - (text.find('-') + 1);
                bool const isExact =
                    (claim.example == std::string("[1,!1]") && !isExclusion && longest <= 3) ||
                    (claim.example == std::string("[1,!2]") && isExclusion && text.size() <= 4 &&
                     text.find('?') == std::string::npos);
                bool const holds = (isFound || (isExact && !stretch)) &&
                                   std::all_of(candidates.begin(), candidates.end(),
                                               [&](auto& c) { return claim.holds(item, c); });
                EXPECT_EQ(isFound, holds) << list << ": " << text << suspicion->sentence;
                found[claim.example] += isFound ? 1 : 0;
                begin += text.size() + 1;
            }
        }
    }
    for (Claim const& claim : Claims())
        EXPECT_GT(found[claim.example], 20) << claim.example;
}

// Where the matcher is said to stop, the rest of a pattern is as good as a "*".
TEST(Suspicions, NameThePlaceWhereTheMatcherStops) {
    std::vector<std::string> const addresses = TextsOver("12!-", 4);
    std::vector<std::string> entries = {""};
    for (std::size_t begin = 0, tokens = 1; tokens <= 4; ++tokens)
        for (std::size_t const end = entries.size(); begin < end; ++begin)
            for (char const* token : {"1", "?", "*", "!", ",", "[1,!2]", "{1,!2}", "[1,!{]", "]"})
                entries.push_back(entries[begin] + token);
    int stops = 0;
    for (std::string const& entry : entries) {
        if (ToStored(entry, CALL_TYPE_NUMBER).problem)
            continue;
        std::string const stored = ToStoredForm(entry);
        std::size_t const stop = PlaceOfStop(stored);
        if (stop == std::string::npos)
            continue;
        ++stops;
        for (std::string const& address : addresses)
            ASSERT_EQ(Matches(address, stored), Matches(address, stored.substr(0, stop) + '*'))
                << entry << " " << address;
    }
    EXPECT_GT(stops, 5);
}

// What is said of a pattern that was stored without conversion.
TEST(Suspicions, SayOnlyWhereTheMatcherStopsThatItDoes) {
    struct {
        CallType type;
        char const* stored;
        bool stops;
    } const rows[] = {
        {CALL_TYPE_NUMBER, "12{3-5}", true},   {CALL_TYPE_NUMBER, "\\*72", true},
        {CALL_TYPE_NUMBER, "<1{2>", false},    {CALL_TYPE_NUMBER, "[1{", false},
        {CALL_TYPE_SIP, "12{3-5}", false},     {CALL_TYPE_SIP, "12{3-5}@h", true},
        {CALL_TYPE_NUMBER, "a-b{3-5}", false}, // It stops earlier.
    };
    for (auto const& row : rows) {
        auto const problem = ExplainStored(row.stored, row.type);
        ASSERT_TRUE(problem) << row.stored;
        EXPECT_EQ(problem->position, std::string(row.stored).find_first_of("{\\"));
        EXPECT_EQ(problem->message.find("the matcher stops here") != std::string::npos, row.stops)
            << row.stored;
    }
}

} // namespace
} // namespace CallRecordingUtils
