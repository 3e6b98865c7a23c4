// The checks of patterns and range expressions: what passes, what is rejected, and what a rejection
// says.

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {
namespace {

using F = PatternFault;

TEST(PatternValidation, PatternsComeBackInStoredForm) {
    struct {
        char const *written, *stored;
        bool isIncorrect = false; // The escapes are replaced unless a character is reserved.
    } const rows[] = {
        {"", ""},
        {"a'_+=/~().;$&", "a'_+=/~().;$&"},
        {"*?*9", "*?*9"},
        {R"(\*\?\,\-\!72)", "#^@%:72"},
        {R"([\*,\-,!\!]{\,\,})", "[#,%,!:]{@@}"},
        {"[A-Z,a-z,0-9]", "[A-Z,a-z,0-9]"},
        {"[?,?,1-3,4-6]", "[?,?,1-3,4-6]"},
        {"{1-5}[1-3]0{01-10,a?c,!150}", "{1-5}[1-3]0{01-10,a?c,!150}"},
        {"[1,!1]", "[1,!1]"},
        {"[1,!!]", "[1,!!]"},
        {"[1,!2]!3", "[1,!2]!3"},
        {"{[1]2,3}", "{[1]2,3}"}, // Values of a range expression are not checked.
        {R"(\*[5-5])", "#[5-5]", true},
        {R"(\*\\*)", "#\\#", true},
        {R"(\*72%)", R"(\*72%)", true},
    };
    for (auto const& [written, stored, isIncorrect] : rows) {
        std::string pattern = written;
        EXPECT_EQ(IsPatternIncorrect(pattern), isIncorrect) << written;
        EXPECT_EQ(pattern, stored);
    }
}

TEST(PatternValidation, WhatIsMalformedIsExplained) {
    using Places =
        std::vector<std::pair<std::string, std::size_t>>; // Texts, and where the fault is.
    struct {
        PatternFault fault;
        Places patterns, ranges;
    } const rows[] = {
        {F::ReservedCharacter, {{R"(\*9#72)", 3}}, {}},
        {F::StrayBackslash, {{R"(\*\72)", 2}, {R"(\\*)", 0}, {"72\\", 2}}, {}},
        {F::ExclusionOutsideGroup, {{"!3[1,!2]", 0}, {"[1]!2", 3}}, {}},
        {F::UnclosedGroup, {{"0[1,!2", 1}, {"[1]2[3", 4}}, {{"5", 0}, {"{5", 0}, {"{!5", 0}}},
        {F::UnopenedGroup, {{"1,!2}", 4}, {"1]", 1}, {"}{", 0}, {"]1[2[3]", 0}}, {{"{1}}", 3}}},
        {F::InvalidCharacter, {{"<1-5>", 0}, {R"(\*\* 1)", 4}, {"0\xc3\xa9", 1}}, {}},
        {F::NestedGroup, {{"[1[2]", 2}, {"[[1]]", 1}, {"]1[[2]", 3}}, {}},
        {F::EmptyGroup, {{"0[]", 1}}, {{"", 0}, {"{}", 0}}},
        {F::EmptyItem, {{"[,1]", 1}, {"[1,]", 2}, {"[1,,2]", 3}}, {{"{1,,2}", 3}, {"{1,}", 2}}},
        {F::IncompleteRange,
         {{"[-5]", 1}, {"[5-]", 2}, {"[5-,1]", 2}, {"[1,-5]", 3}, {"{1,2-}", 4}},
         {{"{-5}", 1}, {"{5-}", 2}}},
        {F::RepeatedDash, {{"[1--3]", 3}, {"{1-2-3}", 4}, {"[1-2-3]", 4}}, {}},
        {F::RepeatedStar, {{R"(\***)", 3}}, {}},
        {F::StarInGroup, {{"[1*2]", 2}, {"{1-*}", 3}}, {{"1*", 1}}},
        {F::SeparatorOutsideGroup,
         {{"12,3", 2}, {"1-[2]", 1}, {R"([1]\,-[2])", 5}, {"{1-5},", 5}},
         {}},
        {F::LongSetItem, {{"[0,12]", 3}, {"[10-20]", 1}, {"[1,!23]", 3}, {"[!-5]", 1}}, {}},
        {F::MixedBrackets, {{"[1,{2}]", 3}, {"{[1-5]}", 1}}, {}},
        {F::EmptyExclusion, {{"[1,!]", 3}}, {{"{!,5}", 1}, {"{5,!}", 3}}},
        {F::MisplacedExclusion, {{"[1!2!3]", 2}, {"{1-!5}", 3}}, {{"!5}", 0}}},
        {F::ExclusionOfRange, {{"{9,!1-5}", 3}}, {}},
        {F::MixedRange,
         {{"[a-Z]", 1}, {"[9-A]", 1}, {"{1a-5}", 1}, {"{0a-100}", 1}},
         {{"{a-5}", 1}}},
        {F::DescendingRange,
         {{"[0,5-5]", 3}, {"{1-5}{5-1}", 6}},
         {{"{1-5,7-2}", 5},
          {"{7,c-a}", 3},
          {"{ab-ac}", 1},
          {"{2147483647-2147483647}", 1},
          {"{99999999999-5}", 1},
          {"{4000000000-3000000000}", 1},
          {"{1{5-1{2}", 1}}}, // 15 and 12
        {F::UnequalWidth, {{"{01-100}", 1}}, {{"{10-050}", 1}}},
        {F::RepeatedSymbol, {{"[1-5,5]", 5}, {"[3,1-5]", 3}, {R"([\*,\*])", 4}}, {}},
        {F::WrongClosing,
         {{"{1-5]", 4}, {"[}", 1}, {"[1-5}", 4}, {"{!1]", 3}, {"[1}[2]", 2}, {R"(\*{1]2[3])", 4}},
         {}},
        {F::UnopenedGroup, {{"{1]}", 2}, {"]{1]", 0}}, {}},
        {F::UnclosedGroup, {{"{[1}", 1}, {"[1,{2]", 3}}, {}},
        {F::NumberTooLarge,
         {{"{1,3000000000-4000000000}", 3}},
         {{"{2147483647-99999999999}", 1}, {"{0-1,02147483648-10000000000}", 5}}},
        {F::NoPositiveItem, {{"0[!1]", 1}, {"9{!3}", 1}}, {{"{!5}7", 0}}},
    };
    for (auto const& [fault, patterns, ranges] : rows) {
        for (Places const* const places : {&patterns, &ranges}) {
            for (auto const& [text, position] : *places) {
                auto const rejection =
                    places == &patterns ? ExplainPattern(text) : ExplainRange(text);
                ASSERT_TRUE(rejection) << text;
                EXPECT_EQ(rejection->fault, fault) << text << ": " << rejection->message;
                EXPECT_EQ(rejection->position, position) << text << ": " << rejection->message;
                EXPECT_NE(rejection->message, "") << text;
            }
        }
    }
}

// A part of the message, and a pattern that follows its advice.
TEST(PatternValidation, MessagesHelp) {
    struct {
        char const *pattern, *part, *mended;
    } const rows[] = {
        {"#72", R"(\*72 is what matches a dialled #72)", R"(\*72)"},
        {"1@2", "the parts of a SIP address", R"(1\,2)"},
        {"1:2", "the parts of a SIP address", R"(1\!2)"},
        {"<1-5>", "in braces", "{1-5}"},
        {"1>2", "write ? where the address has one", "1?2"},
        {"1<2", "write ? where", "1?2"},
        {"[1", R"("]" after)", "[1]"},
        {"{1-5]", R"("{" and "]" are not a pair: write "}" here)", "{1-5}"},
        {"[1-5}", R"("[" and "}" are not a pair: write "]" here)", "[1-5]"},
        {"{5-1,7}", R"("5-1" does not)", "{1-5,7}"},
        {"{a-Z}", "(capital letters come before small ones)", "{A-z}"},
        {"{cd-ab}", "only the first letter of each end counts", "{ab-cd}"},
        {R"([\*,\*])", R"("\*" is given twice)", R"([\*])"},
        {"[4-6,1-5]", R"("4" is given twice in this set: "1-5")", "[4-6,1-3]"},
        {"1-2", R"(? for a "-" in the address (\- where the telephone system hands over "%")",
         "1?2"},
        {"1,2", R"((\, where the telephone system hands over "@")", "1?2"},
        {"!1", R"((\! where the telephone system hands over ":")", "?1"},
        {"[1,*]", R"((\* where the telephone system hands over "#")", R"([1,\*])"},
        {"[5,-]", R"(remove the "-")", "[5]"},
        {"{1-2-3}", R"(write "," instead)", "{1-2,3}"},
        {"[1-2-3]", R"(write "," instead)", "[1-2,3]"},
        {"{1--2}", "remove this one", "{1-2}"},
        {"{1-!5}", "remove it, and exclude a value in an item of its own", "{1-5,!5}"},
        {"{1!5}", "put one of these before it", "{1,!5}"},
        {"[1..3]", R"("1..3" is not a range: write it with "-")", "[1-3]"},
        {"{2147483648-9999999999}", "32 bits): write the leading digits before",
         "2{147483648-999999999}"},
        {"{000000000000000000000000000000-1}", R"(000...")", "{0-1}"},
        {"0\xc3", R"(the byte "\xC3" cannot be in a pattern: write ?)", "0?"},
        {"0\xc3\xa9", "U+00E9 cannot be in a pattern: write ??", "0??"},
        {"\xf0\x9f\x93\x9e", "U+1F4DE cannot be in a pattern: write ????", "????"},
        {"\xe0\xa4\x85", "U+0905", "???"},
        {"\x80zz", R"(the byte "\x80")", "?zz"},
        {"\xe2\x82", R"(the byte "\xE2")", "??"},
        {"\xe2\x82z", R"(the byte "\xE2")", "??z"},
        {"{1\xe2\x80\x93"
         "5}",
         R"(an en dash (U+2013), which cannot be in a pattern: type "-")", "{1-5}"},
        {"\xe2\x80\xaa+49", "an invisible mark (U+202A)", "+49"},
        {"\xef\xbc\x91", "a full-width character (U+FF11)", "1"},
    };
    for (auto const& [pattern, part, mended] : rows) {
        std::string const message = ExplainPattern(pattern).value().message;
        EXPECT_NE(message.find(part), std::string::npos) << pattern << ": " << message;
        EXPECT_FALSE(ExplainPattern(mended)) << mended;
    }
}

