// Converts with libunistring.

#include "text/Encoding.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include <unistr.h>

#include "text/Printable.h"

namespace CallRecordingUtils {

std::optional<std::string> FromUtf16(std::string const& text) {
    bool const isLittle = text.compare(0, 2, "\xFF\xFE") == 0;
    if (!isLittle && text.compare(0, 2, "\xFE\xFF") != 0)
        return text;
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<std::uint16_t> units;
    for (std::size_t i = 2; i < text.size(); i += 2) {
        auto const first = static_cast<unsigned char>(text[i]);
        auto const second = static_cast<unsigned char>(text[i + 1]);
        units.push_back(
            static_cast<std::uint16_t>(isLittle ? first | second << 8 : first << 8 | second));
    }
    if (units.empty())
        return "";
    std::size_t size = 0;
    std::unique_ptr<std::uint8_t, void (*)(void*)> const converted(
        u16_to_u8(units.data(), units.size(), nullptr, &size), std::free);
    if (converted == nullptr)
        return std::nullopt;
    return std::string(reinterpret_cast<char const*>(converted.get()), size);
}

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
