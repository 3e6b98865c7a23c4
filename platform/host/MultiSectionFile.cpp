/// @file
/// The sectioned file of a plain host: a parsed text and a cursor on one of its sections.

#include "MultiSectionFile.h"

#include <iterator>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "AtomicFile.h"
#include "SectionedText.h"

namespace Configuration {

using namespace HostPlatform;

namespace {

/// Constructing a string from a null pointer would crash the process.
char const* Required(char const* argument) {
    if (argument == nullptr)
        throw std::invalid_argument("MultiSectionFile: an argument is null");
    return argument;
}

} // namespace

class [[gnu::visibility("hidden")]] MultiSectionFile::Impl {
  public:
    Impl(std::string const& path, SectionSyntax syntax)
        : Impl(path, std::move(syntax), ReadFile(path)) {}

    void Restart();
    bool GotoNextSection();
    bool GotoPreviousSection();
    bool GetSectionEntry(std::string_view key, char* buffer, std::size_t size);
    void SetSectionEntry(std::string_view key, std::string_view value);
    void AddSection();
    void DeleteSection();
    void Save();
    std::size_t GetSectionLine();
    std::vector<std::pair<std::string, std::size_t>> GetEntryLines();

  private:
    Impl(std::string const& path, SectionSyntax syntax, FileText file)
        : path_(path), text_(path, std::move(syntax), std::move(file.text)), stamp_(file.stamp),
          next_(text_.Begin()) {}

    void SetCursor(SectionedText::Position next, bool isOnSection);
    Section& Current();
    void ForgetEntries();
    bool ParseEntry();
    Entry const* FindEntry(std::string_view key);

    std::string path_;
    SectionedText text_;
    std::optional<FileStamp> stamp_; // Of the file when it was read or last saved.

    // The cursor: on the section before next_, or, if it is on no section, between that and next_.
    SectionedText::Position next_;
    bool isOnSection_ = false;

    // The entries of the current section that have been parsed so far, and the lines that have not;
    // no lines if parsing has not begun.
    std::vector<Entry> entries_;
    std::optional<std::string_view> unparsedLines_;
};

// --- The cursor ---

void MultiSectionFile::Impl::SetCursor(SectionedText::Position next, bool isOnSection) {
    next_ = next;
    isOnSection_ = isOnSection;
    ForgetEntries();
}

void MultiSectionFile::Impl::Restart() {
    SetCursor(text_.Begin(), false);
}

bool MultiSectionFile::Impl::GotoNextSection() {
    bool const hasNext = next_ != text_.End();
    SetCursor(hasNext ? std::next(next_) : next_, hasNext);
    return hasNext;
}

bool MultiSectionFile::Impl::GotoPreviousSection() {
    SectionedText::Position const next = isOnSection_ ? std::prev(next_) : next_;
    SetCursor(next, next != text_.Begin());
    return isOnSection_;
}

Section& MultiSectionFile::Impl::Current() {
    if (!isOnSection_)
        text_.Fail(0, {"no section is selected"});
    return *std::prev(next_);
}

// --- Entries ---

void MultiSectionFile::Impl::ForgetEntries() {
    entries_.clear();
    unparsedLines_.reset();
}

/// Parses one more entry of the current section. Returns false if there is none.
bool MultiSectionFile::Impl::ParseEntry() {
    std::string_view lines = unparsedLines_ ? *unparsedLines_ : SectionedText::LinesOf(Current());
    std::optional<Entry> const entry = text_.TakeEntry(lines);
    if (entry)
        entries_.push_back(*entry);
    unparsedLines_ = lines; // After push_back, which may throw: the entry would be lost.
    return entry.has_value();
}

/// Returns the first entry with that key, or null.
Entry const* MultiSectionFile::Impl::FindEntry(std::string_view key) {
    for (std::size_t i = 0; i < entries_.size() || ParseEntry(); ++i)
        if (entries_[i].key == key)
            return &entries_[i];
    return nullptr;
}

bool MultiSectionFile::Impl::GetSectionEntry(std::string_view key, char* buffer, std::size_t size) {
    Entry const* const entry = FindEntry(key);
    std::string_view const value = entry != nullptr ? entry->value : std::string_view();
    if (value.size() >= size) {
        text_.Fail(entry != nullptr ? SectionedText::LineOf(Current(), *entry) : Current().line,
                   {"the value of ", Quoted(key), " has ", std::to_string(value.size()),
                    " characters, expected less than ", std::to_string(size)});
    }
    buffer[value.copy(buffer, value.size())] = '\0';
    return entry != nullptr;
}

void MultiSectionFile::Impl::SetSectionEntry(std::string_view key, std::string_view value) {
    Section& section = Current();
    text_.RequireStorable(key, value);
    Entry const* const entry = FindEntry(key);
    if (entry == nullptr)
        text_.AddEntry(section, key, value);
    else if (entry->value != value)
        text_.SetValue(section, *entry, value);
    else
        return;
    ForgetEntries();
}

// --- Sections ---

void MultiSectionFile::Impl::AddSection() {
    text_.Append();
    SetCursor(text_.End(), true);
}

void MultiSectionFile::Impl::DeleteSection() {
    Current();
    SetCursor(text_.Erase(std::prev(next_)), false);
}

void MultiSectionFile::Impl::Save() {
    ReplaceFile(path_, text_.Text(), stamp_);
}

std::size_t MultiSectionFile::Impl::GetSectionLine() {
    return Current().line;
}

std::vector<std::pair<std::string, std::size_t>> MultiSectionFile::Impl::GetEntryLines() {
    std::vector<std::pair<std::string, std::size_t>> lines;
    while (ParseEntry()) {
    }
    for (Entry const& entry : entries_)
        lines.emplace_back(entry.key, SectionedText::LineOf(Current(), entry));
    return lines;
}

// --- The interface ---

MultiSectionFile::MultiSectionFile(char const* path, bool /*flag1*/, bool /*flag2*/, bool /*flag3*/,
                                   char const* /*unused1*/, char const* sectionOpen,
                                   char const* sectionClose, char const* separator,
                                   char const* comment, char const* /*unused2*/)
    : mImpl(std::make_unique<Impl>(Required(path),
                                   SyntaxOf(Required(sectionOpen), Required(sectionClose),
                                            Required(separator), Required(comment)))) {}

MultiSectionFile::~MultiSectionFile() = default;

void MultiSectionFile::Restart() {
    mImpl->Restart();
}

int MultiSectionFile::GotoNextSection() {
    return mImpl->GotoNextSection() ? 1 : 0;
}

int MultiSectionFile::GotoPreviousSection() {
    return mImpl->GotoPreviousSection() ? 1 : 0;
}

int MultiSectionFile::GetSectionEntry(char const* key, char* buffer, unsigned size) {
    return mImpl->GetSectionEntry(Required(key), buffer, size) ? 1 : 0;
}

int MultiSectionFile::SetSectionEntry(char const* key, char const* value) {
    mImpl->SetSectionEntry(Required(key), Required(value));
    return 1;
}

int MultiSectionFile::AddSection(bool /*flag*/) {
    mImpl->AddSection();
    return 1;
}

int MultiSectionFile::DeleteSection() {
    mImpl->DeleteSection();
    return 1;
}

int MultiSectionFile::Save(bool /*flag*/, char const* /*unused*/) {
    mImpl->Save();
    return 1;
}

std::size_t MultiSectionFile::GetSectionLine() {
    return mImpl->GetSectionLine();
}

std::vector<std::pair<std::string, std::size_t>> MultiSectionFile::GetEntryLines() {
    return mImpl->GetEntryLines();
}

} // namespace Configuration
