// The exception of operations on rule files and call records.

#ifndef COMMON_ERROR_H
#define COMMON_ERROR_H

#include <stdexcept>
#include <string>

namespace CallRecordingUtils {

/// what() says what failed and why, for people; GetKind() is for programs.
class Error : public std::runtime_error {
  public:
    enum class Kind {
        Unreadable, ///< A file cannot be read or is malformed.
        Unsaved,    ///< A file cannot be saved, and is unchanged.
        NoSuchRule, ///< There is no such rule.
    };

    Error(Kind kind, std::string const& message) : std::runtime_error(message), kind_(kind) {}
    Kind GetKind() const { return kind_; }

  private:
    Kind kind_;
};

} // namespace CallRecordingUtils

#endif
