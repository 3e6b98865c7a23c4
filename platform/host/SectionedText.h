/// @file
/// Parses the text of a sectioned file and edits it section by section.

#ifndef PLATFORM_HOST_SECTIONEDTEXT_H
#define PLATFORM_HOST_SECTIONEDTEXT_H

#include <cstddef>
#include <initializer_list>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace HostPlatform {

/// How lines of a sectioned file are recognised.
struct SectionSyntax {
    std::string open;      ///< The line that opens a section, without blanks and line end.
    std::string close;     ///< The line that closes a section.
    std::string separator; ///< Separates key and value.
    std::string comment;   ///< Begins a comment.
    std::string lineEnd;   ///< Ends the lines that are added to an empty file.
};

/// Converts the arguments of MultiSectionFile's constructor.
SectionSyntax SyntaxOf(std::string_view sectionOpen, std::string_view sectionClose,
                       std::string_view separator, std::string_view comment);

/// A piece of the text: a view of the text as it was read, and a copy of its own once it is
/// changed.
class TextPiece {
  public:
    TextPiece() = default;
    explicit TextPiece(std::string_view asRead) : asRead_(asRead) {}
    explicit TextPiece(std::string own) : own_(std::make_unique<std::string>(std::move(own))) {}

    std::string_view Text() const { return own_ != nullptr ? std::string_view(*own_) : asRead_; }
    void Append(std::string_view text);

  private:
    std::string_view asRead_;
    std::unique_ptr<std::string> own_;
};

/// A section, and the text between the preceding section and this one.
struct Section {
    TextPiece before;
    TextPiece body; // From the opening line to the closing line, both included.
    /// The number of the opening line in the text as it was read, from 1; 0 for an added section.
    std::size_t line = 0;
};

/// An entry of a section. The views are valid until the section's body changes.
struct Entry {
    std::string_view key;
    std::string_view value;
};

/// Everything that is not edited stays as it was read, byte for byte. An edit takes time in
/// proportion to the section that it changes. A failed operation changes nothing and throws a
/// std::runtime_error that gives the path, the line of the text as it was read (if there is one)
/// and the reason.
class SectionedText {
  public:
    using Position = std::list<Section>::iterator;

    /// Parses text. path is used in messages only.
    SectionedText(std::string path, SectionSyntax syntax, std::string text);
    SectionedText(SectionedText const&) = delete;
    SectionedText& operator=(SectionedText const&) = delete;

    /// The sections. A position is valid until its section is erased.
    Position Begin() { return sections_.begin(); }
    Position End() { return sections_.end(); }

    /// Adds an empty section at the end, with the line ends of the text.
    void Append();

    /// Removes a section and keeps the text outside it. Returns the position of the next section.
    Position Erase(Position position);

    /// Returns the lines between the opening and the closing line of a section.
    static std::string_view LinesOf(Section const& section);

    /// Removes the first entry, and everything before it, from the front of lines and returns it;
    /// nothing if there is no entry.
    std::optional<Entry> TakeEntry(std::string_view& lines) const;

    /// Returns the line number of an entry of section, as the text was read; 0 in an added section.
    static std::size_t LineOf(Section const& section, Entry const& entry);

    /// Replaces the value of an entry of section.
    void SetValue(Section& section, Entry const& entry, std::string_view value) const;

    /// Adds an entry at the end of section.
    void AddEntry(Section& section, std::string_view key, std::string_view value) const;

    /// Throws if an entry of key and value would not be read back unchanged.
    void RequireStorable(std::string_view key, std::string_view value) const;

    /// Returns the whole text with all changes.
    std::string Text() const;

    /// Throws a std::runtime_error of the path, the line if it is not 0, and the parts of reason.
    [[noreturn]] void Fail(std::size_t line, std::initializer_list<std::string_view> reason) const;

  private:
    struct Progress;

    void Parse();
    void ParseLine(Progress& progress, std::size_t offset, std::string_view line);
    void CloseSection(Progress& progress, std::size_t end);
    void RequireEntry(Progress const& progress, std::string_view content) const;
    void RequireText() const;
    std::string NewLineEnd() const;

    std::string path_;
    SectionSyntax syntax_;
    std::string text_; // As it was read.
    std::list<Section> sections_;
    TextPiece tail_; // After the last section.
};

/// Returns text in quotes for a message, shortened and without control characters, which might
/// control a terminal.
std::string Quoted(std::string_view text);

} // namespace HostPlatform

#endif
