/// @file
/// The sectioned file as a list of lines that every operation searches from the front: a plain
/// implementation to compare with.

#ifndef TESTS_SUPPORT_SLOWFILE_H
#define TESTS_SUPPORT_SLOWFILE_H

#include <string>
#include <vector>

class SlowFile {
  public:
    explicit SlowFile(std::string const& text) {
        for (std::size_t at = 0; at < text.size();) {
            std::size_t const end = text.find('\n', at);
            lines_.push_back(text.substr(at, end == std::string::npos ? end : end + 1 - at));
            at += lines_.back().size();
        }
        newLine_ = !lines_.empty() && EndOf(lines_[0]).find('\n') != std::string::npos
                       ? EndOf(lines_[0])
                       : "\n";
    }

    bool IsOnSection() const { return isOn_; }
    void Restart() { next_ = 0, isOn_ = false; }
    bool Next() {
        isOn_ = next_ < Lines("{").size();
        next_ += isOn_ ? 1 : 0;
        return isOn_;
    }
    bool Previous() {
        next_ -= isOn_ ? 1 : 0;
        return isOn_ = next_ > 0;
    }
    void Add() {
        if (!lines_.empty() && lines_.back().back() != '\n')
            lines_.back() =
                lines_.back().erase(lines_.back().size() - EndOf(lines_.back()).size()) + newLine_;
        lines_.push_back("{" + newLine_);
        lines_.push_back("}" + newLine_);
        next_ = Lines("{").size();
        isOn_ = true;
    }

    // What follows needs a current section.

    void Delete() {
        lines_.erase(lines_.begin() + Open(), lines_.begin() + Close() + 1), --next_;
        isOn_ = false;
    }
    bool Has(std::string const& key) const { return Find(key) != Close(); }
    std::string Value(std::string const& key) const {
        return Has(key) ? Shown(lines_[Find(key)]).substr(key.size() + 1) : "";
    }
    void Set(std::string const& key, std::string const& value) {
        std::ptrdiff_t const at = Find(key);
        if (at == Close())
            lines_.insert(lines_.begin() + at, key + "=" + value + EndOf(lines_[Open()]));
        else
            lines_[at] = lines_[at].substr(0, lines_[at].find('=') + 1) + value + EndOf(lines_[at]);
    }

    std::string Text() const {
        std::string text;
        for (std::string const& line : lines_)
            text += line;
        return text;
    }

  private:
    static std::string EndOf(std::string const& line) {
        std::size_t const end = line.find_last_not_of("\r\n");
        return line.substr(end == std::string::npos ? 0 : end + 1);
    }
    static std::string Shown(std::string const& line) {
        std::size_t const begin = line.find_first_not_of(" \t");
        return begin == std::string::npos
                   ? ""
                   : line.substr(begin, line.size() - EndOf(line).size() - begin);
    }
    std::vector<std::ptrdiff_t> Lines(std::string const& mark) const {
        std::vector<std::ptrdiff_t> found;
        for (std::size_t at = 0; at < lines_.size(); ++at)
            if (Shown(lines_[at]).substr(0, 1) == mark)
                found.push_back(static_cast<std::ptrdiff_t>(at));
        return found;
    }
    std::ptrdiff_t Open() const { return Lines("{")[next_ - 1]; }
    std::ptrdiff_t Close() const { return Lines("}")[next_ - 1]; }
    /// The line of the entry, or the one that closes the section.
    std::ptrdiff_t Find(std::string const& key) const {
        std::ptrdiff_t at = Open() + 1;
        while (at < Close() && Shown(lines_[at]).substr(0, key.size() + 1) != key + "=")
            ++at;
        return at;
    }

    std::vector<std::string> lines_;
    std::string newLine_;
    std::size_t next_ = 0;
    bool isOn_ = false;
};

#endif
