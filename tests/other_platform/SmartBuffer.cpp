/// @file
/// A buffer with a 7 in it, of the capacity that the environment says.

#include <SmartBuffer.h>

#include <cstdlib>

SmartBuffer::SmartBuffer() : mData(new char[2]{'7', '\0'}) {}

SmartBuffer::~SmartBuffer() = default;

char* SmartBuffer::GetData() {
    return mData.get();
}

std::uint32_t SmartBuffer::GetCapacity() const {
    return static_cast<std::uint32_t>(std::strtoul(std::getenv("BUFFER_CAPACITY"), nullptr, 10));
}
