// Escapes text, and formats numbers.

#include "records/page/Html.h"

#include <fmt/format.h>
#include <unistr.h>

namespace CallRecordingUtils {
namespace {

constexpr ucs4_t kUnknown = 0xFFFD;

bool IsControl(ucs4_t c) {
    return (c < 0x20 && c != '\t' && c != '\n') || (c >= 0x7F && c < 0xA0) || c == 0x61C ||
           c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

} // namespace

std::string Escaped(std::string_view text) {
    std::string escaped;
    while (!text.empty()) {
        ucs4_t c = kUnknown;
        auto const size = static_cast<std::size_t>(
            u8_mbtouc(&c, reinterpret_cast<std::uint8_t const*>(text.data()), text.size()));
        switch (IsControl(c) ? kUnknown : c) {
        case '<': escaped += "&lt;"; break;
        case '>': escaped += "&gt;"; break;
        case '&': escaped += "&amp;"; break;
        case '"': escaped += "&quot;"; break;
        case '\'': escaped += "&#39;"; break;
        case kUnknown: escaped += "\xEF\xBF\xBD"; break;
        default: escaped += text.substr(0, size);
        }
        text.remove_prefix(size);
    }
    return escaped;
}

std::string Grouped(std::uint64_t number) {
    std::string text = fmt::format_int(number).str();
    for (std::size_t at = text.size(); at > 3; at -= 3)
        text.insert(at - 3, ",");
    return text;
}

std::string DataElement(std::uint64_t number) {
    return fmt::format("<data value=\"{}\">{}</data>", number, Grouped(number));
}

} // namespace CallRecordingUtils
