// Looks at the bytes of texts.

#include "text/Encoding.h"

#include <cstdint>

#include <unistr.h>

#include "text/Printable.h"

namespace CallRecordingUtils {

bool IsUtf8(std::string_view text) {
    return u8_check(reinterpret_cast<std::uint8_t const*>(text.data()), text.size()) == nullptr;
}

bool LooksLikeLatin1(std::string_view text) {
    bool isUtf8 = true;
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        length = CharacterLength(text);
        if (length > 1)
            return false;
        isUtf8 = isUtf8 && static_cast<unsigned char>(text[0]) < 0x80;
    }
    return !isUtf8;
}

std::string FromLatin1(std::string_view text) {
    std::string converted;
    for (char const c : text) {
        auto const code = static_cast<unsigned char>(c);
        if (code < 0x80) {
            converted += c;
            continue;
        }
        converted += static_cast<char>(0xC0 | code >> 6);
        converted += static_cast<char>(0x80 | (code & 0x3F));
    }
    return converted;
}

} // namespace CallRecordingUtils
