/// @file
/// The mark of a platform class that appears in the library's own interface. On a plain host the
/// platform is built into the shared library, which then exports these classes with its own.

#ifndef PLATFORM_PLATFORMEXPORT_H
#define PLATFORM_PLATFORMEXPORT_H

#define PLATFORM_EXPORT [[gnu::visibility("default")]]

#endif
