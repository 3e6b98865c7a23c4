// The pattern and range checks: what passes, what is rejected, and where and how a rejection says
// so.

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include <callrecordingutils/PatternValidation.h>

namespace CallRecordingUtils {
namespace {

using F = PatternFault;

struct Rejection {
    char const* text;
    PatternFault fault;
    std::size_t position;
};

void ExpectRejected(Rejection const& row, std::optional<PatternRejection> const& actual) {
    ASSERT_TRUE(actual) << row.text;
    EXPECT_EQ(actual->fault, row.fault) << row.text << ": " << actual->message;
    EXPECT_EQ(actual->position, row.position) << row.text << ": " << actual->message;
}

TEST(PatternValidation, WellFormedPatternsComeBackInStoredForm) {
    std::pair<char const*, char const*> const rows[] = {
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
        {"{[1]2,3}", "{[1]2,3}"}, // Values of a range expression are not looked at.
    };
    for (auto const& [written, stored] : rows) {
        std::string pattern = written;
        EXPECT_FALSE(IsPatternIncorrect(pattern)) << written;
        EXPECT_EQ(pattern, stored);
    }
}

TEST(PatternValidation, MalformedPatternsAreExplained) {
    Rejection const rows[] = {
        {R"(\*9#72)", F::ReservedCharacter, 3},
        {R"(\*\72)", F::StrayBackslash, 2},
        {R"(\\*)", F::StrayBackslash, 0},
        {"72\\", F::StrayBackslash, 2},
        {"!3[1,!2]", F::ExclusionOutsideGroup, 0},
        {"[1]!2", F::ExclusionOutsideGroup, 3},
        {"0[1,!2", F::UnclosedGroup, 1},
        {"1,!2}", F::UnopenedGroup, 4},
        {"<1-5>", F::InvalidCharacter, 0},
        {R"(\*\* 1)", F::InvalidCharacter, 4},
        {"0\xc3\xa9", F::InvalidCharacter, 1},
        {"[1[2]", F::NestedGroup, 2},
        {"[[1]]", F::NestedGroup, 1},
        {"]1[[2]", F::NestedGroup, 3},
        {"[1]2[3", F::UnclosedGroup, 4},
        {"1]", F::UnopenedGroup, 1},
        {"}{", F::UnopenedGroup, 0},
        {"]1[2[3]", F::UnopenedGroup, 0},
        {"0[]", F::EmptyGroup, 1},
        {"[,1]", F::EmptyItem, 1},
        {"[1,]", F::EmptyItem, 2},
        {"[1,,2]", F::EmptyItem, 3},
        {"{1,}", F::EmptyItem, 2},
        {"[-5]", F::IncompleteRange, 1},
        {"[5-]", F::IncompleteRange, 2},
        {"[5-,1]", F::IncompleteRange, 2},
        {"[1,-5]", F::IncompleteRange, 3},
        {"{1,2-}", F::IncompleteRange, 4},
        {"[1--3]", F::RepeatedDash, 3},
        {"{1-2-3}", F::RepeatedDash, 4},
        {R"(\***)", F::RepeatedStar, 3},
        {"[1*2]", F::StarInGroup, 2},
        {"{1-*}", F::StarInGroup, 3},
        {"12,3", F::SeparatorOutsideGroup, 2},
        {"1-[2]", F::SeparatorOutsideGroup, 1},
        {R"([1]\,-[2])", F::SeparatorOutsideGroup, 5},
        {"{1-5},", F::SeparatorOutsideGroup, 5},
        {"[0,12]", F::LongSetItem, 3},
        {"[10-20]", F::LongSetItem, 1},
        {"[1,!23]", F::LongSetItem, 3},
        {"[1,{2}]", F::MixedBrackets, 3},
        {"{[1-5]}", F::MixedBrackets, 1},
        {"[1,!]", F::EmptyExclusion, 3},
        {"[1!2]", F::MisplacedExclusion, 2},
        {"{1-!5}", F::MisplacedExclusion, 3},
        {"{9,!1-5}", F::ExclusionOfRange, 3},
        {"[a-Z]", F::MixedRange, 1},
        {"{1a-5}", F::MixedRange, 1},
        {"{0a-100}", F::MixedRange, 1},
        {"[0,5-5]", F::DescendingRange, 3},
        {"{1-5}{5-1}", F::DescendingRange, 6},
        {"{01-100}", F::UnequalWidth, 1},
        {"[1-5,5]", F::RepeatedSymbol, 5},
        {"[3,1-5]", F::RepeatedSymbol, 3},
        {R"([\*,\*])", F::RepeatedSymbol, 4},
        {"0[!1]", F::NoPositiveItem, 1},
        {"9{!3}", F::NoPositiveItem, 1},
    };
    for (Rejection const& row : rows)
        ExpectRejected(row, ExplainPattern(row.text));
}

TEST(PatternValidation, RejectedPatternsAreRewrittenUnlessACharacterIsReserved) {
    for (auto const& [written, left] :
         {std::pair{R"(\*[5-5])", "#[5-5]"}, {R"(\*\\*)", "#\\#"}, {R"(\*72%)", R"(\*72%)"}}) {
        std::string pattern = written;
        EXPECT_TRUE(IsPatternIncorrect(pattern)) << written;
        EXPECT_EQ(pattern, left);
    }
}

TEST(PatternValidation, MessagesQuoteWhatTheUserWrote) {
    std::pair<char const*, char const*> const rows[] = {
        {"#72", R"("\*")"},
        {R"([\*,\*])", R"("\*" is given twice)"},
        {"[4-6,1-5]", R"("4" is given twice in this set: "1-5")"},
        {"0\xc3", R"("\xC3")"},
        {"1-2", R"(\-)"},
        {"{2147483648-9999999999}", "2147483647"},
        {"{000000000000000000000000000000-1}", R"(000...")"},
    };
    for (auto const& [pattern, part] : rows) {
        std::string const message = ExplainPattern(pattern).value().message;
        EXPECT_NE(message.find(part), std::string::npos) << pattern << ": " << message;
    }
}

TEST(RangeValidation, AcceptsWellFormedRanges) {
    for (char const* range :
         {"{5}", "{abc}", "{!5,7}", "{1-9,!5}", "{01-10}", "{1-05}", "{0-99}", "{a-c}", "{A-z}",
          "{ab-b}", "{1-99999999999}", "{1{-5}", "{1-5,", "5-1", "-"})
        EXPECT_TRUE(IsRangeCorrect(range)) << range;
}

TEST(RangeValidation, MalformedRangesAreExplained) {
    Rejection const rows[] = {
        {"", F::EmptyGroup, 0},
        {"{}", F::EmptyGroup, 0},
        {"{5", F::UnclosedGroup, 0},
        {"{1}}", F::UnopenedGroup, 3},
        {"{1,,2}", F::EmptyItem, 3},
        {"{1,}", F::EmptyItem, 2},
        {"{-5}", F::IncompleteRange, 1},
        {"{5-}", F::IncompleteRange, 2},
        {"1*", F::StarInGroup, 1},
        {"!5}", F::MisplacedExclusion, 0},
        {"{!,5}", F::EmptyExclusion, 1},
        {"{5,!}", F::EmptyExclusion, 3},
        {"{!5", F::UnclosedGroup, 0},
        {"{!5}7", F::NoPositiveItem, 0},
        {"{10-050}", F::UnequalWidth, 1},
        {"{1-5,7-2}", F::DescendingRange, 5},
        {"{7,c-a}", F::DescendingRange, 3},
        {"{ab-ac}", F::DescendingRange, 1},
        {"{a-5}", F::MixedRange, 1},
        {"{2147483647-99999999999}", F::DescendingRange, 1},
        {"{1{5-1{2}", F::DescendingRange, 1}, // 15 and 12
    };
    for (Rejection const& row : rows) {
        EXPECT_FALSE(IsRangeCorrect(row.text)) << row.text;
        ExpectRejected(row, ExplainRange(row.text));
    }
}

void ExpectAgreement(std::string const& text) {
    std::string stored = text;
    auto const pattern = ExplainPattern(text);
    EXPECT_EQ(pattern.has_value(), IsPatternIncorrect(stored)) << text;
    EXPECT_LE(pattern ? pattern->position : 0, text.size()) << text;
    auto const range = ExplainRange(text);
    EXPECT_NE(range.has_value(), IsRangeCorrect(text)) << text;
    EXPECT_LE(range ? range->position : 0, text.size()) << text;
}

void ForEachText(std::string const& start, std::size_t longest) {
    ExpectAgreement(start);
    for (char c : std::string(start.size() < longest ? "[]{},-!1a?*\\" : ""))
        ForEachText(start + c, longest);
}

TEST(PatternValidation, ReasonAndResultAgreeOnAllShortTexts) {
    ForEachText("", 4);
}

TEST(PatternValidation, TimeGrowsWithTheLengthOnly) {
    struct {
        char const* start;
        char const* repeated;
        char const* end;
    } const rows[] = {
        {"", "[", ""},      {"", "[]", ""},      {"", "]1[2", ""},          {"", ",", ""},
        {"", R"(\*)", ""},  {"", "\\", "*"},     {"", "[1]a", "-"},         {"[", "?,", "1]"},
        {"", "{1}", ""},    {"{", "1-2,", "3}"}, {"{1-", "9", "}"},         {"{", "!1,", "5}"},
        {"", "[1,!1]", ""}, {"{1,", "-", "}"},   {"[1]{2,", "{3,", "1-2}"}, {"[1,!1]", "!", ""},
    };
    for (auto const& row : rows) {
        auto const timeOf = [&row](std::size_t length) {
            std::string text = row.start;
            while (text.size() < length)
                text += row.repeated;
            text += row.end;
            auto const start = std::chrono::steady_clock::now();
            ExpectAgreement(text);
            return std::chrono::steady_clock::now() - start;
        };
        // A square would be a hundred times as long; the rest is for the host's other work.
        auto const allowed = 40 * timeOf(100000) + std::chrono::milliseconds(200);
        EXPECT_LT(timeOf(1000000), allowed) << row.repeated;
    }
}

} // namespace
} // namespace CallRecordingUtils
