// Reads files for import, and finds which of their rules a rule file has already.

#include "administration/exchange/ImportedRules.h"

#include <limits>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "administration/edit/Origins.h"
#include "administration/inspection/ReadRules.h"
#include "common/Error.h"
#include "common/MemoryFile.h"
#include "model/RuleSides.h"
#include "text/Encoding.h"
#include "text/Input.h"

namespace CallRecordingUtils {
namespace {

/// The first line of text that is neither blank nor a comment of a rule file, without blanks around
/// it; text gets what follows.
std::string_view NextLine(std::string_view& text) {
    while (!text.empty()) {
        std::size_t const end = std::min(text.find('\n'), text.size() - 1) + 1;
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end);
        std::size_t const first = line.find_first_not_of(" \t\r\n");
        if (first == std::string_view::npos || line[first] == '#')
            continue;
        line.remove_prefix(first);
        return line.substr(0, line.find_last_not_of(" \t\r\n") + 1);
    }
    return {};
}

/// A line "{" begins a section of a rule file, and as well an object of JSON, where a name in
/// quotes follows.
ImportFormat FormatOf(std::string_view text) {
    std::size_t const first = text.find_first_not_of(" \t\r\n");
    std::string_view rest = text;
    std::string_view const line = NextLine(rest);
    std::string_view const next = NextLine(rest);
    bool const isComment = first != std::string_view::npos && text[first] == '#';
    if (line == "{" ? next.substr(0, 1) != "\"" : isComment && line.empty())
        return ImportFormat::RuleFile;
    return line.substr(0, 1) == "[" || line.substr(0, 1) == "{" ? ImportFormat::Json
                                                                : ImportFormat::Csv;
}

RuleRecords ReadRecords(ImportFile const& file, std::string const& name,
                        RenamedColumns const& renamed) {
    switch (file.format) {
    case ImportFormat::Json: return ReadJsonRules(file.text);
    case ImportFormat::RuleFile: return ReadRuleFileRules(file.text, name);
    case ImportFormat::Csv: break;
    }
    return ReadCsvRules(file.text, renamed);
}

/// Of a rule file the rules count as the library reads them; entries that say something else are
/// faults, which "check" explains.
void TakeAsRead(RuleList const& read, std::vector<ImportedRule>& imported) {
    for (std::size_t i = 0; i < imported.size(); ++i) {
        ImportedRule& rule = imported[i];
        if (rule.faults.empty() && !AreEqual(rule.rule, read[i]))
            rule.faults.push_back({rule.line, "an entry is missing or has a value that reads as "
                                              "something else; \"callrecordingctl check\" of this "
                                              "file says which"});
        rule.rule = read[i];
    }
}

/// Blames texts that are not UTF-8, where that is not for a few odd bytes.
void BlameLatin1(RuleRecord const& record, ImportedRule& rule) {
    for (auto const& [member, value] : record.values)
        if (!IsUtf8(value.text))
            rule.faults.push_back(
                {value.line, fmt::format("{}: \"{}\" is not UTF-8; the file seems to be in Latin-1 "
                                         "(ISO 8859-1, Windows-1252): save it as UTF-8",
                                         value.name, FromLatin1(value.text))});
}

/// The text as UTF-8 if it begins as UTF-16 does, else as it is.
std::string InUtf8(std::string const& text, std::string const& name) {
    if (text.compare(0, 2, "\xFF\xFE") != 0 && text.compare(0, 2, "\xFE\xFF") != 0)
        return text;
    MemoryFile const file(text);
    Input input(file.Path());
    std::string converted;
    std::vector<char> block(65536);
    try {
        while (std::size_t const size = input.Read(block.data(), block.size()))
            converted.append(block.data(), size);
    } catch (std::runtime_error const& error) {
        throw Error(Error::Kind::Unreadable, fmt::format("{}: {}", name, error.what()));
    }
    return converted;
}

} // namespace

