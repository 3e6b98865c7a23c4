/// @file
/// A scratch character buffer.

#ifndef PLATFORM_SMARTBUFFER_H
#define PLATFORM_SMARTBUFFER_H

#include <cstdint>
#include <memory>

inline namespace CallRecordingPlatform {

/// A fixed, writable area of characters, not initialised. Throws std::bad_alloc when it cannot be
/// made.
class SmartBuffer {
  public:
    SmartBuffer();
    ~SmartBuffer();

    SmartBuffer(SmartBuffer const&) = delete;
    SmartBuffer& operator=(SmartBuffer const&) = delete;

    /// The area, valid as long as the buffer.
    char* GetData();

    /// The size of the area in bytes. 0 and 0xFFFFFFFF mean that the buffer is not usable; this one
    /// never says so.
    std::uint32_t GetCapacity() const;

  private:
    std::unique_ptr<char[]> mData;
};

} // namespace CallRecordingPlatform

#endif
