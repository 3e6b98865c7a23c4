/// @file
/// The scratch buffer of a plain host.

#include "SmartBuffer.h"

namespace {

constexpr std::uint32_t kCapacity = 64 * 1024;

} // namespace

// Not std::make_unique, which would clear the whole area although a value uses a few bytes of it.
SmartBuffer::SmartBuffer() : mData(new char[kCapacity]) {}

SmartBuffer::~SmartBuffer() = default;

char* SmartBuffer::GetData() {
    return mData.get();
}

std::uint32_t SmartBuffer::GetCapacity() const {
    return kCapacity;
}
