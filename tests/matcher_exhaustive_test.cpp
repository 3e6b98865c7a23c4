// The matcher against a slow one: every short pattern, every short address, answer and counters.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "support/SlowMatcher.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

/// Every text of at most length pieces.
std::vector<std::string> Texts(int length, std::vector<std::string> const& pieces) {
    std::vector<std::string> texts{""};
    for (auto const& shorter : length > 0 ? Texts(length - 1, pieces) : std::vector<std::string>{})
        for (auto const& piece : pieces)
            texts.push_back(piece + shorter);
    return texts;
}

TEST(MatcherExhaustive, AgreesWithASlowOne) {
    TempDir const dir;
    dir.UseAsConfiguration();
    CCallRecordingAssistant const assistant(false);
    auto const compare = [&](std::string const& pattern,
                             std::vector<std::string> const& addresses) {
        for (auto const& address : addresses)
            ASSERT_EQ(SlowMatcher::Match(address, pattern),
                      SlowMatcher::LibraryMatch(assistant, address, pattern))
                << pattern << " against " << address;
    };

    auto const numbers = Texts(5, {"1", "2"});
    for (auto const& pattern :
         Texts(4, {"1", "?", "*", "[2,!1]", "[1?,?]", "<1,12>", "<1-21,!12>", "<1??,2?>", "]"})) {
        ASSERT_NO_FATAL_FAILURE(compare(pattern, numbers));
        ASSERT_NO_FATAL_FAILURE(compare(pattern + "<", numbers)); // Not closed.
    }
    auto const runs = Texts(2, {"0", "1", "a", "b"});
    for (auto const& list : Texts(5, {"0", "1", "a", "b", "?", "!", ",", "-"})) {
        ASSERT_NO_FATAL_FAILURE(compare("<" + list + ">", runs));
        ASSERT_NO_FATAL_FAILURE(compare("<" + list + ">*", runs));
    }
}

} // namespace
} // namespace CallRecordingUtils
