// Why an operation on a rule file or on call records failed.

#ifndef COMMON_ERROR_H
#define COMMON_ERROR_H

#include <stdexcept>
#include <string>

namespace CallRecordingUtils {

/// what() names the culprit and the reason, for a person; Kind() lets a program tell the cases
/// apart.
class Error : public std::runtime_error {
  public:
    enum class Kind {
        Unreadable, ///< A file cannot be read, or what it holds is malformed.
        Unsaved,    ///< A file cannot be saved; it is as it was.
        NoSuchRule, ///< There is no such rule.
    };

    Error(Kind kind, std::string const& message) : std::runtime_error(message), kind_(kind) {}
    Kind GetKind() const { return kind_; }

  private:
    Kind kind_;
};

} // namespace CallRecordingUtils

#endif
