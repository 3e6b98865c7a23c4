/// @file
/// The sectioned file of a plain host: the file's own text, and where in it the sections are.
///
/// An edit splices the text and saving writes it, so every byte that no edit touches stays. Reading
/// stores nothing per line. An edit moves the text behind it, which for thousands of rules costs
/// far less than the save that follows.

#include "MultiSectionFile.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "AtomicFile.h"

namespace Configuration {
namespace {

/// The longest value that still fits, with its NUL, into a SmartBuffer.
constexpr std::size_t kLongestValue = 64 * 1024 - 1;

/// Where in the text the lines begin that open and close a section.
struct Section {
    std::size_t open;
    std::size_t close; // 0, where no section can end, while the section is being read.
};

/// One entry; the views are parts of the text.
struct Entry {
    std::string_view key;
    std::string_view value;
};

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
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

/// text for a message: of bounded length, and unable to steer a terminal.
std::string Quoted(std::string_view text) {
    constexpr std::size_t kMostShown = 60;
    std::string quoted(text.substr(0, kMostShown));
    auto const isControl = [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
    };
    std::replace_if(quoted.begin(), quoted.end(), isControl, '?');
    return '"' + quoted + (text.size() > kMostShown ? "...\"" : "\"");
}

/// A null pointer would otherwise end the process.
char const* Required(char const* argument) {
    if (argument == nullptr)
        throw std::invalid_argument("MultiSectionFile: an argument is null");
    return argument;
}

} // namespace

class [[gnu::visibility("hidden")]] MultiSectionFile::Impl {
  public:
    Impl(std::string_view path, std::string_view sectionOpen, std::string_view sectionClose,
         std::string_view separator, std::string_view comment);

    void Restart();
    int GotoNextSection();
    int GotoPreviousSection();
    int GetSectionEntry(std::string_view key, char* buffer, std::size_t size);
    int SetSectionEntry(std::string_view key, std::string_view value);
    int AddSection();
    int DeleteSection();
    int Save() const;
    std::size_t GetSectionLine() const;
    std::vector<std::pair<std::string, std::size_t>> GetEntryLines();

  private:
    // Reading.
    void Parse();
    void TakeLine(std::size_t offset, std::string_view line);
    void OpenSection(std::size_t offset);
    void CloseSection(std::size_t offset);
    void RequireEntry(std::size_t offset, std::string_view content) const;
    bool IsInSection() const {
        return !mSections.empty() && mSections.back().close == 0;
    }
    std::string OpenedWhere() const;

    // The section under the cursor.
    void SetCursor(std::size_t next, bool isOnSection);
    std::size_t Current() const;
    std::vector<Entry> const& Entries();
    Entry const* FindEntry(std::string_view key);
    void RequireStorable(std::string_view key, std::string_view value) const;

    // The text.
    std::string_view LineAt(std::size_t offset) const;
    std::size_t LineNumber(std::size_t offset) const;
    std::size_t OffsetOf(std::string_view part) const;
    void Splice(std::size_t offset, std::size_t length, std::string_view replacement,
                std::size_t firstSection);
    std::string NewLineEnd() const;

    [[noreturn]] void Fail(std::string const& reason) const;
    [[noreturn]] void Fail(std::size_t offset, std::string const& reason) const;

    std::string mPath;
    std::string mOpen;
    std::string mClose;
    std::string mSeparator;
    std::string mComment;
    std::string mDefaultLineEnd;

    std::string mText;
    std::vector<Section> mSections;

    // The cursor is described by the section that comes next: it stands on the one before that, or,
    // not being on a section, between the two.
    std::size_t mNext = 0;
    bool mIsOnSection = false;

