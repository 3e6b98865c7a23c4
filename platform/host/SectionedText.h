/// @file
/// The text of a sectioned file, and where in it the sections are.

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

/// The marks of a file's lines.
struct SectionSyntax {
    std::string open;      ///< The line that opens a section, without blanks and line end.
    std::string close;     ///< The line that closes it.
    std::string separator; ///< Between key and value.
    std::string comment;   ///< What a comment begins with.
    std::string lineEnd;   ///< Of a file that has no lines yet.
};

/// The marks as MultiSectionFile is given them.
SectionSyntax SyntaxOf(std::string_view sectionOpen, std::string_view sectionClose,
                       std::string_view separator, std::string_view comment);

/// A part of the text: a view of what was read until it is changed, and a text of its own then.
class Stretch {
  public:
    Stretch() = default;
    explicit Stretch(std::string_view asRead) : asRead_(asRead) {}
    explicit Stretch(std::string own) : own_(std::make_unique<std::string>(std::move(own))) {}

    std::string_view Text() const { return own_ != nullptr ? std::string_view(*own_) : asRead_; }
    void Append(std::string_view text);

  private:
    std::string_view asRead_;
    std::unique_ptr<std::string> own_;
};

/// A section, and the text between the one before it and itself.
struct Section {
    Stretch outside;
    Stretch body; // From the line that opens the section to the one that closes it.
    std::size_t line =
        0; // Of the opening line in the text as it was read, from 1; 0 for a new one.
};

/// One entry. The views are parts of a section's body and good until that is changed.
struct Entry {
    std::string_view key;
    std::string_view value;
};

/// What an edit does not touch stays as it was read, byte for byte. An edit takes time in
/// proportion to the section that it changes. Operations throw std::runtime_error, whose text says
/// path, line (where there is one; as the text was read) and reason; a failed one changes nothing.
class SectionedText {
  public:
    using Place = std::list<Section>::iterator;

    /// Takes text apart. path is for messages only.
    SectionedText(std::string path, SectionSyntax syntax, std::string text);
    SectionedText(SectionedText const&) = delete;
    SectionedText& operator=(SectionedText const&) = delete;

    /// The sections; places stay good until their section is erased.
    Place Begin() { return sections_.begin(); }
    Place End() { return sections_.end(); }

    /// Adds an empty section at the end, which ends its lines as the text does.
    Place Append();

    /// Removes a section, keeps what is outside, and returns the place behind it.
    Place Erase(Place place);

    /// The lines of a section between the two that open and close it.
    static std::string_view LinesOf(Section const& section);

    /// Takes the first entry off lines of a section, with what is before it. Nothing when there is
    /// none.
    std::optional<Entry> TakeEntry(std::string_view& lines) const;

    /// The line on which entry, which is one of the section's, stands; 0 in a new section.
    static std::size_t LineOf(Section const& section, Entry const& entry);

    /// Replaces the value of entry, which is one of the section's.
    void SetValue(Section& section, Entry const& entry, std::string_view value) const;

    /// Adds an entry as the section's last one.
    void AddEntry(Section& section, std::string_view key, std::string_view value) const;

    /// Throws when an entry of key and value would not be read back the same.
    void RequireStorable(std::string_view key, std::string_view value) const;

    /// The whole text, with the changes made so far.
    std::string Text() const;

    /// Throws reason, with the path and, where it is not 0, the line.
    [[noreturn]] void Fail(std::size_t line, std::initializer_list<std::string_view> reason) const;

  private:
    struct Reading;

    void Read();
    void ReadLine(Reading& reading, std::size_t offset, std::string_view line);
    void RequireEntry(Reading const& reading, std::string_view content) const;
    void RequireText() const;
    std::string NewLineEnd() const;

    std::string path_;
    SectionSyntax syntax_;
    std::string text_; // As it was read.
    std::list<Section> sections_;
    Stretch tail_; // Behind the last section.
};

/// text for a message: of bounded length, and unable to steer a terminal.
std::string Quoted(std::string_view text);

} // namespace HostPlatform

#endif
