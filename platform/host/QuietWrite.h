/// @file
/// Writes without the signals that a failing write raises.

#ifndef PLATFORM_HOST_QUIETWRITE_H
#define PLATFORM_HOST_QUIETWRITE_H

#include <cstddef>

#include <sys/types.h>

namespace HostPlatform {

/// Like write(2), but at the file size limit, and for a pipe without a reader, it only returns the
/// error: SIGXFSZ and SIGPIPE, which would end the process, are not delivered.
ssize_t QuietWrite(int file, void const* data, std::size_t size);

} // namespace HostPlatform

#endif