TEST(PatternValidation, WhatIsSurelyNotMeantIsSuspected) {
    auto const problem = SuspectPattern(R"(\*{9-11}[1,!1])");
    ASSERT_TRUE(problem);
    EXPECT_EQ(problem->position, 9U);
    EXPECT_EQ(problem->message.find(R"("1" has no effect)"), 0U) << problem->message;
    EXPECT_FALSE(SuspectPattern("{9-11,!9,!10,!11}") || SuspectPattern("201@pbx"));
}

TEST(RangeValidation, AcceptsWellFormedRanges) {
    for (char const* range :
         {"{5}", "{abc}", "{!5,7}", "{1-9,!5}", "{01-10}", "{1-05}", "{0-99}", "{a-c}", "{A-z}",
          "{ab-b}", "{1-99999999999}", "{1{-5}", "{1-5,", "5-1", "-"})
        EXPECT_TRUE(IsRangeCorrect(range)) << range;
}

void ExpectAgreement(std::string const& text) {
    std::string stored = text;
    auto const pattern = ExplainPattern(text);
    EXPECT_EQ(pattern.has_value(), IsPatternIncorrect(stored)) << text;
    EXPECT_LE(pattern ? pattern->position : 0, text.size()) << text;
    SuspectPattern(text); // It takes time, too.
    auto const range = ExplainRange(text);
    EXPECT_NE(range.has_value(), IsRangeCorrect(text)) << text;
    EXPECT_LE(range ? range->position : 0, text.size()) << text;
}

TEST(PatternValidation, TimeGrowsWithTheLengthOnly) {
    struct {
        char const *start, *repeated, *end;
    } const rows[] = {
        {"", "[", ""},      {"", "[]", ""},      {"", "]1[2", ""},          {"", ",", ""},
        {"", R"(\*)", ""},  {"", "\\", "*"},     {"", "[1]a", "-"},         {"[", "?,", "1]"},
        {"", "{1}", ""},    {"{", "1-2,", "3}"}, {"{1-", "9", "}"},         {"{", "!1,", "5}"},
        {"", "[1,!1]", ""}, {"{1,", "-", "}"},   {"[1]{2,", "{3,", "1-2}"}, {"[1,!1]", "!", ""},
    };
    auto const start = std::chrono::steady_clock::now();
    for (auto const& row : rows) {
        std::string text = row.start;
        while (text.size() < 200000)
            text += row.repeated;
        ExpectAgreement(text + row.end);
    }
    // It takes about a second, unless the time of one grows with the square of the length.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

} // namespace
} // namespace CallRecordingUtils
