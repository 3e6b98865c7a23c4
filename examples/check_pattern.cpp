// Checks patterns as people write them; prints the stored form, or what is wrong and where.
// Usage: check_pattern PATTERN...

#include <algorithm>
#include <iostream>
#include <string>

#include <callrecordingutils/PatternValidation.h>

namespace {

/// Whether the pattern is well formed.
bool Check(std::string const& pattern) {
    if (auto const rejection = CallRecordingUtils::ExplainPattern(pattern)) {
        std::cout << pattern << "\n"
                  << std::string(rejection->position, ' ') << "^ " << rejection->message << "\n";
        return false;
    }
    std::string stored = pattern;
    CallRecordingUtils::IsPatternIncorrect(stored); // Known to be correct: replaces the escapes.
    std::replace(stored.begin(), stored.end(), '{', '<');
    std::replace(stored.begin(), stored.end(), '}', '>');
    std::cout << pattern << " is stored as " << stored << "\n";
    return true;
}

} // namespace

int main(int argc, char** argv) {
    bool const areAllCorrect = std::all_of(argv + 1, argv + argc, Check);
    return areAllCorrect ? 0 : 1;
}
