// Cleans the address of one side of a call.

#include "inspection/CallAddress.h"

#include <strings.h>

namespace CallRecordingUtils {
namespace {

constexpr std::string_view kDigits = "0123456789+*#";

/// Takes steps off the text between its two ends; the text itself is not copied until the end.
class AddressCleaner {
  public:
    explicit AddressCleaner(std::string_view written) : rest_(written) {}

    CallAddress Clean() {
        TrimBlanks();
        LeaveBrackets();
        bool const isTel = TakeScheme("tel:", kCleaningTel);
        bool const isSip =
            !isTel && (TakeScheme("sip:", kCleaningSip) || TakeScheme("sips:", kCleaningSip));
        CutParameters(isSip || isTel);
        CallAddress address{std::string(rest_), {}};
        DropSeparators(address.text, isTel ? " -()." : " -()");
        address.cleanings = cleanings_;
        return address;
    }

  private:
    void Become(std::string_view shorter, Cleaning cleaning) {
        if (shorter.size() < rest_.size())
            cleanings_.set(cleaning);
        rest_ = shorter;
    }

    void TrimBlanks() {
        constexpr std::string_view kBlanks = " \t\r\n";
        std::size_t const first = rest_.find_first_not_of(kBlanks);
        if (first == std::string_view::npos)
            return Become({}, kCleaningBlanks);
        std::size_t const last = rest_.find_last_not_of(kBlanks);
        Become(rest_.substr(first, last + 1 - first), kCleaningBlanks);
    }

    /// A name may hold a "<", the address in the brackets not.
    void LeaveBrackets() {
        std::size_t const open = rest_.rfind('<');
        std::size_t const close = rest_.find('>', open == std::string_view::npos ? 0 : open);
        if (open == std::string_view::npos || close == std::string_view::npos)
            return;
        Become(rest_.substr(0, close + 1), kCleaningParameters);
        Become(rest_.substr(open), kCleaningName);
        Become(rest_.substr(1, rest_.size() - 2), kCleaningBrackets);
        TrimBlanks();
    }

    bool TakeScheme(std::string_view scheme, Cleaning cleaning) {
        if (rest_.size() < scheme.size() ||
            strncasecmp(rest_.data(), scheme.data(), scheme.size()) != 0)
            return false;
        Become(rest_.substr(scheme.size()), cleaning);
        return true;
    }

    /// The user may hold a ";" of its own.
    void CutParameters(bool hasScheme) {
        std::size_t const at = rest_.find('@');
        if (at == std::string_view::npos && !hasScheme)
            return;
        std::size_t const from = at == std::string_view::npos ? 0 : at;
        Become(rest_.substr(0, rest_.find_first_of(";?", from)), kCleaningParameters);
    }

    /// Only where nothing else but digits is left: a name may well hold a "-".
    void DropSeparators(std::string& text, std::string_view separators) {
        std::string digits;
        for (char const c : text)
            if (kDigits.find(c) != std::string_view::npos)
                digits += c;
            else if (separators.find(c) == std::string_view::npos)
                return;
        if (digits.size() == text.size() || digits.find_first_of("0123456789") == std::string::npos)
            return;
        cleanings_.set(kCleaningSeparators);
        text = digits;
    }

    std::string_view rest_;
    Cleanings cleanings_;
};

} // namespace

CallAddress CleanCallAddress(std::string_view written) {
    return AddressCleaner(written).Clean();
}

std::string Words(Cleanings cleanings) {
    std::string words;
    for (std::size_t i = 0; i < cleanings.size(); ++i)
        if (cleanings[i])
            words += (words.empty() ? "" : ", ") + std::string(kCleaningWords[i]);
    return words;
}

} // namespace CallRecordingUtils
