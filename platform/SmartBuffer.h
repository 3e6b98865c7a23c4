/// @file
/// A scratch buffer for values of the rule file.

#ifndef PLATFORM_SMARTBUFFER_H
#define PLATFORM_SMARTBUFFER_H

#include <cstdint>
#include <memory>

inline namespace CallRecordingPlatform {

/// A writable area of characters with a fixed size, at least as large as the longest value that
/// MultiSectionFile stores, with its NUL: a longer one could not be read any more, and no rule
/// would be loaded. 256 bytes are the least that serves; that leaves 255 characters for a pattern.
///
/// The library makes a new one or two for each load and each edit.
///
/// Plain host: 64 KiB, not initialised.
class SmartBuffer {
  public:
    /// Throws std::bad_alloc if there is no memory.
    SmartBuffer();
    ~SmartBuffer();

    SmartBuffer(SmartBuffer const&) = delete;
    SmartBuffer& operator=(SmartBuffer const&) = delete;

    /// The area; it stays in place as long as the object lives.
    char* GetData();

    /// The size of the area in bytes. 0 and 0xFFFFFFFF mean that the buffer is not usable: the
    /// library then passes it to GetSectionEntry nevertheless, but takes no value from it.
    ///   Plain host: the buffer is always usable.
    std::uint32_t GetCapacity() const;

  private:
    std::unique_ptr<char[]> mData;
};

} // namespace CallRecordingPlatform

#endif
