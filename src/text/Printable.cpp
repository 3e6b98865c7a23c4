// Makes text safe for a terminal, and measures it.

#include "text/Printable.h"

#include <algorithm>
#include <cstdint>

#include <fmt/format.h>
#include <unistr.h>
#include <uniwidth.h>

namespace CallRecordingUtils {
namespace {

/// What changes the direction of writing, and would have a text pass for another one.
// NOLINTBEGIN(misc-misleading-bidirectional): that is what they are.
constexpr std::string_view kDirections[] = {"\u061C", "\u200E", "\u200F", "\u202A",
                                            "\u202B", "\u202C", "\u202D", "\u202E",
                                            "\u2066", "\u2067", "\u2068", "\u2069"};
// NOLINTEND(misc-misleading-bidirectional)

/// The columns that the character takes.
std::size_t CharacterWidth(std::string_view character) {
    ucs4_t code = 0;
    int const length = u8_mbtoucr(&code, reinterpret_cast<std::uint8_t const*>(character.data()),
                                  character.size());
    int const width = length > 0 ? uc_width(code, "UTF-8") : 1;
    return width >= 0 ? static_cast<std::size_t>(width) : 1;
}

} // namespace

std::string Printable(std::string_view text) {
    std::string printable(text);
    auto const isControl = [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    };
    std::replace_if(printable.begin(), printable.end(), isControl, '?');
    for (std::string_view const direction : kDirections)
        for (std::size_t at = printable.find(direction); at != std::string::npos;
             at = printable.find(direction, at))
            printable.replace(at, direction.size(), "?");
    // U+0080 to U+009F, which some terminals obey as well.
    for (std::size_t i = 1; i < printable.size(); ++i)
        if (printable[i - 1] == '\xC2' && static_cast<unsigned char>(printable[i]) < 0xA0)
            printable.replace(i - 1, 2, "??");
    return printable;
}

std::size_t CharacterLength(std::string_view text) {
    ucs4_t character = 0;
    int const length =
        u8_mbtoucr(&character, reinterpret_cast<std::uint8_t const*>(text.data()), text.size());
    return length > 0 ? static_cast<std::size_t>(length) : 1;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t length = 0; !text.empty(); text.remove_prefix(length)) {
        length = CharacterLength(text);
        width += CharacterWidth(text.substr(0, length));
    }
    return width;
}

std::size_t BytesWithin(std::string_view text, std::size_t width) {
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t const length = CharacterLength(text.substr(at));
        std::size_t const columns = CharacterWidth(text.substr(at, length));
        if (columns > width)
            break;
        width -= columns;
        at += length;
    }
    return at;
}

std::string CaretText(std::string const& text, std::size_t position) {
    constexpr std::size_t kMostBefore = 50;
    constexpr std::size_t kMost = 70;
    std::size_t const begin = position > kMostBefore ? position - kMostBefore : 0;
    std::string const left = (begin > 0 ? "..." : "") + text.substr(begin, position - begin);
    std::string const right = text.substr(position, begin + kMost - position);
    bool const isCut = begin + kMost < text.size();
    return fmt::format("    {}{}{}\n    {:{}}^", Printable(left), Printable(right),
                       isCut ? "..." : "", "", DisplayWidth(left));
}

} // namespace CallRecordingUtils
