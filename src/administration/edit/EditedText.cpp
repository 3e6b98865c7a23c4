// Cuts the text of a rule file into the lines of its rules and puts them together in another order.

#include "administration/edit/EditedText.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <host/SectionedText.h>

#include "database/RuleKeys.h"
#include "database/RuleSection.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

using HostPlatform::Section;
using HostPlatform::SectionedText;

HostPlatform::SectionSyntax RuleFileSyntax() {
    return HostPlatform::SyntaxOf("{\n", "}\n", "=", "#");
}

/// The first line of text with its line end.
std::string_view FirstLine(std::string_view text) {
    std::size_t const end = text.find('\n');
    return end == std::string_view::npos ? text : text.substr(0, end + 1);
}

bool IsBlank(std::string_view line) {
    return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

std::string LineEndOf(std::string_view text) {
    std::string_view const line = FirstLine(text);
    bool const isCrLf = line.size() >= 2 && line.substr(line.size() - 2) == "\r\n";
    return isCrLf ? "\r\n" : "\n";
}

/// Whether the last line of text lacks its line end.
bool IsLastLineOpen(std::string_view text) {
    return !text.empty() && text.back() != '\n';
}

void RemoveLineEnd(std::string& text) {
    for (char const c : {'\n', '\r'})
        if (!text.empty() && text.back() == c)
            text.pop_back();
}

/// The lines of one rule. They are views of the text of the file.
struct RuleLines {
    std::string_view above;    // What belongs to the place: up to the last blank line.
    std::string_view comments; // What belongs to the rule: directly above its section.
    Section* section;
};

/// Divides what is between two sections after its last blank line.
RuleLines Divide(std::string_view between, Section& section) {
    std::size_t end = 0;
    for (std::size_t at = 0; at < between.size();) {
        std::string_view const line = FirstLine(between.substr(at));
        at += line.size();
        if (IsBlank(line))
            end = at;
    }
    return {between.substr(0, end), between.substr(end), &section};
}

/// Removes size bytes from the front of text and returns them.
std::string_view Take(std::string_view& text, std::size_t size) {
    std::string_view const taken = text.substr(0, size);
    text.remove_prefix(taken.size());
    return taken;
}

/// Cuts text into the lines of its rules. rest gets what follows the last one.
std::vector<RuleLines> Cut(std::string_view text, SectionedText& sections, std::string_view& rest) {
    std::vector<RuleLines> cut;
    std::size_t line = 1; // The number of the line with which rest begins.
    rest = text;
    for (auto section = sections.Begin(); section != sections.End(); ++section) {
        std::size_t between = 0;
        for (; line < section->line; ++line)
            between += FirstLine(rest.substr(between)).size();
        cut.push_back(Divide(Take(rest, between), *section));
        std::string_view const body = Take(rest, section->body.Text().size());
        line += static_cast<std::size_t>(std::count(body.begin(), body.end(), '\n'));
    }
    return cut;
}

void SetEntry(SectionedText const& text, Section& section, SectionEntry const& entry) {
    char const* const key = kRuleKeys[entry.key];
    if (entry.text.find('\0') != std::string::npos)
        throw std::invalid_argument("the new value of \"" + std::string(key) +
                                    "\" has a NUL in it");
    text.RequireStorable(key, entry.text);
    std::string_view lines = SectionedText::LinesOf(section);
    while (auto const found = text.TakeEntry(lines))
        if (found->key == key)
            return text.SetValue(section, *found, entry.text);
    text.AddEntry(section, key, entry.text);
}

/// Has section hold the fields of rule where they differ from those of before; without before, all.
void Write(SectionedText const& text, Section& section, Rule const* before,
           EditedRule const& edited) {
    if (before != nullptr && !edited.writesId && AreEqual(*before, edited.rule))
        return;
    std::vector<SectionEntry> const wanted = RuleEntries(edited.rule);
    std::vector<SectionEntry> const present =
        before != nullptr ? RuleEntries(*before) : std::vector<SectionEntry>();
    for (std::size_t i = 0; i < wanted.size(); ++i)
        if (present.empty() || present[i].text != wanted[i].text ||
            (edited.writesId && wanted[i].key == KEY_CALLRECORDINGRULE_ID))
            SetEntry(text, section, wanted[i]);
}

/// Puts lines together, and ends a line that others follow.
class Composer {
  public:
    explicit Composer(std::string lineEnd) : lineEnd_(std::move(lineEnd)) {}

    void Add(std::string_view lines) {
        if (lines.empty())
            return;
        if (IsLastLineOpen(text_)) {
            RemoveLineEnd(text_);
            text_ += lineEnd_;
        }
        text_ += lines;
    }

    std::string& Text() { return text_; }

  private:
    std::string lineEnd_;
    std::string text_;
};

/// What stays at its place: above the first rule that stays, above the second, ..., and after the
/// last one.
std::vector<std::string> LinesOfPlaces(std::vector<RuleLines> const& cut, std::string_view rest,
                                       std::vector<EditedRule> const& rules,
                                       std::string const& lineEnd) {
    std::vector<bool> stays(cut.size(), false);
    for (EditedRule const& rule : rules)
        if (rule.origin)
            stays[*rule.origin] = true;
    std::vector<std::string> places;
    Composer lines(lineEnd);
    for (std::size_t i = 0; i < cut.size(); ++i) {
        lines.Add(cut[i].above);
        if (stays[i])
            places.push_back(std::exchange(lines.Text(), ""));
        else
            lines.Add(cut[i].comments);
    }
    lines.Add(rest);
    places.push_back(lines.Text());
    return places;
}

} // namespace

std::vector<std::string> SectionsOf(std::string const& name, std::string const& text) {
    SectionedText sections(name, RuleFileSyntax(), text);
    std::vector<std::string> found;
    for (auto section = sections.Begin(); section != sections.End(); ++section)
        found.emplace_back(section->body.Text());
    return found;
}

std::string EditedText(std::string const& path, std::string const& text, RuleList const& before,
                       std::vector<EditedRule> const& rules) {
    std::string const lineEnd = LineEndOf(text);
    SectionedText sections(path, RuleFileSyntax(), text);
    std::string_view rest;
    std::vector<RuleLines> const cut = Cut(text, sections, rest);
    std::vector<std::string> const places = LinesOfPlaces(cut, rest, rules, lineEnd);
    Composer result(lineEnd);
    std::size_t written = 0; // How many of places.
    std::size_t kept = 0;    // How many rules that stay.
    for (EditedRule const& rule : rules) {
        if (written == kept)
            result.Add(places[written++]);
        Section added;
        added.body = decltype(added.body)(rule.section.empty() ? "{" + lineEnd + "}" + lineEnd
                                                               : rule.section);
        Section& section = rule.origin ? *cut[*rule.origin].section : added;
        if (rule.origin) {
            result.Add(cut[*rule.origin].comments);
            ++kept;
        }
        Write(sections, section,
              rule.origin             ? &before[*rule.origin]
              : !rule.section.empty() ? &rule.rule
                                      : nullptr,
              rule);
        result.Add(section.body.Text());
    }
    if (written == kept)
        result.Add(places[written]);
    bool const endsInNewRule = !rules.empty() && !rules.back().origin;
    if (IsLastLineOpen(text) && !endsInNewRule && !IsLastLineOpen(result.Text()))
        RemoveLineEnd(result.Text());
    return result.Text();
}

} // namespace CallRecordingUtils