    // The entries of the section under the cursor, once one was asked for: most readers want all.
    std::vector<Entry> mEntries;
    bool mAreEntriesKnown = false;
};

// --- Reading ---

MultiSectionFile::Impl::Impl(std::string_view path, std::string_view sectionOpen,
                             std::string_view sectionClose, std::string_view separator,
                             std::string_view comment)
    : mPath(path), mOpen(WithoutTrailingBlanks(Content(sectionOpen))),
      mClose(WithoutTrailingBlanks(Content(sectionClose))), mSeparator(separator),
      mComment(comment), mDefaultLineEnd(LineEnd(sectionOpen)), mText(ReadFile(mPath)) {
    Parse();
}

void MultiSectionFile::Impl::Parse() {
    std::size_t const nul = mText.find('\0');
    if (nul != std::string::npos)
        Fail(nul, "found a NUL, expected text");
    for (std::size_t offset = 0; offset < mText.size();) {
        std::string_view const line = LineAt(offset);
        TakeLine(offset, line);
        offset += line.size();
    }
    if (IsInSection())
        Fail(mText.size() - 1, "the file ends" + OpenedWhere() + ", expected " + Quoted(mClose));
}

void MultiSectionFile::Impl::TakeLine(std::size_t offset, std::string_view line) {
    std::string_view const content = Content(line);
    if (content.empty() || StartsWith(content, mComment))
        return;
    std::string_view const marker = WithoutTrailingBlanks(content);
    if (marker == mOpen)
        OpenSection(offset);
    else if (marker == mClose)
        CloseSection(offset);
    else
        RequireEntry(offset, content);
}

void MultiSectionFile::Impl::OpenSection(std::size_t offset) {
    if (IsInSection()) {
        Fail(offset,
             "found " + Quoted(mOpen) + OpenedWhere() + ", expected " + Quoted(mClose) + " first");
    }
    mSections.push_back({offset, 0});
}

void MultiSectionFile::Impl::CloseSection(std::size_t offset) {
    if (!IsInSection()) {
        Fail(offset, "found " + Quoted(mClose) + " while no section is open, expected " +
                         Quoted(mOpen) + " first");
    }
    mSections.back().close = offset;
}

void MultiSectionFile::Impl::RequireEntry(std::size_t offset, std::string_view content) const {
    if (!IsInSection()) {
        Fail(offset, "found " + Quoted(content) + " outside the sections, expected " +
                         Quoted(mOpen) + ", a comment or a blank line");
    }
    std::size_t const separator = content.find(mSeparator);
    if (separator == std::string_view::npos) {
        Fail(offset, "found " + Quoted(content) + ", expected a key, " + Quoted(mSeparator) +
                         " and a value, or " + Quoted(mClose));
    }
    if (separator == 0)
        Fail(offset, "found " + Quoted(content) + ", an entry without a key");
}

std::string MultiSectionFile::Impl::OpenedWhere() const {
    return " in the section opened at line " + std::to_string(LineNumber(mSections.back().open));
}

// --- The cursor ---

void MultiSectionFile::Impl::SetCursor(std::size_t next, bool isOnSection) {
    mNext = next;
    mIsOnSection = isOnSection;
    mAreEntriesKnown = false;
}

void MultiSectionFile::Impl::Restart() {
    SetCursor(0, false);
}

int MultiSectionFile::Impl::GotoNextSection() {
    bool const hasNext = mNext < mSections.size();
    SetCursor(hasNext ? mNext + 1 : mNext, hasNext);
    return hasNext ? 1 : 0;
}

int MultiSectionFile::Impl::GotoPreviousSection() {
    std::size_t const next = mIsOnSection ? mNext - 1 : mNext;
    SetCursor(next, next > 0);
    return next > 0 ? 1 : 0;
}

std::size_t MultiSectionFile::Impl::Current() const {
    if (!mIsOnSection)
        Fail("no section is selected");
    return mNext - 1;
}

// --- Entries ---

std::vector<Entry> const& MultiSectionFile::Impl::Entries() {
    Section const& section = mSections[Current()];
    if (mAreEntriesKnown)
        return mEntries;
    mEntries.clear();
    std::string_view line = LineAt(section.open);
    for (std::size_t offset = section.open + line.size(); offset < section.close;
         offset += line.size()) {
        line = LineAt(offset);
        std::string_view const content = Content(line);
        if (!content.empty() && !StartsWith(content, mComment)) {
            std::size_t const separator = content.find(mSeparator);
            mEntries.push_back(
                {content.substr(0, separator), content.substr(separator + mSeparator.size())});
        }
    }
    mAreEntriesKnown = true;
    return mEntries;
}

/// Returns the first entry of key, or null.
Entry const* MultiSectionFile::Impl::FindEntry(std::string_view key) {
    for (Entry const& entry : Entries())
        if (entry.key == key)
            return &entry;
    return nullptr;
}

int MultiSectionFile::Impl::GetSectionEntry(std::string_view key, char* buffer, std::size_t size) {
    Entry const* const entry = FindEntry(key);
    std::string_view const value = entry != nullptr ? entry->value : std::string_view();
    if (value.size() >= size) {
        Fail(entry != nullptr ? OffsetOf(entry->key) : mSections[Current()].open,
             "the value of " + Quoted(key) + " has " + std::to_string(value.size()) +
                 " characters, expected less than " + std::to_string(size));
    }
    buffer[value.copy(buffer, value.size())] = '\0';
    return entry != nullptr ? 1 : 0;
}

int MultiSectionFile::Impl::SetSectionEntry(std::string_view key, std::string_view value) {
    std::size_t const current = Current();
    RequireStorable(key, value);
    Entry const* const entry = FindEntry(key);
    if (entry == nullptr) {
        std::string line(key);
        line.append(mSeparator).append(value).append(LineEnd(LineAt(mSections[current].open)));
        Splice(mSections[current].close, 0, line, current);
    } else if (entry->value != value) {
        Splice(OffsetOf(entry->value), entry->value.size(), value, current);
    }
    return 1;
}

/// Throws when key or value would not be read back the same.
void MultiSectionFile::Impl::RequireStorable(std::string_view key, std::string_view value) const {
    if (key.empty() || IsBlank(key.front()) || HasLineBreak(key) || StartsWith(key, mComment) ||
        key.find(mSeparator) != std::string_view::npos)
        Fail(Quoted(key) + " cannot be a key");
    if (HasLineBreak(value))
        Fail("the new value of " + Quoted(key) + " has a line break");
    if (value.size() > kLongestValue) {
        Fail("the new value of " + Quoted(key) + " has " + std::to_string(value.size()) +
             " characters, expected at most " + std::to_string(kLongestValue));
    }
}

// --- Sections ---

int MultiSectionFile::Impl::AddSection() {
    std::string const lineEnd = NewLineEnd();
    bool const isLastLineOpen = !mText.empty() && mText.back() != '\n';
    std::size_t const end = isLastLineOpen ? WithoutLineEnd(mText).size() : mText.size();
    std::string const before = isLastLineOpen ? lineEnd : "";

    std::size_t const open = end + before.size();
    mSections.push_back({open, open + mOpen.size() + lineEnd.size()});
    try {
        mText.replace(end, std::string::npos, before + mOpen + lineEnd + mClose + lineEnd);
    } catch (...) {
        mSections.pop_back();
        throw;
    }
    SetCursor(mSections.size(), true);
    return 1;
}

int MultiSectionFile::Impl::DeleteSection() {
    std::size_t const current = Current();
    Section const section = mSections[current];
    std::size_t const end = section.close + LineAt(section.close).size();
    mSections.erase(mSections.begin() + static_cast<std::ptrdiff_t>(current));
    Splice(section.open, end - section.open, "", current);
    SetCursor(current, false);
    return 1;
}

/// A new section ends its lines as the file does.
std::string MultiSectionFile::Impl::NewLineEnd() const {
    std::string_view const firstLine = LineAt(0);
    if (!firstLine.empty() && firstLine.back() == '\n')
        return std::string(LineEnd(firstLine));
    return mDefaultLineEnd.empty() ? "\n" : mDefaultLineEnd;
}

std::size_t MultiSectionFile::Impl::GetSectionLine() const {
    return LineNumber(mSections[Current()].open);
}

std::vector<std::pair<std::string, std::size_t>> MultiSectionFile::Impl::GetEntryLines() {
    std::vector<std::pair<std::string, std::size_t>> lines;
    for (Entry const& entry : Entries())
        lines.emplace_back(entry.key, LineNumber(OffsetOf(entry.key)));
    return lines;
}

int MultiSectionFile::Impl::Save() const {
    ReplaceFile(mPath, mText);
    return 1;
}

// --- The text ---

/// Returns the line that begins at offset, with its line end.
std::string_view MultiSectionFile::Impl::LineAt(std::size_t offset) const {
    std::string_view const rest = std::string_view(mText).substr(offset);
    return rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
}

/// Counts, which is slow; but only failures ask.
std::size_t MultiSectionFile::Impl::LineNumber(std::size_t offset) const {
    auto const end = mText.begin() + static_cast<std::ptrdiff_t>(offset);
    return static_cast<std::size_t>(std::count(mText.begin(), end, '\n')) + 1;
}

std::size_t MultiSectionFile::Impl::OffsetOf(std::string_view part) const {
    return static_cast<std::size_t>(part.data() - mText.data());
}

/// Replaces a part of the text. What lies behind it moves; no section before firstSection does.
void MultiSectionFile::Impl::Splice(std::size_t offset, std::size_t length,
                                    std::string_view replacement, std::size_t firstSection) {
    mText.replace(offset, length, replacement);
    mAreEntriesKnown = false;
    for (std::size_t index = firstSection; index < mSections.size(); ++index) {
        for (std::size_t* line : {&mSections[index].open, &mSections[index].close})
            if (*line >= offset)
                *line = *line + replacement.size() - length;
    }
}

void MultiSectionFile::Impl::Fail(std::string const& reason) const {
    throw std::runtime_error(mPath + ": " + reason);
}

void MultiSectionFile::Impl::Fail(std::size_t offset, std::string const& reason) const {
    throw std::runtime_error(mPath + ":" + std::to_string(LineNumber(offset)) + ": " + reason);
}

// --- The interface ---

MultiSectionFile::MultiSectionFile(char const* path, bool /*flag1*/, bool /*flag2*/, bool /*flag3*/,
                                   char const* /*unused1*/, char const* sectionOpen,
                                   char const* sectionClose, char const* separator,
                                   char const* comment, char const* /*unused2*/)
    : mImpl(std::make_unique<Impl>(Required(path), Required(sectionOpen), Required(sectionClose),
                                   Required(separator), Required(comment))) {}

MultiSectionFile::~MultiSectionFile() = default;

void MultiSectionFile::Restart() {
    mImpl->Restart();
}

int MultiSectionFile::GotoNextSection() {
    return mImpl->GotoNextSection();
}

int MultiSectionFile::GotoPreviousSection() {
    return mImpl->GotoPreviousSection();
}

int MultiSectionFile::GetSectionEntry(char const* key, char* buffer, unsigned size) {
    return mImpl->GetSectionEntry(Required(key), buffer, size);
}

int MultiSectionFile::SetSectionEntry(char const* key, char const* value) {
    return mImpl->SetSectionEntry(Required(key), Required(value));
}

int MultiSectionFile::AddSection(bool /*flag*/) {
    return mImpl->AddSection();
}

int MultiSectionFile::DeleteSection() {
    return mImpl->DeleteSection();
}

int MultiSectionFile::Save(bool /*flag*/, char const* /*unused*/) {
    return mImpl->Save();
}

std::size_t MultiSectionFile::GetSectionLine() {
    return mImpl->GetSectionLine();
}

std::vector<std::pair<std::string, std::size_t>> MultiSectionFile::GetEntryLines() {
    return mImpl->GetEntryLines();
}

} // namespace Configuration
