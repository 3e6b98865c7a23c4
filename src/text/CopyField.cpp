// Escapes bytes.

#include "text/CopyField.h"

#include <fmt/format.h>

#include "text/Printable.h"

namespace CallRecordingUtils {
namespace {

constexpr std::string_view kNamed = "\b\f\n\r\t\v\\";
constexpr std::string_view kNames = "bfnrtv\\";

} // namespace

std::string CopyField(std::string_view text) {
    std::string field;
    while (!text.empty()) {
        auto const byte = static_cast<unsigned char>(text.front());
        std::size_t const length = CharacterLength(text);
        std::size_t const named = kNamed.find(text.front());
        if (named != std::string_view::npos)
            field.append("\\").append(1, kNames[named]);
        else if (byte == 0 || (byte >= 0x80 && length == 1))
            field += "\xEF\xBF\xBD";
        else if (byte < ' ' || byte == 0x7F)
            field += fmt::format("\\x{:02X}", byte);
        else
            field += text.substr(0, length);
        text.remove_prefix(length);
    }
    return field;
}

} // namespace CallRecordingUtils
