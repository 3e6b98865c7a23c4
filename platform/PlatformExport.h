/// @file
/// The mark of a platform class that appears in the library's own interface. On a plain host the
/// platform is built into the shared library, which then exports these classes with its own.
///
/// The names of the plain host's platform lie in the inline namespace CallRecordingPlatform. Nobody
/// writes it; it keeps the linker from taking a class ThreadMutex of the host program for this one.

#ifndef PLATFORM_PLATFORMEXPORT_H
#define PLATFORM_PLATFORMEXPORT_H

#define PLATFORM_EXPORT [[gnu::visibility("default")]]

#endif
