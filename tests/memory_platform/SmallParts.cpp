/// @file
/// The small services of the in-memory platform: memory, buffer, mutex, tests of characters.

#include <SmartBuffer.h>
#include <StringUtils.h>
#include <ThreadMutex.h>

#include "Memory.h"

Memory& TheMemory() {
    static Memory memory;
    return memory;
}

SmartBuffer::SmartBuffer() : mData((TheMemory().CountCall(), new char[64 * 1024])) {}

SmartBuffer::~SmartBuffer() = default;

char* SmartBuffer::GetData() {
    return mData.get();
}

std::uint32_t SmartBuffer::GetCapacity() const {
    return TheMemory().bufferCapacity;
}

ThreadMutex::ThreadMutex() = default;

ThreadMutex::~ThreadMutex() = default;

void ThreadMutex::Lock() {
    mMutex.lock();
}

void ThreadMutex::Unlock() {
    mMutex.unlock();
}

bool StringUtils::IsNumeric(std::string const& text, bool /*flag1*/, bool /*flag2*/) {
    TheMemory().CountCall();
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool StringUtils::IsAlpha(std::string const& text, bool /*flag*/) {
    return !text.empty() &&
           text.find_first_not_of("abcdefghijklmnopqrstuvwxyz"
                                  "ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos;
}
