/// @file
/// Fuzzes the sectioned file: parse, edit, save, parse again, all along a naive model of the file.
///
/// An input is a line of commands, separated by ";", and behind it the text of the file:
///     n p r      cursor to the next section, the previous one, before the first one
///     a d        add a section at the end, delete the current one
///     key|value  set an entry of the current section; "~" stands for a line break

#include "Fuzzing.h"

#include <sstream>
#include <utility>
#include <vector>

#include "support/RuleFile.h"
#include "support/TempDir.h"

using fuzzing::Require;

namespace {

/// The file as a list of lines with their ends, searched anew for everything.
class Lines {
  public:
    explicit Lines(std::string text) {
        while (!text.empty()) {
            std::size_t const length = std::min(text.find('\n'), text.size() - 1) + 1;
            lines_.push_back(text.substr(0, length));
            text.erase(0, length);
        }
    }

    bool IsWellFormed() const {
        bool isOpen = false;
        for (std::string const& line : lines_) {
            bool const isMarker = Is(line, isOpen ? "}" : "{");
            bool const isEntry = isOpen && !Is(line, "{") && Content(line).find('=') + 1 > 1;
            if (line.find('\0') != std::string::npos ||
                !(isMarker || isEntry || !Counts(Content(line))))
                return false;
            isOpen = isOpen != isMarker;
        }
        return !isOpen;
    }

    std::string Text() const {
        std::string text;
        for (std::string const& line : lines_)
            text += line;
        return text;
    }

    /// The lines that open and close each section.
    std::vector<std::pair<std::size_t, std::size_t>> Sections() const {
        std::vector<std::pair<std::size_t, std::size_t>> sections;
        for (std::size_t at = 0; at < lines_.size(); ++at)
            if (Is(lines_[at], "{"))
                sections.emplace_back(at, at);
            else if (Is(lines_[at], "}"))
                sections.back().second = at;
        return sections;
    }

    /// Returns the line of the first entry of key, or the line that closes the section.
    std::size_t Find(std::size_t section, std::string const& key) const {
        auto const [open, close] = Sections()[section];
        std::size_t at = open + 1;
        while (at < close && (!Counts(Content(lines_[at])) || Key(at) != key))
            ++at;
        return at;
    }

    bool Has(std::size_t section, std::string const& key) const {
        return Find(section, key) != Sections()[section].second;
    }

    std::string Value(std::size_t section, std::string const& key) const {
        std::string const content = Content(lines_[Find(section, key)]);
        return Has(section, key) ? content.substr(content.find('=') + 1) : "";
    }

    /// The keys of all sections, and one that is in none.
    std::vector<std::string> Keys() const {
        std::vector<std::string> keys{"none"};
        for (auto const& [open, close] : Sections()) {
            for (std::size_t at = open + 1; at < close; ++at)
                if (Counts(Content(lines_[at])))
                    keys.push_back(Key(at));
        }
        return keys;
    }

    void Set(std::size_t section, std::string const& key, std::string const& value) {
        std::size_t const at = Find(section, key);
        if (Has(section, key)) {
            std::string& line = lines_[at];
            line = line.substr(0, line.find('=') + 1) + value + End(line);
        } else {
            Insert(at, key + '=' + value + End(lines_[Sections()[section].first]));
        }
    }

    void Add() {
        bool const hasEnd = !lines_.empty() && lines_[0].back() == '\n';
        std::string const end = hasEnd ? End(lines_[0]) : "\n";
        if (!lines_.empty() && lines_.back().back() != '\n') {
            std::string& last = lines_.back();
            last = last.substr(0, last.size() - End(last).size()) + end;
        }
        lines_.push_back("{" + end);
        lines_.push_back("}" + end);
    }

    void Delete(std::size_t section) {
        auto const [open, close] = Sections()[section];
        auto const at = [this](std::size_t n) {
            return lines_.begin() + static_cast<std::ptrdiff_t>(n);
        };
        lines_.erase(at(open), at(close + 1));
    }

  private:
    static std::string End(std::string const& line) {
        bool const isLf = !line.empty() && line.back() == '\n';
        std::size_t const size = line.size() - (isLf ? 1 : 0);
        bool const isCr = size > 0 && line[size - 1] == '\r';
        return line.substr(size - (isCr ? 1 : 0));
    }

    static std::string Content(std::string const& line) {
        std::string const text = line.substr(0, line.size() - End(line).size());
        return text.substr(std::min(text.find_first_not_of(" \t"), text.size()));
    }

    static bool Counts(std::string const& content) { return !content.empty() && content[0] != '#'; }

    static bool Is(std::string const& line, std::string const& marker) {
        std::string const content = Content(line);
        return content.substr(0, content.find_last_not_of(" \t") + 1) == marker;
    }

    std::string Key(std::size_t line) const {
        std::string const content = Content(lines_[line]);
        return content.substr(0, content.find('='));
    }

