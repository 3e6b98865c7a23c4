/// @file
/// Marks a symbol that the shared library exports. All others are hidden.

#ifndef CALLRECORDINGUTILS_EXPORT_H
#define CALLRECORDINGUTILS_EXPORT_H

#include <callrecordingutils/StringLayout.h>

#define CALLRECORDINGUTILS_EXPORT [[gnu::visibility("default")]]

#endif
