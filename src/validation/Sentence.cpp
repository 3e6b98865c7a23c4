// Quotes what the user wrote and joins texts.

#include "validation/Sentence.h"

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
    return quoted.append(text.size() > kLongest ? "...\"" : "\"");
}

std::string Join(std::initializer_list<std::string_view> pieces) {
    std::string joined;
    for (std::string_view const piece : pieces)
        joined += piece;
    return joined;
}

} // namespace CallRecordingUtils
