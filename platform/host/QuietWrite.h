/// @file
/// Writing without the signals that the system sends for it.

#ifndef PLATFORM_HOST_QUIETWRITE_H
#define PLATFORM_HOST_QUIETWRITE_H

#include <cstddef>

#include <sys/types.h>

namespace HostPlatform {

/// Like write(2). But at the limit of a file's size and on a pipe without a reader there is only
/// the error: the signal that comes with it, which ends a process, reaches nobody.
ssize_t QuietWrite(int file, void const* data, std::size_t size);

} // namespace HostPlatform

#endif
