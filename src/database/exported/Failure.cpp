// Puts the reasons of failures into words.

#include "database/exported/Failure.h"

#include <exception>
#include <new>

#include "database/exported/RuleFilePath.h"

namespace CallRecordingUtils {
namespace {

bool EndsIn(std::string const& text, std::string const& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), std::string::npos, end) == 0;
}

/// Puts the path before a reason that is only about a rule, or that a device's file class gave.
std::string WithPath(char const* reason) {
    std::string const path = RuleFilePath();
    std::string text(reason);
    return text.find(path) != std::string::npos ? text : path + ": " + text;
}

} // namespace

void KeepReason(std::string& reasons, char const* reason) noexcept {
    try {
        std::string const text(reason);
        if (!EndsIn(reasons, text))
            reasons = reasons.empty() ? text : reasons + "; " + text;
    } catch (std::bad_alloc const&) {
        if (reasons.empty())
            reasons = "out of memory"; // Short enough to need no memory.
    }
}

void KeepReason(std::string& reasons) noexcept {
    try {
        throw;
    } catch (std::bad_alloc const&) {
        KeepReason(reasons, "out of memory");
    } catch (std::exception const& exception) {
        try {
            KeepReason(reasons, WithPath(exception.what()).c_str());
        } catch (std::bad_alloc const&) {
            KeepReason(reasons, "out of memory");
        }
    } catch (...) {
        KeepReason(reasons, "the platform threw something that is not a std::exception");
    }
}

} // namespace CallRecordingUtils
