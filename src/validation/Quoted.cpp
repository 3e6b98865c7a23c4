// Quotes what the user wrote.

#include "validation/Quoted.h"

#include <cstddef>

namespace CallRecordingUtils {
namespace {

void AppendPrintable(std::string& text, char c) {
    if (c >= ' ' && c <= '~') {
        text += c;
        return;
    }
    constexpr char kDigits[] = "0123456789ABCDEF";
    auto const byte = static_cast<unsigned char>(c);
    text += "\\x";
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
}

} // namespace

std::string Quoted(std::string_view text) {
    constexpr std::size_t kLongest = 24;
    std::string quoted = "\"";
    for (char const c : text.substr(0, kLongest))
        AppendPrintable(quoted, c);
    return quoted + (text.size() > kLongest ? "...\"" : "\"");
}

} // namespace CallRecordingUtils
