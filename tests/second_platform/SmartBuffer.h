/// @file
/// A buffer of the smallest size that serves.

#ifndef SECOND_PLATFORM_SMARTBUFFER_H
#define SECOND_PLATFORM_SMARTBUFFER_H

#include <cstdint>
#include <cstdlib>

#include "Faults.h"

class SmartBuffer {
  public:
    char* GetData() { return mData; }

    /// Where BUFFER_CAPACITY is set, that is what every second call returns: the library asks
    /// before it reads a value, and again afterwards.
    std::uint32_t GetCapacity() const {
        char const* const later = std::getenv("BUFFER_CAPACITY");
        mCalls += later != nullptr ? 1 : 0;
        if (mCalls % 2 == 0 && later != nullptr)
            return static_cast<std::uint32_t>(std::strtoul(later, nullptr, 10));
        return HasFault("unusable buffer") ? 0 : HasFault("small buffer") ? 64 : sizeof mData;
    }

  private:
    char mData[256];
    mutable int mCalls = 0;
};

#endif
