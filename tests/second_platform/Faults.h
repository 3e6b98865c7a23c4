/// @file
/// The mistakes that this platform makes on demand, to show that the tests for any platform notice.
/// Tests.cmake reads this list:
///
/// - added nowhere
/// - added unselected
/// - comment in value
/// - denied section
/// - empty letters
/// - late log
/// - line break
/// - no end
/// - no new file
/// - no restart
/// - no way back
/// - open mutex
/// - overrun
/// - raw log
/// - saves nothing
/// - saves when destroyed
/// - separator in value
/// - short value
/// - signed number
/// - silent save
/// - skips after deletion
/// - small buffer
/// - stale value
/// - trimmed value
/// - unknown level
/// - unreadable is empty
/// - unusable buffer

#ifndef SECOND_PLATFORM_FAULTS_H
#define SECOND_PLATFORM_FAULTS_H

#include <cstdlib>
#include <string_view>

/// Returns whether the environment variable PLATFORM_FAULT asks for this mistake.
inline bool HasFault(std::string_view name) {
    char const* const fault = std::getenv("PLATFORM_FAULT");
    return fault != nullptr && fault == name;
}

#endif
