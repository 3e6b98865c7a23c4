// Reads one character of UTF-8 and looks up what the user will have meant.

#include "validation/ForeignCharacter.h"

#include <cstddef>
#include <cstdint>

#include "validation/Sentence.h"

namespace CallRecordingUtils {
namespace {

struct Character {
    std::uint32_t codePoint;
    std::size_t length; // In bytes; 0 when they are not UTF-8.
};

Character ReadCharacter(std::string_view text) {
    auto const lead = static_cast<unsigned char>(text.front());
    std::size_t const length = lead < 0xC2   ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || text.size() < length)
        return {0, 0};
    std::uint32_t codePoint = lead & (0x7FU >> length);
    for (char const c : text.substr(1, length - 1)) {
        auto const byte = static_cast<unsigned char>(c);
        if ((byte & 0xC0U) != 0x80)
            return {0, 0};
        codePoint = codePoint << 6 | (byte & 0x3FU);
    }
    return {codePoint, length};
}

struct Lookalike {
    std::uint32_t first;
    std::uint32_t last;
    char const* name;
    char const* advice;
};
constexpr char const* kDashAdvice = "type \"-\" in a range and ? elsewhere";
constexpr char const* kQuoteAdvice = "type ' instead";
constexpr char const* kRemove = "remove it";
// The first row with the character counts.
constexpr Lookalike kLookalikes[] = {
    {0x00A0, 0x00A0, "a no-break space", kRemove},
    {0x00AD, 0x00AD, "a soft hyphen", kRemove},
    {0x00B4, 0x00B4, "an accent", kQuoteAdvice},
    {0x2000, 0x200A, "a space", kRemove},
    {0x200B, 0x200F, "an invisible mark", kRemove},
    {0x2013, 0x2013, "an en dash", kDashAdvice},
    {0x2014, 0x2014, "an em dash", kDashAdvice},
    {0x2010, 0x2015, "a dash", kDashAdvice},
    {0x2018, 0x201B, "a quotation mark", kQuoteAdvice},
    {0x201C, 0x201F, "a quotation mark", kRemove},
    {0x2026, 0x2026, "an ellipsis", kDashAdvice},
    {0x202A, 0x202E, "an invisible mark", kRemove}, // Address books put these around numbers.
    {0x202F, 0x202F, "a no-break space", kRemove},
    {0x2060, 0x206F, "an invisible mark", kRemove},
    {0x2212, 0x2212, "a minus sign", kDashAdvice},
    {0x3000, 0x3000, "a space", kRemove},
    {0xFEFF, 0xFEFF, "an invisible mark", kRemove},
    {0xFF01, 0xFF5E, "a full-width character", "type the narrow one instead"},
};

/// Returns the name of a character as in U+00E9.
std::string Name(std::uint32_t codePoint) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string name;
    for (; codePoint != 0 || name.size() < 4; codePoint >>= 4)
        name.insert(name.begin(), kDigits[codePoint & 15U]);
    return "U+" + name;
}

} // namespace

std::string DescribeForeignCharacter(std::string_view text) {
    Character const character = ReadCharacter(text);
    if (character.length == 0)
        return Join({"the byte ", Quoted(text.substr(0, 1)),
                     " cannot be in a pattern: write ? for it, or remove it"});
    std::string const name = Name(character.codePoint);
    for (Lookalike const& row : kLookalikes)
        if (row.first <= character.codePoint && character.codePoint <= row.last)
            return Join({"this is ", row.name, " (", name,
                         "), which cannot be in a pattern: ", row.advice});
    constexpr std::string_view kOneEach = "????";
    return Join({"the character ", name, " cannot be in a pattern: write ",
                 kOneEach.substr(0, character.length),
                 ", one ? for each of its bytes, or remove it"});
}

} // namespace CallRecordingUtils
