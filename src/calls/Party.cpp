// Reads parties: first off goes what surrounds the address, then the address is divided, then its
// user is read.

#include "calls/Party.h"

#include <algorithm>

#include "language/Characters.h"

namespace CallRecordingUtils {
namespace {

constexpr auto kNone = std::string_view::npos;

// Comparisons, not searches in a text: these are asked of each byte of each call.
constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
constexpr bool IsSeparator(char c) {
    return c == ' ' || c == '\t' || c == '-' || c == '.' || c == '(' || c == ')';
}
constexpr bool IsNumberCharacter(char c) {
    return IsDigit(c) || c == '+' || c == '*' || c == '#';
}

constexpr char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && IsBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

bool IsPort(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsDigit);
}

// --- Users ---

/// The value of a hexadecimal digit, or -1.
constexpr int HexDigit(char c) {
    char const lower = ToLower(c);
    if (IsDigit(c))
        return c - '0';
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Decodes each %XX once. One that stands for a control byte stays as it is: nobody dials these,
/// and no text that is shown or logged should come to hold them.
std::string Decoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        int const high = text[at] == '%' && at + 2 < text.size() ? HexDigit(text[at + 1]) : -1;
        int const low = high >= 0 ? HexDigit(text[at + 2]) : -1;
        int const byte = low >= 0 ? high * 16 + low : 0;
        bool const isText = byte >= ' ' && byte != 0x7f;
        decoded += isText ? static_cast<char>(byte) : text[at];
        at += isText ? 2 : 0;
    }
    return decoded;
}

/// Reads the user of an address. In a tel: URI it is a number, whose separators mean nothing.
std::string ReadUser(std::string_view written, bool isTel, Cleanings& cleanings) {
    // An encoded ";" is one of the user's own, so the end is looked for before decoding.
    std::size_t const end = std::min(written.find(';'), written.size());
    std::string user = Decoded(written.substr(0, end));
    if (end < written.size()) {
        if (!user.empty() && IsNumberCharacter(user.front()))
            cleanings.set(kCleaningParameters);
        else
            user += Decoded(written.substr(end));
    }
    if (isTel || (!user.empty() && user.front() == '+')) {
        auto const kept = std::remove_if(user.begin(), user.end(), IsSeparator);
        if (kept != user.end())
            cleanings.set(kCleaningSeparators);
        user.erase(kept, user.end());
    }
    return user;
}

// --- Hosts and ports ---

struct HostAndPort {
    std::string_view host;
    std::string_view port;
};

/// Divides what follows the "@". A ":" inside the brackets of an IPv6 address is the address's own.
HostAndPort SplitHost(std::string_view text) {
    std::size_t const bracket = !text.empty() && text.front() == '[' ? text.find(']') : kNone;
    std::size_t const colon = text.find(':', bracket == kNone ? 0 : bracket);
    if (colon == kNone)
        return {text, {}};
    return {text.substr(0, colon), text.substr(colon + 1)};
}

std::string LowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), ToLower);
    return lower;
}

// --- Whole addresses ---

enum class Scheme { None, Sip, Tel, Other };

/// Returns how long the name of the URI scheme is that text begins with, its ":" included; 0
/// without one.
std::size_t SchemeLength(std::string_view text) {
    if (text.empty() || !IsLetter(text.front()))
        return 0;
    std::size_t at = 1;
    while (at < text.size() && (IsLetter(text[at]) || IsDigit(text[at]) || text[at] == '+' ||
                                text[at] == '.' || text[at] == '-'))
        ++at;
    return at < text.size() && text[at] == ':' ? at + 1 : 0;
}

Scheme SchemeNamed(std::string_view name) {
    auto const is = [name](std::string_view other) {
        return std::equal(name.begin(), name.end(), other.begin(), other.end(),
                          [](char a, char b) { return ToLower(a) == b; });
    };
    return name.empty()                ? Scheme::None
           : is("sip:") || is("sips:") ? Scheme::Sip
           : is("tel:")                ? Scheme::Tel
                                       : Scheme::Other;
}

class AddressReader {
  public:
    AddressReader(std::string_view text, Cleanings& cleanings)
        : rest_(text), cleanings_(cleanings) {}

