// Looks at how an address is written.

#include "records/reading/WrittenAddress.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

constexpr auto kNone = std::string_view::npos;
constexpr char kNumber[] = "0123456789+*#-. ";
constexpr char kDigits[] = "0123456789";

int HexDigit(char c) {
    constexpr std::string_view kHex = "0123456789abcdef";
    char const lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
    std::size_t const digit = kHex.find(lower);
    return digit == kNone ? -1 : static_cast<int>(digit);
}

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// A name holds something that a number does not, and nothing that makes an address of it.
bool IsName(std::string_view text) {
    return text.find_first_not_of("0123456789+*#-. ()") != kNone &&
           text.find_first_of("@<>:;") == kNone;
}

bool IsNumber(std::string_view text) {
    return text.find_first_not_of(kNumber) == kNone && text.find_first_of(kDigits) != kNone;
}

} // namespace

std::string UrlDecoded(std::string_view text) {
    std::string decoded;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const isCode = text[at] == '%' && at + 2 < text.size() &&
                            HexDigit(text[at + 1]) >= 0 && HexDigit(text[at + 2]) >= 0;
        decoded += isCode ? static_cast<char>(HexDigit(text[at + 1]) * 16 + HexDigit(text[at + 2]))
                          : text[at];
        at += isCode ? 2 : 0;
    }
    return decoded;
}

bool IsUrlEncoded(std::string_view text) {
    if (text.find('%') == kNone || text.find_first_of("@:<> \"") != kNone)
        return false;
    std::string lower(text);
    std::transform(
        lower.begin(), lower.end(), lower.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    auto const begins = [&lower](std::string_view with) { return lower.rfind(with, 0) == 0; };
    return begins("%2b") || begins("%22") || begins("%3c") || begins("sip%3a") ||
           begins("sips%3a") || begins("tel%3a");
}

std::string_view WithoutName(std::string_view text) {
    std::string_view const written = Trimmed(text);
    if (written.size() < 4 || written.back() != ')')
        return text;
    std::size_t const open = written.rfind('(');
    if (open == kNone || open == 0)
        return text;
    std::string_view const before = Trimmed(written.substr(0, open));
    std::string_view const within = Trimmed(written.substr(open + 1, written.size() - open - 2));
    if (IsName(before) && IsNumber(within))
        return within;
    return IsNumber(before) && IsName(within) ? before : text;
}

std::string Unquoted(std::string const& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"')
        return text;
    std::string inner;
    for (std::size_t at = 1; at + 1 < text.size(); ++at) {
        inner += text[at];
        if (text[at] == '"' && (++at + 1 >= text.size() || text[at] != '"'))
            return text;
    }
    return inner;
}

} // namespace CallRecordingUtils
