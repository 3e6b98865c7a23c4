// Writes bytes that are no UTF-8 as private characters, and reads them back.

#include "json/Bytes.h"

#include "text/Printable.h"

namespace CallRecordingUtils {
namespace {

// U+EF80 to U+EFFF in UTF-8: EE, then BE or BF, then the six lower bits.
constexpr char kFirst = '\xEE';

/// Whether text begins with one of the characters that stand for a byte.
bool BeginsWithByte(std::string_view text) {
    return text.size() >= 3 && text[0] == kFirst && (text[1] == '\xBE' || text[1] == '\xBF') &&
           CharacterLength(text) == 3;
}

void AppendByte(std::string& text, char byte) {
    auto const value = static_cast<unsigned char>(byte);
    text += kFirst;
    text += static_cast<char>(0xBC | (value >> 6));
    text += static_cast<char>(0x80 | (value & 0x3F));
}

} // namespace

std::string ToUtf8(std::string_view bytes) {
    std::string text;
    for (std::size_t length = 0; !bytes.empty(); bytes.remove_prefix(length)) {
        length = CharacterLength(bytes);
        bool const isStray = length == 1 && static_cast<unsigned char>(bytes[0]) >= 0x80;
        if (!isStray && !BeginsWithByte(bytes))
            text += bytes.substr(0, length);
        else
            for (char const byte : bytes.substr(0, length))
                AppendByte(text, byte);
    }
    return text;
}

std::string BytesOf(std::string_view text) {
    std::string bytes;
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        length = CharacterLength(text);
        if (BeginsWithByte(text))
            bytes += static_cast<char>(((text[1] & 3) << 6) | (text[2] & 0x3F));
        else
            bytes += text.substr(0, length);
    }
    return bytes;
}

} // namespace CallRecordingUtils
