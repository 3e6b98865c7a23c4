/// @file
/// A part of a host program that does not know the library.

#ifndef TESTS_HOST_OWN_CLASSES_H
#define TESTS_HOST_OWN_CLASSES_H

/// Uses each class of this part once, and returns how many of the part's functions have run since
/// the last call. That is kOwnCalls unless the library calls one of them or the part calls one of
/// the library's.
[[gnu::visibility("default")]] int CountCallsOfOwnClasses();

constexpr int kOwnCalls = 8;

#endif