    void Insert(std::size_t at, std::string const& line) {
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), line);
    }

    std::vector<std::string> lines_;
};

/// Compares the current section, every key of the file asked for, with buffers that just fit.
void CompareSection(RuleFile& file, Lines const& lines, std::size_t section) {
    for (std::string const& key : lines.Keys()) {
        std::string const value = lines.Value(section, key);
        std::vector<char> buffer(value.size() + 1, 'x');
        auto const size = static_cast<unsigned>(buffer.size());
        int const found = file.GetSectionEntry(key.c_str(), buffer.data(), size);
        Require((found != 0) == lines.Has(section, key), "the section has the key", key);
        Require(std::string(buffer.data()) == value, "the value", key);
        try {
            file.GetSectionEntry(key.c_str(), buffer.data(), size - 1);
            Require(false, "a value that does not fit is no value", key);
        } catch (std::exception const&) {
        }
    }
}

void CompareAll(RuleFile& file, Lines const& lines) {
    file.Restart();
    for (std::size_t section = 0; section < lines.Sections().size(); ++section) {
        Require(file.GotoNextSection() != 0, "there is one more section");
        CompareSection(file, lines, section);
    }
    Require(file.GotoNextSection() == 0, "there is no other section");
}

/// The edits of one input, made to the file and to the model.
class Editing {
  public:
    Editing(RuleFile& file, Lines& lines) : file_(file), lines_(lines) {}

    void Run(std::string const& command) {
        try {
            Require(Do(command) == isPossible_, "the result of the command", command);
        } catch (std::exception const& failure) {
            Require(!isPossible_, "the command can be done", command + ": " + failure.what());
        }
        if (isOnSection_)
            CompareSection(file_, lines_, next_ - 1);
    }

  private:
    /// Sets isPossible_ before the file is asked to do it.
    bool Do(std::string const& command) {
        if (command == "n") {
            isPossible_ = next_ < lines_.Sections().size();
            next_ += isPossible_ ? 1 : 0;
            isOnSection_ = isPossible_;
            return file_.GotoNextSection() != 0;
        }
        if (command == "p") {
            next_ -= isOnSection_ ? 1 : 0;
            isOnSection_ = isPossible_ = next_ > 0;
            return file_.GotoPreviousSection() != 0;
        }
        isPossible_ = true;
        if (command == "a") {
            lines_.Add();
            next_ = lines_.Sections().size();
            isOnSection_ = true;
            return file_.AddSection(false) != 0;
        }
        std::size_t const bar = command.find('|');
        if (command == "d" || bar != std::string::npos) {
            isPossible_ = isOnSection_;
            return command == "d" ? Delete() : Set(command.substr(0, bar), command.substr(bar + 1));
        }
        next_ = 0;
        isOnSection_ = false;
        file_.Restart();
        return true;
    }

    bool Delete() {
        if (isPossible_) {
            lines_.Delete(--next_);
            isOnSection_ = false;
        }
        return file_.DeleteSection() != 0;
    }

    bool Set(std::string key, std::string value) {
        std::replace(key.begin(), key.end(), '~', '\n');
        std::replace(value.begin(), value.end(), '~', '\n');
        key = key.c_str(); // Up to a NUL, where a C string ends.
        value = value.c_str();
        isPossible_ = isPossible_ && !key.empty() && std::string("# \t").find(key[0]) > 2 &&
                      key.find_first_of("=\r\n") == std::string::npos &&
                      value.find_first_of("\r\n") == std::string::npos;
        if (isPossible_)
            lines_.Set(next_ - 1, key, value);
        return file_.SetSectionEntry(key.c_str(), value.c_str()) != 0;
    }

    RuleFile& file_;
    Lines& lines_;
    std::size_t next_ = 0;     // The section that comes next,
    bool isOnSection_ = false; // and whether the cursor is on the one before.
    bool isPossible_ = true;
};

void EditAndSave(std::string const& path, std::string const& commands, Lines& lines) {
    RuleFile file(path);
    CompareAll(file, lines);
    file.Restart();
    Editing editing(file, lines);
    std::istringstream input(commands);
    for (std::string command; std::getline(input, command, ';');)
        editing.Run(command);
    file.Save(true, nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    static TempDir const directory;
    auto const [commands, text] = fuzzing::Texts(data, size);
    directory.Write("file", text);
    Lines lines(text);
    bool const isWellFormed = lines.IsWellFormed();
    try {
        EditAndSave(directory.Path("file"), commands, lines);
        Require(isWellFormed, "what is malformed is not taken", text);
    } catch (std::exception const& failure) {
        Require(!isWellFormed, "what is well formed is taken", failure.what());
    }
    std::string const saved = directory.Read("file");
    Require(saved == (isWellFormed ? lines.Text() : text), "the file on disk", saved);
    if (isWellFormed) {
        RuleFile again(directory.Path("file"));
        CompareAll(again, lines);
    }
    return 0;
}
