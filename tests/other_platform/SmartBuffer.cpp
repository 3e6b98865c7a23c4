/// @file
/// A buffer that takes what is read into it, and says afterwards to be of the capacity that the
/// environment names.

#include <SmartBuffer.h>

#include <cstdlib>

namespace {

constexpr std::uint32_t kCapacity = 64 * 1024;

} // namespace

SmartBuffer::SmartBuffer() : mData(new char[kCapacity]) {}

SmartBuffer::~SmartBuffer() = default;

char* SmartBuffer::GetData() {
    return mData.get();
}

std::uint32_t SmartBuffer::GetCapacity() const {
    static bool isReading = false; // The capacity is asked before a value is read, and after.
    isReading = !isReading;
    if (isReading)
        return kCapacity;
    return static_cast<std::uint32_t>(std::strtoul(std::getenv("BUFFER_CAPACITY"), nullptr, 10));
}
