/// @file
/// A part of a host program that knows nothing of the library.

#ifndef TESTS_HOST_OWN_CLASSES_H
#define TESTS_HOST_OWN_CLASSES_H

/// Uses each of the part's own classes once, and returns how many of its functions ran since it was
/// last asked: kOwnCalls, when the library calls none of them and none of the part's calls go
/// astray.
[[gnu::visibility("default")]] int CountCallsOfOwnClasses();

constexpr int kOwnCalls = 8;

#endif