    Party Read() {
        ShortenTo(Trimmed(rest_), kCleaningBlanks);
        LeaveBrackets();
        std::size_t const length = SchemeLength(rest_);
        Scheme const scheme = SchemeNamed(rest_.substr(0, length));
        if (scheme == Scheme::Other)
            return {ReadUser(rest_, false, cleanings_), {}, {}};
        bool const isTel = scheme == Scheme::Tel;
        ShortenTo(rest_.substr(length), isTel ? kCleaningTel : kCleaningSip);
        ShortenTo(Trimmed(rest_), kCleaningBlanks);
        CutParameters(isTel);
        return Divide(isTel, scheme == Scheme::Sip);
    }

  private:
    void ShortenTo(std::string_view shorter, Cleaning cleaning) {
        if (shorter.size() < rest_.size())
            cleanings_.set(cleaning);
        rest_ = shorter;
    }

    /// The end of the quoted name that the text begins with; 0 without one.
    std::size_t EndOfQuotedName() const {
        if (rest_.empty() || rest_.front() != '"')
            return 0;
        std::size_t at = 1;
        while (at < rest_.size() && rest_[at] != '"')
            at += rest_[at] == '\\' ? 2 : 1;
        return at < rest_.size() ? at + 1 : 0;
    }

    /// A quoted name may hold a "<", the address not.
    void LeaveBrackets() {
        std::size_t const open = rest_.find('<', EndOfQuotedName());
        std::size_t const close = open == kNone ? kNone : rest_.find('>', open);
        if (close == kNone)
            return;
        ShortenTo(rest_.substr(0, close + 1), kCleaningParameters);
        ShortenTo(rest_.substr(open), kCleaningName);
        ShortenTo(rest_.substr(1, rest_.size() - 2), kCleaningBrackets);
        ShortenTo(Trimmed(rest_), kCleaningBlanks);
    }

    /// Only after the host, or the number of a tel: URI: a user may hold a ";" or "?" of its own.
    void CutParameters(bool isTel) {
        std::size_t const at = isTel ? 0 : rest_.rfind('@');
        if (at != kNone)
            ShortenTo(Trimmed(rest_.substr(0, rest_.find_first_of(";?", at))), kCleaningParameters);
    }

    Party Divide(bool isTel, bool isSip) {
        std::size_t const at = rest_.rfind('@');
        auto const [host, port] = SplitHost(at == kNone ? "" : rest_.substr(at + 1));
        if (!IsPort(port))
            return {ReadUser(rest_, isTel, cleanings_), {}, {}};
        std::string_view user = rest_.substr(0, at);
        if (std::size_t const colon = user.find(':'); isSip && colon != kNone) {
            cleanings_.set(kCleaningParameters);
            user = user.substr(0, colon); // What follows is a password.
        }
        Party party{ReadUser(user, isTel, cleanings_), LowerCase(host), {}};
        if (!host.empty())
            party.port = port.empty() ? kDefaultPort : port;
        return party;
    }

    std::string_view rest_;
    Cleanings& cleanings_;
};

} // namespace

bool Party::HasNumber() const {
    return !user.empty() && std::all_of(user.begin(), user.end(), IsNumberCharacter);
}

Party ReadParty(std::string_view text, Cleanings* cleanings) {
    Cleanings found;
    Party party = AddressReader(text, found).Read();
    if (cleanings != nullptr)
        *cleanings = found;
    return party;
}

Party ReadParty(std::string_view user, std::string_view host, std::string_view port) {
    user = Trimmed(user);
    host = Trimmed(host);
    port = Trimmed(port);
    Cleanings ignored;
    if (host.empty())
        return {ReadUser(user, false, ignored), {}, {}};
    bool const lacksBrackets = host.front() != '[' && Contains(host, ':');
    std::string const bracketed =
        (lacksBrackets ? "[" : "") + LowerCase(host) + (lacksBrackets ? "]" : "");
    if (!IsPort(port)) {
        std::string const all = std::string(user) + '@' + bracketed + ':' + std::string(port);
        return {ReadUser(all, false, ignored), {}, {}};
    }
    return {ReadUser(user, false, ignored), bracketed,
            std::string(port.empty() ? kDefaultPort : port)};
}

} // namespace CallRecordingUtils
