/// @file
/// The mutex of a plain host, on std::mutex.

#include "ThreadMutex.h"

ThreadMutex::ThreadMutex() = default;

ThreadMutex::~ThreadMutex() = default;

void ThreadMutex::Lock() {
    mMutex.lock();
}

void ThreadMutex::Unlock() {
    mMutex.unlock();
}
