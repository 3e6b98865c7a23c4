// Finds the places where lines may end.

#include "text/Wrap.h"

#include <algorithm>

#include "text/Printable.h"

namespace CallRecordingUtils {
namespace {

bool IsJoint(char before, char after) {
    return std::string_view(",@:./]}").find(before) != std::string_view::npos ||
           std::string_view("[{").find(after) != std::string_view::npos;
}

/// Whether text has this form: a 0 stands for a digit.
bool HasForm(std::string_view text, std::string_view form) {
    return text.size() >= form.size() && std::equal(
                                             form.begin(), form.end(), text.begin(),
                                             [](char wanted, char c) {
                                                 return wanted == '0' ? c >= '0' && c <= '9'
                                                                      : c == wanted;
                                             });
}

/// Whether the blank at this place is the one in 2026-11-25 14:03.
bool IsInTime(std::string_view text, std::size_t blank) {
    constexpr std::size_t kDate = 10;
    return blank >= kDate && HasForm(text.substr(blank - kDate), "0000-00-00 00:00");
}

/// Where to break text, which is longer than length bytes.
std::size_t BreakAt(std::string_view text, std::size_t length) {
    std::size_t const first = std::min(text.find_first_not_of(' '), text.size());
    for (bool const breaksTimes : {false, true})
        for (std::size_t at = length; at > first; --at)
            if (text[at] == ' ' && (breaksTimes || !IsInTime(text, at)))
                return at;
    for (std::size_t at = length; at > first + (length - std::min(first, length)) / 4; --at)
        if (IsJoint(text[at - 1], text[at]))
            return at;
    return length;
}

/// Where the word of a shell ends that begins at this place.
std::size_t EndOfWord(std::string_view command, std::size_t at) {
    bool isQuoted = false,
         isEscaping = true; // In $'...' a backslash escapes, in '...' it does not.
    for (; at < command.size() && (isQuoted || command[at] != ' '); ++at) {
        if (command[at] == '\\' && isEscaping && at + 1 < command.size()) {
            ++at;
        } else if (command[at] == '\'') {
            isQuoted = !isQuoted;
            isEscaping = !isQuoted || (at > 0 && command[at - 1] == '$');
        }
    }
    return at;
}

std::string_view TakeUntilLineEnd(std::string_view& text) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    std::string_view const line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

/// The part of line that fits, and a caret under this column.
std::string AroundCaret(std::string_view line, std::size_t column, std::size_t width) {
    std::size_t const left =
        DisplayWidth(line) > width && column > width / 2 ? column - width / 2 : 0;
    line.remove_prefix(BytesWithin(line, left));
    line = line.substr(0, BytesWithin(line, width));
    return std::string(line) + '\n' + std::string(column - left, ' ') + "^\n";
}

} // namespace

bool IsTime(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00 00:00:00";
    return text.size() == kForm.size() && HasForm(text, kForm);
}

std::string_view TakeLine(std::string_view& text, std::size_t width) {
    std::size_t length =
        std::max(BytesWithin(text, width), std::min(text.size(), CharacterLength(text)));
    if (length < text.size())
        length = BreakAt(text, length);
    std::string_view const line = text.substr(0, length);
    text.remove_prefix(length);
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return line;
}

std::string WrapText(std::string_view text, std::size_t width, std::size_t indent) {
    if (width == kUnlimited)
        return std::string(text) + '\n';
    std::string wrapped(TakeLine(text, width));
    wrapped += '\n';
    indent = std::min(indent, width / 2);
    while (!text.empty())
        wrapped.append(indent, ' ').append(TakeLine(text, width - indent)) += '\n';
    return wrapped;
}

std::string WrapLines(std::string_view text, std::size_t width) {
    std::string wrapped;
    while (!text.empty()) {
        std::string_view const line = TakeUntilLineEnd(text);
        std::string_view rest = text;
        std::string_view const next = TakeUntilLineEnd(rest);
        std::size_t const caret = next.find_first_not_of(' ');
        if (caret != std::string_view::npos && next.substr(caret) == "^") {
            wrapped += AroundCaret(line, caret, width);
            text = rest;
        } else {
            wrapped +=
                WrapText(line, width, std::min(line.find_first_not_of(' '), line.size()) + 2);
        }
    }
    return wrapped;
}

std::string WrapCommand(std::string_view command, std::size_t width, std::size_t indent) {
    std::string wrapped;
    std::size_t used = 0; // Of the line.
    for (std::size_t at = 0; at < command.size();) {
        std::size_t const word = std::min(command.find_first_not_of(' ', at), command.size());
        std::size_t const end = EndOfWord(command, word);
        std::size_t const columns = DisplayWidth(command.substr(at, end - at));
        constexpr std::size_t kContinuation = 2; // " \"
        bool const fits = width == kUnlimited ||
                          used + columns + (end < command.size() ? kContinuation : 0) <= width;
        if (fits || used <= indent) {
            wrapped += command.substr(at, end - at);
            used += columns;
        } else {
            wrapped.append(" \\\n").append(indent, ' ') += command.substr(word, end - word);
            used = indent + columns - (word - at);
        }
        at = end;
    }
    return wrapped + '\n';
}

} // namespace CallRecordingUtils
