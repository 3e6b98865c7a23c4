/// @file
/// Parses a text into sections, entry by entry on demand, and splices changes into it.

#include "SectionedText.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace HostPlatform {

namespace {

/// The longest value that fits, with its NUL, into a SmartBuffer.
constexpr std::size_t kLongestValue = 64 * 1024 - 1;

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool StartsWith(std::string_view text, std::string_view start) {
    if (text.empty() || start.empty()) // The first character decides most of the other cases.
        return start.empty();
    return text.front() == start.front() && text.substr(0, start.size()) == start;
}

bool HasLineBreak(std::string_view text) {
    return text.find_first_of("\r\n") != std::string_view::npos;
}

/// A carriage return is part of the line end, even as the last character of the file.
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

/// Returns the line without the blanks before it and without its line end.
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

/// Returns the first line of text, with its line end.
std::string_view FirstLine(std::string_view text) {
    return text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
}

/// Returns the lines between the first and the last line of body.
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

/// Returns body with the length characters from offset on replaced.
TextPiece Spliced(std::string_view body, std::size_t offset, std::size_t length,
                  std::string_view replacement) {
    std::string changed;
    changed.reserve(body.size() - length + replacement.size());
    changed.append(body.substr(0, offset)).append(replacement).append(body.substr(offset + length));
    return TextPiece(std::move(changed));
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

void TextPiece::Append(std::string_view text) {
    if (own_ != nullptr)
        own_->append(text);
    else
        own_ = std::make_unique<std::string>(std::string(asRead_).append(text));
}

// --- Parsing ---

/// How far the text has been parsed. The offsets are positions in text_.
struct SectionedText::Progress {
    std::size_t line = 0;         // The number of the current line.
    std::size_t previousEnd = 0;  // Where the last closed section ends.
    std::size_t sectionBegin = 0; // Where the open section begins,
    std::size_t sectionLine = 0;  // and the number of its first line; 0 if no section is open.

    bool IsInSection() const { return sectionLine != 0; }
    std::string InWhichSection() const {
        return " in the section opened at line " + std::to_string(sectionLine);
    }
};

SectionedText::SectionedText(std::string path, SectionSyntax syntax, std::string text)
    : path_(std::move(path)), syntax_(std::move(syntax)), text_(std::move(text)) {
    Parse();
}

void SectionedText::Parse() {
    RequireText();
    Progress progress;
    for (std::size_t offset = 0; offset < text_.size();) {
        std::string_view const line = FirstLine(std::string_view(text_).substr(offset));
        ++progress.line;
        ParseLine(progress, offset, line);
        offset += line.size();
    }
    if (progress.IsInSection()) {
        Fail(progress.line,
             {"the file ends", progress.InWhichSection(), ", expected ", Quoted(syntax_.close)});
    }
    tail_ = TextPiece(std::string_view(text_).substr(progress.previousEnd));
}

/// Text in another encoding would otherwise fail with a message that does not show why.
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

void SectionedText::ParseLine(Progress& progress, std::size_t offset, std::string_view line) {
    std::string_view const content = Content(line);
    if (content.empty() || StartsWith(content, syntax_.comment))
        return;
    std::string_view const marker = WithoutTrailingBlanks(content);
    if (marker == syntax_.open) {
        if (progress.IsInSection()) {
            Fail(progress.line, {"found ", Quoted(syntax_.open), progress.InWhichSection(),
                                 ", expected ", Quoted(syntax_.close), " first"});
        }
        progress.sectionBegin = offset;
        progress.sectionLine = progress.line;
    } else if (marker == syntax_.close) {
        if (!progress.IsInSection()) {
            Fail(progress.line,
                 {"found ", Quoted(syntax_.close), " while no section is open, expected ",
                  Quoted(syntax_.open), " first"});
        }
        CloseSection(progress, offset + line.size());
    } else {
        RequireEntry(progress, content);
    }
}

void SectionedText::CloseSection(Progress& progress, std::size_t end) {
    auto const piece = [this](std::size_t from, std::size_t to) {
        return TextPiece(std::string_view(text_).substr(from, to - from));
    };
    sections_.push_back({piece(progress.previousEnd, progress.sectionBegin),
                         piece(progress.sectionBegin, end),
                         std::exchange(progress.sectionLine, 0)});
    progress.previousEnd = end;
}

void SectionedText::RequireEntry(Progress const& progress, std::string_view content) const {
    if (!progress.IsInSection()) {
        Fail(progress.line, {"found ", Quoted(content), " outside the sections, expected ",
                             Quoted(syntax_.open), ", a comment or a blank line"});
    }
    std::size_t const separator = content.find(syntax_.separator);
    if (separator == std::string_view::npos) {
        Fail(progress.line,
             {"found ", Quoted(content), ", expected a key, ", Quoted(syntax_.separator),
              " and a value, or ", Quoted(syntax_.close)});
    }
    if (separator == 0)
        Fail(progress.line, {"found ", Quoted(content), ", an entry without a key"});
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

void SectionedText::Append() {
    std::string const lineEnd = NewLineEnd();
    std::list<Section> added(1);
    added.front().body = TextPiece(syntax_.open + lineEnd + syntax_.close + lineEnd);
    // The last line may have no line end.
    TextPiece* last = &tail_;
    if (last->Text().empty() && !sections_.empty())
        last = &sections_.back().body;
    if (!last->Text().empty() && last->Text().back() != '\n')
        *last = TextPiece(std::string(WithoutLineEnd(last->Text())) + lineEnd);
    added.front().before = std::exchange(tail_, TextPiece());
    sections_.splice(sections_.end(), added);
}

std::string SectionedText::NewLineEnd() const {
    std::string_view const firstLine = FirstLine(text_);
    if (!firstLine.empty() && firstLine.back() == '\n')
        return std::string(LineEnd(firstLine));
    return syntax_.lineEnd.empty() ? "\n" : syntax_.lineEnd;
}

SectionedText::Position SectionedText::Erase(Position position) {
    Position const next = std::next(position);
    TextPiece& after = next == sections_.end() ? tail_ : next->before;
    if (!position->before.Text().empty()) {
        position->before.Append(after.Text());
        after = std::move(position->before);
    }
    return sections_.erase(position);
}

std::string SectionedText::Text() const {
    std::size_t size = tail_.Text().size();
    for (Section const& section : sections_)
        size += section.before.Text().size() + section.body.Text().size();
    std::string text;
    text.reserve(size);
    for (Section const& section : sections_)
        text.append(section.before.Text()).append(section.body.Text());
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
