/// @file
/// Marks the platform's classes that appear in the library's interface. The platform of a plain
/// host is built into the shared library, which exports these classes together with its own.
///
/// The platform of a plain host is declared in the inline namespace CallRecordingPlatform. No code
/// has to mention it; it keeps the linker from mixing up our ThreadMutex with a class ThreadMutex
/// of the host program. A device's headers need neither the namespace nor this file.

#ifndef PLATFORM_PLATFORMEXPORT_H
#define PLATFORM_PLATFORMEXPORT_H

#define PLATFORM_EXPORT [[gnu::visibility("default")]]

#endif
