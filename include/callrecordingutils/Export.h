/// @file
/// The mark of a symbol that the shared library exports. Everything without it stays hidden.

#ifndef CALLRECORDINGUTILS_EXPORT_H
#define CALLRECORDINGUTILS_EXPORT_H

#include <callrecordingutils/StringLayout.h>

#define CALLRECORDINGUTILS_EXPORT [[gnu::visibility("default")]]

#endif
