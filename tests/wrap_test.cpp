// Lines of a limited width: no word is broken or lost that fits, and no date.

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "text/Printable.h"
#include "text/Wrap.h"

namespace CallRecordingUtils {
namespace {

std::vector<std::string> Split(std::string const& text, char at) {
    std::istringstream parts(text);
    std::vector<std::string> split;
    for (std::string part; std::getline(parts, part, at);)
        if (!part.empty())
            split.push_back(part);
    return split;
}

class WrapTest : public testing::Test {
  protected:
    std::string RandomText() {
        std::string text = "A";
        for (auto words = random() % 30; words > 0; --words)
            text += random() % 4 == 0 ? " 2026-11-25 14:03:11"
                                      : " " + std::string(1 + random() % 9, 'a');
        return text;
    }

    std::mt19937 random{1}; // NOLINT(cert-msc32-c,cert-msc51-cpp)
};

TEST_F(WrapTest, BreaksAtWordsOnly) {
    for (int i = 0; i < 3000; ++i) {
        std::string const text = RandomText();
        std::size_t const width = 30 + random() % 60, indent = random() % 9;
        std::vector<std::string> words;
        for (std::string const& line : Split(WrapText(text, width, indent), '\n')) {
            EXPECT_LE(DisplayWidth(line), width);
            std::vector<std::string> const more = Split(line, ' ');
            EXPECT_NE(more.front(), "14:03:11") << text;
            words.insert(words.end(), more.begin(), more.end());
        }
        EXPECT_EQ(words, Split(text, ' '));
    }
}

TEST_F(WrapTest, LeavesACommandTheSameToAShell) {
    for (std::string const command :
         {"callrecordingctl add --from '{200-299}' --description 'it'\\''s  a long one' --to '*'",
          "callrecordingctl add --description $'two\\x0alines \\' here' --at 1 --record-to x"})
        for (std::size_t width = 1; width < 90; ++width) {
            std::string wrapped = WrapCommand(command, width, 4);
            for (std::size_t at; (at = wrapped.find(" \\\n    ")) != std::string::npos;)
                wrapped.replace(at, 7, " ");
            EXPECT_EQ(wrapped, command + "\n") << width;
        }
}

} // namespace
} // namespace CallRecordingUtils
