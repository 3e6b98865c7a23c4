// Keeps the names sorted by each place at which an identifier may begin.

#include "records/counting/NameIndex.h"

#include <algorithm>

#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

bool IsLetterOrDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Whether a word or number may begin or end between the two characters.
bool IsBoundary(char before, char after) {
    return !IsLetterOrDigit(before) || !IsLetterOrDigit(after);
}

/// id with %XX for all but letters, digits, and the characters that may stand in any URI.
std::string Encoded(std::string_view id) {
    std::string encoded;
    for (char const c : id)
        if (IsLetterOrDigit(c) || std::string_view("-_.~").find(c) != std::string_view::npos)
            encoded += c;
        else
            encoded += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    return encoded;
}

} // namespace

void NameIndex::Sort() {
    for (std::size_t i = 0; i < names_.size(); ++i)
        if (names_[i] != '\n' && (i == 0 || IsBoundary(names_[i - 1], names_[i])))
            starts_.push_back(i);
    std::sort(starts_.begin(), starts_.end(), [this](std::size_t left, std::size_t right) {
        return RestOfName(left) < RestOfName(right);
    });
}

/// With the line end.
std::string_view NameIndex::RestOfName(std::size_t start) const {
    return std::string_view(names_).substr(start, names_.find('\n', start) - start + 1);
}

bool NameIndex::HasWhole(std::string_view id) const {
    auto at = std::lower_bound(
        starts_.begin(), starts_.end(), id,
        [this](std::size_t start, std::string_view text) { return RestOfName(start) < text; });
    for (; at != starts_.end(); ++at) {
        std::string_view const rest = RestOfName(*at);
        if (rest.substr(0, id.size()) != id)
            return false;
        if (rest.size() > id.size() && IsBoundary(id.back(), rest[id.size()]))
            return true;
    }
    return false;
}

bool NameIndex::HasNameWith(std::string_view id) const {
    if (id.empty())
        return false;
    std::string const encoded = Encoded(id);
    return HasWhole(id) || (encoded != id && HasWhole(encoded));
}

} // namespace CallRecordingUtils