ImportFile ReadImport(std::string const& given, std::string const& name,
                      RenamedColumns const& renamed) {
    std::string const text = InUtf8(given, name);
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    bool const isMarked = text.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0;
    std::string const unmarked = isMarked ? text.substr(kByteOrderMark.size()) : text;
    ImportFormat const format = FormatOf(unmarked);
    // Of a rule file nothing is passed over, as its bytes are kept; with a mark it is malformed.
    ImportFile file{format == ImportFormat::RuleFile ? text : unmarked, format};
    RuleRecords read = ReadRecords(file, name, renamed);
    file.faults = std::move(read.faults);
    file.notes = std::move(read.notes);
    file.records = std::move(read.records);
    bool const isLatin1 = file.format == ImportFormat::Csv && LooksLikeLatin1(file.text);
    for (RuleRecord const& record : file.records) {
        file.rules.push_back(RuleOf(record));
        if (isLatin1)
            BlameLatin1(record, file.rules.back());
    }
    if (file.format == ImportFormat::RuleFile)
        TakeAsRead(RulesOf(file.text, name), file.rules);
    return file;
}

void KeepPresent(RuleList const& before, ImportFile& file) {
    auto const keyOf = [&file](Rule const& rule) {
        if (file.format == ImportFormat::RuleFile)
            return AllFields(rule);
        return (file.format == ImportFormat::Json ? JsonRecordOf(rule) : CsvRecordOf(rule))
            .AllFields();
    };
    std::unordered_set<std::string> all;
    for (Rule const& rule : before)
        all.insert(AllFields(rule));
    // Rules with the same key are found in their order.
    std::unordered_map<std::string, std::vector<Rule const*>> present;
    for (auto rule = before.rbegin(); rule != before.rend(); ++rule)
        present[keyOf(*rule)].push_back(&*rule);
    for (std::size_t i = 0; i < file.rules.size(); ++i) {
        ImportedRule& imported = file.rules[i];
        auto const found =
            present.find(file.format == ImportFormat::RuleFile ? AllFields(imported.rule)
                                                               : file.records[i].AllFields());
        if (found == present.end() || found->second.empty()) {
            imported.isPresent = all.count(AllFields(imported.rule)) > 0;
            continue;
        }
        imported = {*found->second.back(), true, true, imported.line};
        found->second.pop_back();
    }
}

namespace {

std::string AllButId(Rule rule) {
    rule.callrecordingrule_id = 0;
    return AllFields(rule);
}

std::string AllButIdAndState(Rule rule) {
    rule.recording_rule_state = RULE_ENABLED;
    return AllButId(std::move(rule));
}

/// Gives out identifiers to rules that have none.
class Ids {
  public:
    Ids(RuleList const& before, std::vector<ImportedRule> const& imported, bool replaces) {
        std::set<std::int32_t> taken;
        for (ImportedRule const& rule : imported)
            if (replaces && rule.hasId)
                Pass(*taken.insert(rule.rule.callrecordingrule_id).first);
        for (Rule const& rule : before) {
            Pass(rule.callrecordingrule_id);
            if (replaces && taken.count(rule.callrecordingrule_id) == 0)
                free_.emplace(AllButId(rule), rule.callrecordingrule_id);
        }
    }

    std::int32_t For(Rule const& rule) {
        auto const found = free_.find(AllButId(rule));
        if (found != free_.end()) {
            std::int32_t const id = found->second;
            free_.erase(found);
            return id;
        }
        if (next_ > std::numeric_limits<std::int32_t>::max())
            throw Error(Error::Kind::Unsaved,
                        "no identifier is left after 2147483647; \"callrecordingctl renumber "
                        "--all\" makes room");
        return static_cast<std::int32_t>(next_++);
    }

  private:
    void Pass(std::int32_t id) { next_ = std::max(next_, std::int64_t{id} + 1); }

    std::unordered_multimap<std::string, std::int32_t> free_; // Of rules before.
    std::int64_t next_ = 0;
};

} // namespace

void FindSame(RuleList const& before, ImportFile& file) {
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t place = 0; place < before.size(); ++place)
        places.emplace(AllButIdAndState(before[place]), place);
    for (ImportedRule& imported : file.rules)
        if (auto const found = places.find(AllButIdAndState(imported.rule));
            found != places.end() && imported.faults.empty())
            imported.same = found->second;
}

RuleList RulesAfter(RuleList const& before, std::vector<ImportedRule> const& imported,
                    bool replaces) {
    Ids ids(before, imported, replaces);
    RuleList rules;
    if (!replaces)
        rules = before;
    for (ImportedRule const& from : imported) {
        rules.push_back(from.rule);
        if (!replaces || !from.hasId)
            rules.back().callrecordingrule_id = ids.For(from.rule);
    }
    return rules;
}

} // namespace CallRecordingUtils
