/// @file
/// Takes a text apart into sections, and changes them piece by piece.

#include "SectionedText.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace HostPlatform {

namespace {

/// The longest value that still fits, with its NUL, into a SmartBuffer.
constexpr std::size_t kLongestValue = 64 * 1024 - 1;

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool StartsWith(std::string_view text, std::string_view start) {
    if (text.empty() || start.empty()) // Else most answers fall with the first character.
        return start.empty();
    return text.front() == start.front() && text.substr(0, start.size()) == start;
}

bool HasLineBreak(std::string_view text) {
    return text.find_first_of("\r\n") != std::string_view::npos;
}

/// A carriage return counts as part of the line end, also where the file ends behind it.
std::string_view WithoutLineEnd(std::string_view line) {
    if (!line.empty() && line.back() == '\n')
        line.remove_suffix(1);
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    return line;
}

std::string_view LineEnd(std::string_view line) {
    return line.substr(WithoutLineEnd(line).size());
}

/// What counts of a line: not the blanks before it, and not its end.
std::string_view Content(std::string_view line) {
    line = WithoutLineEnd(line);
    while (!line.empty() && IsBlank(line.front()))
        line.remove_prefix(1);
    return line;
}

std::string_view WithoutTrailingBlanks(std::string_view text) {
    while (!text.empty() && IsBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

/// The first line of text, with its line end.
std::string_view FirstLine(std::string_view text) {
    return text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
}

/// The lines of a section between the two that open and close it.
std::string_view Inside(std::string_view body) {
    std::string_view const opened = body.substr(FirstLine(body).size());
    return opened.substr(0, WithoutLineEnd(opened).rfind('\n') + 1);
}

std::size_t CountLines(std::string_view text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

std::size_t OffsetIn(std::string_view whole, std::string_view part) {
    return static_cast<std::size_t>(part.data() - whole.data());
}

/// body with replacement in the place of the length characters from offset on.
Stretch Spliced(std::string_view body, std::size_t offset, std::size_t length,
                std::string_view replacement) {
    std::string changed;
    changed.reserve(body.size() - length + replacement.size());
    changed.append(body.substr(0, offset)).append(replacement).append(body.substr(offset + length));
    return Stretch(std::move(changed));
}

} // namespace

std::string Quoted(std::string_view text) {
    constexpr std::size_t kMostShown = 60;
    std::string quoted(text.substr(0, kMostShown));
    auto const isControl = [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    };
    std::replace_if(quoted.begin(), quoted.end(), isControl, '?');
    return '"' + quoted + (text.size() > kMostShown ? "...\"" : "\"");
}

SectionSyntax SyntaxOf(std::string_view sectionOpen, std::string_view sectionClose,
                       std::string_view separator, std::string_view comment) {
    return {std::string(WithoutTrailingBlanks(Content(sectionOpen))),
            std::string(WithoutTrailingBlanks(Content(sectionClose))), std::string(separator),
            std::string(comment), std::string(LineEnd(sectionOpen))};
}

void Stretch::Append(std::string_view text) {
    if (own_ != nullptr)
        own_->append(text);
    else
        own_ = std::make_unique<std::string>(std::string(asRead_).append(text));
}

// --- Reading ---

/// How far the reading has come.
struct SectionedText::Reading {
    std::size_t line = 0;    // The number of the current line.
    std::size_t outside = 0; // Where what is outside of sections begins,
    std::size_t open = 0;    // and the section that is open, if there is one:
    std::size_t openLine = 0;

    bool IsInSection() const { return openLine != 0; }
    std::string OpenedWhere() const {
        return " in the section opened at line " + std::to_string(openLine);
    }
};

SectionedText::SectionedText(std::string path, SectionSyntax syntax, std::string text)
    : path_(std::move(path)), syntax_(std::move(syntax)), text_(std::move(text)) {
    Read();
}

void SectionedText::Read() {
    RequireText();
    Reading reading;
    for (std::size_t offset = 0; offset < text_.size();) {
        std::string_view const line = FirstLine(std::string_view(text_).substr(offset));
        ++reading.line;
        ReadLine(reading, offset, line);
        offset += line.size();
    }
    if (reading.IsInSection()) {
        Fail(reading.line,
             {"the file ends", reading.OpenedWhere(), ", expected ", Quoted(syntax_.close)});
    }
    tail_ = Stretch(std::string_view(text_).substr(reading.outside));
}

/// A text in another encoding would otherwise fail with a message that shows nothing wrong.
void SectionedText::RequireText() const {
    if (StartsWith(text_, "\xEF\xBB\xBF"))
        Fail(1, {"found a byte order mark (BOM) before the text; save the file without it"});
    if (StartsWith(text_, "\xFF\xFE") || StartsWith(text_, "\xFE\xFF"))
        Fail(1, {"found the byte order mark (BOM) of UTF-16; save the file in UTF-8 without one"});
    std::size_t const nul = text_.find('\0');
    if (nul != std::string::npos)
        Fail(CountLines(std::string_view(text_).substr(0, nul)) + 1,
             {"found a NUL, expected text"});
}

void SectionedText::ReadLine(Reading& reading, std::size_t offset, std::string_view line) {
    std::string_view const content = Content(line);
    if (content.empty() || StartsWith(content, syntax_.comment))
        return;
    std::string_view const marker = WithoutTrailingBlanks(content);
    if (marker == syntax_.open) {
        if (reading.IsInSection()) {
            Fail(reading.line, {"found ", Quoted(syntax_.open), reading.OpenedWhere(),
                                ", expected ", Quoted(syntax_.close), " first"});
        }
        reading.open = offset;
        reading.openLine = reading.line;
    } else if (marker == syntax_.close) {
        if (!reading.IsInSection()) {
            Fail(reading.line,
                 {"found ", Quoted(syntax_.close), " while no section is open, expected ",
                  Quoted(syntax_.open), " first"});
        }
        std::string_view const text(text_);
        std::size_t const end = offset + line.size();
        sections_.push_back({Stretch(text.substr(reading.outside, reading.open - reading.outside)),
                             Stretch(text.substr(reading.open, end - reading.open)),
                             std::exchange(reading.openLine, 0)});
        reading.outside = end;
    } else {
        RequireEntry(reading, content);
    }
}

void SectionedText::RequireEntry(Reading const& reading, std::string_view content) const {
    if (!reading.IsInSection()) {
        Fail(reading.line, {"found ", Quoted(content), " outside the sections, expected ",
                            Quoted(syntax_.open), ", a comment or a blank line"});
    }
    std::size_t const separator = content.find(syntax_.separator);
    if (separator == std::string_view::npos) {
        Fail(reading.line, {"found ", Quoted(content), ", expected a key, ",
                            Quoted(syntax_.separator), " and a value, or ", Quoted(syntax_.close)});
    }
    if (separator == 0)
        Fail(reading.line, {"found ", Quoted(content), ", an entry without a key"});
}

// --- Entries ---

std::string_view SectionedText::LinesOf(Section const& section) {
    return Inside(section.body.Text());
}

std::optional<Entry> SectionedText::TakeEntry(std::string_view& lines) const {
    while (!lines.empty()) {
        std::string_view const line = FirstLine(lines);
        std::string_view const content = Content(line);
        lines.remove_prefix(line.size());
        if (content.empty() || StartsWith(content, syntax_.comment))
            continue;
        std::size_t const separator = content.find(syntax_.separator);
        return Entry{content.substr(0, separator),
                     content.substr(separator + syntax_.separator.size())};
    }
    return std::nullopt;
}

std::size_t SectionedText::LineOf(Section const& section, Entry const& entry) {
    if (section.line == 0)
        return 0;
    std::string_view const body = section.body.Text();
    return section.line + CountLines(body.substr(0, OffsetIn(body, entry.key)));
}

void SectionedText::SetValue(Section& section, Entry const& entry, std::string_view value) const {
    std::string_view const body = section.body.Text();
    section.body = Spliced(body, OffsetIn(body, entry.value), entry.value.size(), value);
}

void SectionedText::AddEntry(Section& section, std::string_view key, std::string_view value) const {
    std::string_view const body = section.body.Text();
    std::string_view const opened = FirstLine(body);
    std::string line(key);
    line.append(syntax_.separator).append(value).append(LineEnd(opened));
    section.body = Spliced(body, opened.size() + Inside(body).size(), 0, line);
}

void SectionedText::RequireStorable(std::string_view key, std::string_view value) const {
    if (key.empty() || IsBlank(key.front()) || HasLineBreak(key) ||
        StartsWith(key, syntax_.comment) || key.find(syntax_.separator) != std::string_view::npos)
        Fail(0, {Quoted(key), " cannot be a key"});
    if (HasLineBreak(value))
        Fail(0, {"the new value of ", Quoted(key), " has a line break"});
    if (value.size() > kLongestValue) {
        Fail(0, {"the new value of ", Quoted(key), " has ", std::to_string(value.size()),
                 " characters, expected at most ", std::to_string(kLongestValue)});
    }
}

// --- Sections ---

SectionedText::Place SectionedText::Append() {
    std::string const lineEnd = NewLineEnd();
    std::list<Section> added(1);
    added.front().body = Stretch(syntax_.open + lineEnd + syntax_.close + lineEnd);
    // What the text ends with may lack its line end.
    Stretch* last = &tail_;
    if (last->Text().empty() && !sections_.empty())
        last = &sections_.back().body;
    if (!last->Text().empty() && last->Text().back() != '\n')
        *last = Stretch(std::string(WithoutLineEnd(last->Text())) + lineEnd);
    added.front().outside = std::exchange(tail_, Stretch());
    sections_.splice(sections_.end(), added);
    return std::prev(sections_.end());
}

std::string SectionedText::NewLineEnd() const {
    std::string_view const firstLine = FirstLine(text_);
    if (!firstLine.empty() && firstLine.back() == '\n')
        return std::string(LineEnd(firstLine));
    return syntax_.lineEnd.empty() ? "\n" : syntax_.lineEnd;
}

SectionedText::Place SectionedText::Erase(Place place) {
    Place const next = std::next(place);
    Stretch& behind = next == sections_.end() ? tail_ : next->outside;
    if (!place->outside.Text().empty()) {
        place->outside.Append(behind.Text());
        behind = std::move(place->outside);
    }
    return sections_.erase(place);
}

std::string SectionedText::Text() const {
    std::size_t size = tail_.Text().size();
    for (Section const& section : sections_)
        size += section.outside.Text().size() + section.body.Text().size();
    std::string text;
    text.reserve(size);
    for (Section const& section : sections_)
        text.append(section.outside.Text()).append(section.body.Text());
    text.append(tail_.Text());
    return text;
}

void SectionedText::Fail(std::size_t line, std::initializer_list<std::string_view> reason) const {
    std::string text = path_;
    if (line != 0)
        text.append(":").append(std::to_string(line));
    text.append(": ");
    for (std::string_view const part : reason)
        text.append(part);
    throw std::runtime_error(text);
}

} // namespace HostPlatform
