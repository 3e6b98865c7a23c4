// Edits of rule files by the client: random edits against a plain model, byte for byte; rules
// through JSON and tables and back; and what a dry run says against what the edit then does.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include "administration/edit/Origins.h"
#include "administration/edit/RuleEdit.h"
#include "administration/exchange/CsvRules.h"
#include "administration/exchange/ImportedRules.h"
#include "administration/exchange/RuleBlocks.h"
#include "administration/inspection/ReadRules.h"
#include "administration/selection/RuleSelection.h"
#include "database/RuleKeys.h"
#include "matching/PatternMatcher.h"
#include "model/RuleSides.h"
#include "support/TempDir.h"
#include "json/Bytes.h"
#include "json/RuleJson.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    std::size_t Below(std::size_t end) { return engine_() % end; }
    bool OneIn(std::size_t n) { return Below(n) == 0; }
    template <typename T, std::size_t N>
    T const& Of(T const (&choices)[N]) {
        return choices[Below(N)];
    }

  private:
    std::mt19937 engine_;
};

/// A line of a section: an entry, or with an empty key anything else.
struct Line {
    std::string key, text;
};

struct ModelRule {
    Rule rule;
    std::string comments;
    std::vector<Line> lines;
};

std::vector<Line> EntriesOf(Rule const& rule) {
    return {{"callrecordingrule_id", std::to_string(rule.callrecordingrule_id)},
            {"caller_pattern", rule.caller_pattern},
            {"caller_call_type", std::to_string(rule.caller_call_type)},
            {"called_pattern", rule.called_pattern},
            {"called_call_type", std::to_string(rule.called_call_type)},
            {"call_recording_type", std::to_string(rule.call_recording_type)},
            {"record_to", rule.record_to},
            {"recording_duration", rule.recording_duration},
            {"description", rule.description},
            {"recording_rule_state", rule.recording_rule_state == RULE_ENABLED ? "1" : "0"}};
}

std::size_t AfterLastBlankLine(std::string const& text) {
    std::size_t end = 0;
    for (std::size_t begin = 0; begin < text.size();) {
        std::size_t const next = text.find('\n', begin) + 1;
        if (text.find_first_not_of(" \n", begin) >= next)
            end = next;
        begin = next;
    }
    return end;
}

/// A rule file as documented: lines that belong to rules, and lines that belong to places. Its line
/// ends are "\n" until the text is asked for.
struct Model {
    std::vector<std::string> above; // One more than rules: the last is the end of the file.
    std::vector<ModelRule> rules;
    bool isCrLf = false;
    bool isOpen = false; // The last line has no end.

    std::string Text() const {
        std::string text;
        for (std::size_t i = 0; i <= rules.size(); ++i) {
            text += above[i];
            if (i == rules.size())
                break;
            text += rules[i].comments + "{\n";
            for (auto const& [key, value] : rules[i].lines)
                text += key.empty() ? value + "\n" : key + "=" + value + "\n";
            text += "}\n";
        }
        if (isOpen && !text.empty())
            text.pop_back();
        for (std::size_t at = 0; isCrLf && (at = text.find('\n', at)) != std::string::npos; at += 2)
            text.insert(at, 1, '\r');
        return text;
    }

    void Set(std::size_t place, Rule const& rule, bool writesId = false) {
        std::vector<Line> const old = EntriesOf(rules[place].rule), wanted = EntriesOf(rule);
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            if (old[i].text == wanted[i].text && !(writesId && i == 0))
                continue;
            auto& lines = rules[place].lines;
            auto const line = std::find_if(lines.begin(), lines.end(),
                                           [&](Line const& l) { return l.key == wanted[i].key; });
            if (line != lines.end())
                line->text = wanted[i].text;
            else
                lines.push_back(wanted[i]);
        }
        rules[place].rule = rule;
    }

    void Delete(std::size_t place) {
        above[place] += rules[place].comments + above[place + 1];
        above.erase(above.begin() + static_cast<std::ptrdiff_t>(place) + 1);
        rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(place));
    }

    void Insert(std::size_t place, Rule const& rule) {
        above.insert(above.begin() + static_cast<std::ptrdiff_t>(place) + 1, "");
        rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(place),
                     {rule, "", EntriesOf(rule)});
        isOpen = isOpen && place + 1 < rules.size();
    }

    void Move(std::size_t from, std::size_t to) {
        std::vector<std::int32_t> ids;
        for (ModelRule const& rule : rules)
            ids.push_back(rule.rule.callrecordingrule_id);
        ModelRule const moved = rules[from];
        rules.erase(rules.begin() + static_cast<std::ptrdiff_t>(from));
        rules.insert(rules.begin() + static_cast<std::ptrdiff_t>(to), moved);
        for (std::size_t i = 0; i < ids.size(); ++i) {
            Rule rule = rules[i].rule;
            rule.callrecordingrule_id = ids[i];
            Set(i, rule);
        }
    }

    /// What is directly above a rule, as after a deletion, is its comment from now on. A file
    /// without line ends does not show which it would have.
    void Settle() {
        isCrLf = isCrLf && Text().find('\n') != std::string::npos;
        for (std::size_t i = 0; i < rules.size(); ++i) {
            std::size_t const end = AfterLastBlankLine(above[i]);
            rules[i].comments = above[i].substr(end) + rules[i].comments;
            above[i].erase(end);
        }
    }

    std::int32_t NextId() const {
        std::int32_t next = 0;
        for (ModelRule const& rule : rules)
            next = std::max(next, rule.rule.callrecordingrule_id + 1);
        return next;
    }
};

constexpr char const* kPatterns[] = {"1*", "<5-1>", "a@b:[1-5]", "*", "{1-5}", "\xFC", "#", "?"};
constexpr char const* kTexts[] = {
    "", " x", "a,\"b\";", "\xEE\xBE\x80\xFF", "\xC3\xA4\xE2\x82", "#=", "\t", "\"", "end "};

Rule RandomRule(Random& random, std::int32_t id) {
    Rule rule;
    rule.callrecordingrule_id = id;
    rule.caller_pattern = random.Of(kPatterns);
    rule.called_pattern = random.Of(kPatterns);
    rule.caller_call_type = static_cast<CallType>(random.Below(4));
    rule.called_call_type = static_cast<CallType>(random.Below(4));
    rule.call_recording_type = static_cast<CallRecordingTypes>(random.Below(2));
    rule.record_to = random.Of(kTexts);
    rule.recording_duration = random.Of(kTexts);
    rule.description = std::to_string(id) + random.Of(kTexts);
    rule.recording_rule_state = random.OneIn(2) ? RULE_ENABLED : RULE_DISABLED;
    return rule;
}

/// The section of rule as a hand may have written it.
ModelRule OddRule(Random& random, std::int32_t id) {
    ModelRule made{RandomRule(random, id), random.Of({"", "", "# c\n", " # d\n# e\n"}), {}};
    made.lines = EntriesOf(made.rule);
    std::shuffle(made.lines.begin(), made.lines.end(), std::mt19937(id));
    for (Line& line : made.lines) {
        if (line.key == "callrecordingrule_id" && random.OneIn(3))
            line.text = "0" + line.text; // Reads as the same.
        if (line.text == "3" && line.key.find("call_type") != std::string::npos)
            line.text = "sip?";
    }
    made.lines.insert(made.lines.begin() + random.Below(5),
                      {"", random.Of({"# in", "", "more=1"})});
    Line const again = made.lines[random.Below(3)];
    if (random.OneIn(3))
        made.lines.push_back(again); // The first of them counts.
    else if (random.OneIn(3)) {
        made.lines.erase(std::find_if(made.lines.begin(), made.lines.end(),
                                      [](Line const& line) { return line.key == "description"; }));
        made.rule.description = "";
    }
    return made;
}

Model OddFile(Random& random) {
    Model model;
    auto const above = [&] { return random.Of({"", "\n", "# head\n\n", "  \n# x\n\n", ""}); };
    std::size_t const count = random.Below(6);
    for (std::size_t i = 0; i < count; ++i) {
        model.above.emplace_back(above());
        model.rules.push_back(OddRule(random, static_cast<std::int32_t>(3 * i + random.Below(2))));
    }
    model.above.emplace_back(random.Of({"", "# end\n", "\n# end\n"}));
    model.isCrLf = random.OneIn(3);
    model.isOpen = random.OneIn(3);
    model.Settle();
    return model;
}

/// Makes one random change to both.
void Change(Random& random, RuleEdit& edit, Model& model) {
    std::size_t const count = model.rules.size();
    std::size_t const place = count > 0 ? random.Below(count) : 0;
    std::size_t const other = count > 0 ? random.Below(count) : 0;
    std::size_t const kind = count > 0 ? random.Below(6) : 5;
    Rule rule = count > 0 ? model.rules[place].rule : Rule();
    if (kind == 0) {
        rule.recording_rule_state = random.OneIn(2) ? RULE_ENABLED : RULE_DISABLED;
        edit.SetState(place, rule.recording_rule_state == RULE_ENABLED);
        model.Set(place, rule);
    } else if (kind == 1) {
        rule = RandomRule(random, rule.callrecordingrule_id);
        edit.Set(place, rule);
        model.Set(place, rule);
    } else if (kind == 2) {
        rule.callrecordingrule_id = model.NextId();
        edit.SetId(place, rule.callrecordingrule_id);
        model.Set(place, rule, true);
    } else if (kind == 3) {
        edit.Delete(place);
        model.Delete(place);
    } else if (kind == 4) {
        edit.Move(place, other);
        model.Move(place, other);
    } else {
        rule = RandomRule(random, model.NextId());
        std::size_t const last = edit.Append(rule);
        model.Insert(last, rule);
    }
}

void ExpectRules(RuleList const& rules, Model const& model) {
    ASSERT_EQ(rules.size(), model.rules.size());
    for (std::size_t i = 0; i < rules.size(); ++i)
        EXPECT_TRUE(AreEqual(rules[i], model.rules[i].rule)) << i;
}

TEST(RuleEdit, WritesWhatAPlainModelWrites) {
    TempDir const dir;
    for (unsigned seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Model model = OddFile(random);
        dir.WriteRules(model.Text());
        for (int i = 0; i < 5; ++i) {
            RuleEdit edit(dir.Path(TempDir::RULE_FILE));
            ExpectRules(edit.Before(), model);
            Change(random, edit, model);
            ExpectRules(edit.After(), model);
            ASSERT_EQ(edit.TextAfter(), model.Text());
            if (seed % 16 == 0)
                edit.Save(); // It waits for the disk.
            else
                dir.WriteRules(edit.TextAfter());
            ASSERT_EQ(dir.ReadRules(), model.Text());
            model.Settle();
        }
    }
}

// A rule of the new list has a section already, or an identifier that no other has.
TEST(RuleEdit, ReplacesRulesAndKeepsTheirLines) {
    TempDir const dir;
    for (unsigned seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        Model model = OddFile(random);
        dir.WriteRules(model.Text());
        RuleEdit edit(dir.Path(TempDir::RULE_FILE));
        for (std::size_t place = model.rules.size(); place-- > 0;)
            if (random.OneIn(4))
                model.Delete(place);
        std::vector<ModelRule> const stay = model.rules;
        std::shuffle(model.rules.begin(), model.rules.end(), std::mt19937(seed));
        for (std::size_t place = 0; place < model.rules.size(); ++place)
            if (random.OneIn(4)) {
                Rule rule = model.rules[place].rule;
                model.Set(place, RandomRule(random, rule.callrecordingrule_id));
            }
        for (std::int32_t id = 100; random.OneIn(2); ++id)
            model.Insert(random.Below(model.rules.size() + 1), RandomRule(random, id));
        RuleList rules;
        for (ModelRule const& rule : model.rules)
            rules.push_back(rule.rule);
        edit.Replace(rules);
        ASSERT_EQ(edit.TextAfter(), model.Text());
        ExpectRules(edit.After(), model);
    }
}

TEST(RuleEdit, RefusesWhatCannotBeStoredAndForeignSaves) {
    TempDir const dir;
    dir.WriteRules("# x\n{\ncallrecordingrule_id=2147483647\n}\n");
    std::string const path = dir.Path(TempDir::RULE_FILE);
    for (std::string const& text :
         {std::string("a\nb"), std::string("a\0b", 3), std::string(65536, 'x')}) {
        RuleEdit edit(path);
        Rule rule = edit.Before()[0];
        rule.description = text;
        edit.Set(0, rule);
        EXPECT_THROW(edit.After(), Error);
        EXPECT_THROW(edit.Save(), Error);
        EXPECT_THROW(edit.Append(rule), Error); // No identifier is left.
    }
    RuleEdit edit(path);
    edit.SetId(0, 7);
    dir.WriteRules("# theirs\n");
    EXPECT_THROW(edit.Save(), Error);
    EXPECT_EQ(dir.ReadRules(), "# theirs\n");
    dir.WriteRules("junk\n");
    RuleEdit mending(path);
    EXPECT_NE(mending.Malformation()->find(path + ":1: found \"junk\""), std::string::npos);
    EXPECT_THROW(mending.Before(), Error);
    EXPECT_THROW(mending.Append({}), Error);
    mending.ReplaceText("# whole\n");
    mending.Save();
    EXPECT_EQ(dir.ReadRules(), "# whole\n");
}

TEST(RuleEdit, ReportsDeletionsInOrderAndEndsALineThatLacksItsLineFeed) {
    TempDir const dir;
    dir.WriteRules("{\r\ncallrecordingrule_id=1\r\n}\r\n{\r\ncallrecordingrule_id=2\r\n}\r");
    RuleEdit edit(dir.Path(TempDir::RULE_FILE));
    edit.Append({});
    EXPECT_EQ(edit.TextAfter().find("=2\r\n}\r\n{\r\ncallrecordingrule_id=3\r\n"), 53U);
    RuleEdit deleting(dir.Path(TempDir::RULE_FILE));
    deleting.Delete(1);
    deleting.Delete(0);
    EXPECT_EQ(deleting.Changes().at(0).before->callrecordingrule_id, 1);
}

// --- Exchange ---

Rule Disabled(Rule rule) {
    rule.recording_rule_state = RULE_DISABLED;
    return rule;
}

std::string ExportText(RuleList const& rules, ImportFormat format) {
    std::string csv = CsvHeader();
    auto list = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < rules.size(); ++i) {
        csv += CsvRow(rules[i]);
        list.push_back(ToJson(rules[i], i + 1, "state"));
    }
    return format == ImportFormat::Csv ? csv : list.dump(2); // Throws if it is no UTF-8.
}

TEST(Exchange, BringsBackEveryRuleFileByteForByte) {
    TempDir const dir;
    for (unsigned seed = 0; seed < 300; ++seed) {
        Random random(seed);
        Model model = OddFile(random);
        for (ModelRule& rule : model.rules)
            if (random.OneIn(4)) {
                rule.lines.insert(rule.lines.begin(), {"caller_pattern", random.Of({"", "a\rb"})});
                rule.lines.insert(rule.lines.begin(), {"callrecordingrule_id", "-5"});
            }
        dir.WriteRules(model.Text());
        for (ImportFormat const format :
             {ImportFormat::Csv, ImportFormat::Json, ImportFormat::RuleFile}) {
            SCOPED_TRACE(std::to_string(seed) + " " + std::to_string(static_cast<int>(format)));
            RuleEdit edit(dir.Path(TempDir::RULE_FILE));
            std::string const text = format == ImportFormat::RuleFile
                                         ? edit.TextBefore()
                                         : ExportText(edit.Before(), format);
            ImportFile file = ReadImport(text, "file");
            ASSERT_TRUE(file.format == format || edit.Count() == 0);
            KeepPresent(edit.Before(), file);
            for (ImportedRule const& rule : file.rules)
                EXPECT_TRUE(rule.isPresent && rule.faults.empty());
            edit.Replace(RulesAfter(edit.Before(), file.rules, true));
            EXPECT_EQ(edit.TextAfter(), edit.TextBefore());
            FindSame(edit.Before(), file);
            for (ImportedRule const& rule : file.rules)
                EXPECT_TRUE(rule.same);
        }
    }
}

TEST(Exchange, CarriesWellFormedRulesToAnEmptyFile) {
    Random random(1);
    for (int i = 0; i < 300; ++i) {
        Rule rule = RandomRule(random, 7);
        rule.caller_pattern = rule.caller_call_type == CALL_TYPE_SIP ? "a@b:[1-5]" : "<1-9>#";
        rule.called_pattern = rule.called_call_type == CALL_TYPE_SIP ? "*@*" : "0[0,5]*";
        for (ImportFormat const format : {ImportFormat::Csv, ImportFormat::Json}) {
            ImportFile const file = ReadImport(ExportText({rule}, format), "file");
            ASSERT_EQ(file.rules.size(), 1U);
            EXPECT_TRUE(file.rules[0].faults.empty());
            EXPECT_TRUE(AreEqual(RulesAfter({}, file.rules, true).at(0), rule));
            EXPECT_EQ(RulesAfter({rule}, file.rules, false).at(1).callrecordingrule_id, 8);
        }
    }
}

TEST(Exchange, GivesEachRuleItsOwnIdentifierAndSection) {
    Rule one, other;
    one.callrecordingrule_id = other.callrecordingrule_id = 1;
    one.called_pattern = other.called_pattern = "5";
    one.caller_pattern = "{1-5}"; // Malformed, and shown as the well-formed one is.
    other.caller_pattern = "<1-5>";
    ImportFile file = ReadImport(ExportText({one, other}, ImportFormat::Csv), "file");
    KeepPresent({one, other}, file);
    EXPECT_TRUE(AreEqual(file.rules[0].rule, one) && AreEqual(file.rules[1].rule, other));
    ImportedRule const named{Disabled(other), true}, unnamed{other};
    EXPECT_EQ(RulesAfter({other}, {named, unnamed}, true)[1].callrecordingrule_id, 2);
    EXPECT_EQ(RulesAfter({other}, {unnamed}, true)[0].callrecordingrule_id, 1);
}

TEST(Exchange, TellsItsFormatsApart) {
    struct {
        char const* text;
        ImportFormat format;
    } const rows[] = {
        {"{\n}\n", ImportFormat::RuleFile},
        {"# c\n\n {\r\ncaller_pattern=1\n}\n", ImportFormat::RuleFile},
        {"{\n# in\n\"a\"=1\n}\n", ImportFormat::Json}, // No key of a rule begins so.
        {"{\n  \"caller_pattern\": \"1\"\n}\n", ImportFormat::Json},
        {"\xEF\xBB\xBF[{}]", ImportFormat::Json},
        {"[", ImportFormat::Json},
        {"from,to\n1,2\n", ImportFormat::Csv},
        {"", ImportFormat::Csv},
    };
    for (auto const& [text, format] : rows)
        EXPECT_EQ(ReadImport(text, "file").format, format) << text;
    EXPECT_THROW(ReadImport("{\n}\njunk\n", "file"), Error);
    EXPECT_THROW(ReadImport("\xEF\xBB\xBF{\n}\n", "file"), Error);
    // Values that read as something else.
    for (char const* const entry : {"caller_call_type=sip", "call_recording_type=2", "record_to=x"})
        EXPECT_FALSE(ReadImport("{\ncaller_pattern=1\ncalled_pattern=1\ncalled_call_type=0\n" +
                                    std::string(entry) + "\n}\n",
                                "file")
                         .rules.at(0)
                         .faults.empty());
}

TEST(Exchange, WritesEveryByteAsUtf8) {
    Random random(1);
    char const bytes[] = {'a',    '\xEE', '\xBE', '\xBF', '\x80',
                          '\xC3', '\xF0', '\x9F', '\xED', '\xA0'};
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (std::size_t size = random.Below(7); size > 0; --size)
            text += random.OneIn(4) ? static_cast<char>(1 + random.Below(255)) : random.Of(bytes);
        std::string const written = ToUtf8(text);
        EXPECT_NO_THROW(json(written).dump());
        EXPECT_EQ(BytesOf(written), text);
    }
    EXPECT_EQ(ToUtf8("Vertrieb \xE6\x9D\xB1\xE4\xBA\xAC"), "Vertrieb \xE6\x9D\xB1\xE4\xBA\xAC");
    EXPECT_EQ(ToUtf8("\xFC"), "\xEE\xBF\xBC");
}

// --- Selection ---

TEST(Selection, IsWhatASearchOfTheJsonFinds) {
    std::size_t found = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        Random random(seed);
        RuleList rules;
        for (std::int32_t id = 0; id < 9; ++id)
            rules.push_back(RandomRule(random, id * 3 % 10));
        RuleSelection selection;
        auto const end = [&random] { return static_cast<std::int32_t>(random.Below(4)) + 5; };
        for (std::size_t names = random.Below(3); names > 0; --names)
            selection.names.push_back({{end() - 4, random.OneIn(2)}, end()});
        RuleFilter& filter = selection.filter;
        if (random.OneIn(2))
            filter.text = random.Of({"1", "A", "b", " ", "@"});
        if (random.OneIn(3))
            filter.from = random.Of({"12", "4", "a"});
        if (random.OneIn(4))
            filter.recordTo = random.Of(kTexts);
        if (random.OneIn(2))
            filter.isEnabled = random.OneIn(2);
        std::vector<std::size_t> wanted;
        auto const has = [&filter](json const& rule, char const* member) {
            std::string text = BytesOf(rule.at(member).get<std::string>());
            std::transform(text.begin(), text.end(), text.begin(), ::tolower);
            return text.find(static_cast<char>(std::tolower(filter.text->at(0)))) !=
                   std::string::npos;
        };
        for (std::size_t place = 0; place < rules.size(); ++place) {
            json const rule = ToJson(rules[place], place + 1);
            auto const isNamed = [&](RuleRange const& range) {
                int const number =
                    rule.at(range.first.isPosition ? "position" : "callrecordingrule_id");
                return number >= range.first.number && number <= *range.last;
            };
            std::string const type = rule.at("caller_call_type_name");
            if ((selection.names.empty() ||
                 std::any_of(selection.names.begin(), selection.names.end(), isNamed)) &&
                (!filter.text || has(rule, "caller_pattern_entry") || has(rule, "record_to") ||
                 has(rule, "called_pattern_entry") || has(rule, "description")) &&
                (!filter.from || type == "any" || (type == "number" && *filter.from != "a")) &&
                (!filter.from ||
                 PatternMatcher(*filter.from, rules[place].caller_pattern).Matches()) &&
                (!filter.recordTo ||
                 BytesOf(rule.at("record_to").get<std::string>()) == *filter.recordTo) &&
                rule.at("enabled") == filter.isEnabled.value_or(rule.at("enabled")))
                wanted.push_back(place);
        }
        std::vector<std::size_t> places = Matching(rules, selection);
        std::sort(places.begin(), places.end());
        EXPECT_EQ(places, wanted) << seed;
        found += places.size();
    }
    EXPECT_GT(found, 300U);
}

// --- Blocks in an editor ---

std::string AllButId(Rule rule) {
    rule.callrecordingrule_id = 0;
    return AllFields(rule);
}

/// A block: of the rule at a place or a new one, with another destination unless that is empty.
struct PlainBlock {
    std::optional<std::size_t> place;
    std::string recordTo;

    Rule RuleIn(RuleList const& rules) const {
        Rule rule;
        rule.caller_pattern = rule.called_pattern = "*";
        rule.caller_call_type = rule.called_call_type = CALL_TYPE_ANY;
        if (place)
            rule = rules[*place];
        rule.record_to = recordTo.empty() ? rule.record_to : recordTo;
        return rule;
    }
    std::string TextIn(RuleList const& rules) const {
        if (!place)
            return "Record-To: " + recordTo + "\r\n#c\n";
        std::string const text = BlocksOf({rules, {*place}});
        std::size_t const line = text.find("record_to:");
        return recordTo.empty() ? text
                                : text.substr(0, line) + "record_to:" + recordTo +
                                      text.substr(text.find('\n', line));
    }
};

// Random changes of the text, against the list that they should make.
TEST(Blocks, ChangeWhatWasChangedInThemAndNothingElse) {
    TempDir const dir;
    for (unsigned seed = 0; seed < 600; ++seed) {
        Random random(seed);
        dir.WriteRules(OddFile(random).Text());
        RuleEdit edit(dir.Path(TempDir::RULE_FILE));
        OpenRules open{edit.Before(), {}};
        std::vector<PlainBlock> blocks;
        for (std::size_t place = 0; place < open.rules.size(); ++place)
            if (random.OneIn(2)) {
                open.places.push_back(place);
                blocks.push_back({place, ""});
            }
        int changes = static_cast<int>(random.Below(4));
        for (int change = 1; change <= changes && !blocks.empty(); ++change) {
            auto const at =
                blocks.begin() + static_cast<std::ptrdiff_t>(random.Below(blocks.size()));
            std::size_t const kind = random.Below(4);
            if (kind == 0)
                std::swap(*at, blocks[random.Below(blocks.size())]);
            else if (kind == 1)
                blocks.insert(at, {std::nullopt, std::to_string(change)});
            else if (kind == 2 && blocks.size() > 1)
                blocks.erase(at);
            else
                at->recordTo = "changed " + std::to_string(change);
        }
        std::string text;
        std::vector<std::size_t> kept;
        for (PlainBlock const& block : blocks) {
            text += "\n" + block.TextIn(open.rules);
            if (block.place)
                kept.push_back(*block.place);
        }
        std::sort(kept.begin(), kept.end());
        ReadBlocks const read = ReadRuleBlocks(text, open);
        ASSERT_TRUE(read.faults.empty()) << text << read.faults[0].message;
        Apply(edit, open, read.blocks);
        // New rules go with the rule above them, or else with the first one.
        std::map<std::size_t, std::vector<std::string>> at;
        std::size_t next = 0;
        std::size_t place = kept.empty() && !open.places.empty() ? open.places[0] : 0;
        for (PlainBlock const& block : blocks) {
            if (block.place || (next == 0 && !kept.empty()))
                place = kept[block.place ? next++ : 0];
            at[place].push_back(AllButId(block.RuleIn(open.rules)));
        }
        std::vector<std::string> wanted, got;
        for (std::size_t i = 0; i < open.rules.size(); ++i) {
            if (std::count(open.places.begin(), open.places.end(), i) == 0)
                wanted.push_back(AllButId(open.rules[i]));
            wanted.insert(wanted.end(), at[i].begin(), at[i].end());
        }
        for (Rule const& rule : edit.After())
            got.push_back(AllButId(rule));
        EXPECT_EQ(got, wanted) << seed << text;
        EXPECT_TRUE(changes > 0 || edit.TextAfter() == edit.TextBefore());
    }
}

TEST(Blocks, HaveTheirFaultsShownAboveTheirLines) {
    OpenRules open{{Rule()}, {0}};
    open.rules[0].callrecordingrule_id = 0;
    std::string const text = "#! old\nid: 0\nid: 0\nfrom: [1-\nx\n\nid: 0\n\nid: 7\nwho: 1\n";
    std::string const marked = WithFaults(text, ReadRuleBlocks(text, open).faults);
    std::string const lines = std::regex_replace(marked, std::regex("#! ?(.).*"), "!$1");
    EXPECT_EQ(lines, "id: 0\n!i\nid: 0\n!f\n! \n! \nfrom: [1-\n!e\nx\n\n!r\nid: 0\n\n!n\n"
                     "id: 7\n!t\nwho: 1\n");
}

// --- The client ---

class EditCommands : public testing::Test {
  protected:
    std::string Run(std::string const& command, std::string const& directory, int code = 0) const {
        std::string const line = "set -f; { " CALLRECORDINGCTL_PATH " " + command +
                                 " --config-dir " + directory + "; } >" + files.Path("out") +
                                 " 2>" + files.Path("err");
        int const status = std::system(line.c_str());
        EXPECT_EQ(WEXITSTATUS(status), code) << command << "\n" << files.Read("err");
        return files.Read("out");
    }

    TempDir const before, after, files;
};

constexpr char kRules[] =
    "# top\n\n{\ncallrecordingrule_id=0\ncaller_pattern=1*\ncaller_call_type=0\n"
    "called_pattern=*\ncalled_call_type=3\ncall_recording_type=0\n"
    "record_to=a\nrecording_rule_state=1\n}\n"
    "# two\n{\ncallrecordingrule_id=1\ncaller_pattern=*\ncaller_call_type=3\n"
    "called_pattern=1*\ncalled_call_type=0\ncall_recording_type=0\n"
    "record_to=b\nrecording_rule_state=1\n}\n"
    "{\ncallrecordingrule_id=2\ncaller_pattern=[1,2]?\ncaller_call_type=0\n"
    "called_pattern=<3-7>\ncalled_call_type=0\ncall_recording_type=1\n"
    "record_to=c\nrecording_rule_state=0\n}\n";

// The dry run of every command, what the edit then changes, diff of the two files, and a replay.
TEST_F(EditCommands, DoWhatTheirDryRunsSay) {
    Random random(3);
    std::string calls = "src;dst\nonly one field\n";
    for (int i = 0; i < 200; ++i)
        calls += std::to_string(random.Below(30)) + ";" + std::to_string(random.Below(30)) + "\n";
    files.Write("calls.csv", calls);
    files.Write("odd.csv", std::regex_replace(calls, std::regex("src;dst"), "x;y"));
    files.Write("rules.csv", "from,to,record_to\n2*,,x\n{3-5},1,y\n");
    std::string const whole = "# other\n{\ncallrecordingrule_id=4\ncaller_pattern=2*\n"
                              "caller_call_type=0\ncalled_pattern=*\ncalled_call_type=3\n"
                              "call_recording_type=0\nmore=x\nrecording_rule_state=1\n}\n";
    files.Write("rules", whole);
    std::string const csv = files.Path("rules.csv");
    std::string const commands[] = {"add --from 2* --at 1 --record-to z --twin",
                                    "add --from 9",
                                    "modify 0 --from {1-2}* --twin",
                                    "modify '#3' --enabled",
                                    "delete 0 --twin",
                                    "delete '#2' '#3'",
                                    "move --record-to-is c --to 1",
                                    "modify 0-1 --record-to q",
                                    "up '#2'",
                                    "down 0 2",
                                    "enable '#3'",
                                    "disable 0 '#2'",
                                    "renumber --all",
                                    "import " + csv,
                                    "import --replace " + csv,
                                    "import --replace " + files.Path("rules"),
                                    "undo"};
    int different = 0;
    for (std::string const& command : commands) {
        SCOPED_TRACE(command);
        after.WriteRules(kRules);
        if (command == "undo")
            Run("add --at 1 --from 7 --record-to q", after.Path());
        before.WriteRules(after.ReadRules());
        std::string const mark =
            " --replay " + files.Path("odd.csv") + " --from-column x --to-column y --json";
        json const dry = json::parse(Run(command + " --dry-run" + mark, after.Path()));
        EXPECT_EQ(after.ReadRules(), before.ReadRules());
        EXPECT_EQ(dry.at("changes"), json::parse(Run(command + " --json", after.Path())));
        std::string const there = after.Path(TempDir::RULE_FILE);
        bool const isSame = dry.at("calls").at("same");
        json const diff =
            json::parse(Run("diff " + there + " --json", before.Path(), isSame ? 0 : 1));
        EXPECT_EQ(dry.at("calls"), diff);
        json const replay = json::parse(
            Run("replay " + files.Path("calls.csv") + " --json --against " + there, before.Path()));
        json told = dry.at("replay");
        EXPECT_EQ(told.at("unreadable").at("lines"), 1);
        EXPECT_EQ(told.at("calls"), replay.at("differences").at("calls"));
        EXPECT_TRUE(!isSame || told.at("calls") == 0);
        different += isSame ? 0 : 1;
    }
    EXPECT_GE(different, 10);
    EXPECT_EQ(Run("import --replace " + files.Path("rules"), after.Path()).find("rule"), 0U);
    EXPECT_EQ(after.ReadRules(), whole);
    // Records of which nothing can be read answer nothing.
    files.Write("odd.csv", "src;dst\nx\n");
    Run("delete 4 --dry-run --replay " + files.Path("odd.csv"), after.Path(), 1);
    after.WriteRules("junk\n");
    Run("import --replace " + csv, after.Path());
    EXPECT_EQ(after.ReadRules().find("{\ncallrecordingrule_id=0\n"), 0U);
}

TEST_F(EditCommands, KeepOtherFilesWhole) {
    after.WriteRules(kRules);
    files.Write("calls.csv", "src,dst\n1,2\n");
    std::string const calls = files.Path("calls.csv"), rules = after.Path(TempDir::RULE_FILE);
    std::filesystem::create_hard_link(calls, files.Path("link"));
    for (std::string const& page : {calls, rules, files.Path("link")})
        Run("replay " + calls + " --html " + page, after.Path(), 2);
    Run("replay - --html " + calls + " <" + calls, after.Path(), 2);
    EXPECT_EQ(after.ReadRules(), kRules);
    EXPECT_EQ(files.Read("calls.csv"), "src,dst\n1,2\n");
    files.Write("page", "before");
    int const status = std::system(("trap '' XFSZ; ulimit -f 8; " CALLRECORDINGCTL_PATH " replay " +
                                    calls + " --html " + files.Path("page") + " --config-dir " +
                                    after.Path() + " >/dev/null 2>&1")
                                       .c_str());
    EXPECT_EQ(WEXITSTATUS(status), 4);
    EXPECT_EQ(files.Read("page"), "before");
    Run("replay " + calls + " --html " + files.Path("page"), after.Path());
    EXPECT_NE(files.Read("page").find("<html"), std::string::npos);
}

TEST(RuleMembers, AreTheOnesThatTheManualLists) {
    std::ifstream page(MANUAL_PATH);
    std::string const manual((std::istreambuf_iterator<char>(page)),
                             std::istreambuf_iterator<char>());
    std::string const before = manual.substr(0, manual.find("The rules of **export**"));
    std::string const list = before.substr(before.find("# JSON"));
    std::regex const name("\\*\\*([a-z_]+)\\*\\*");
    std::set<std::string> listed;
    for (std::sregex_iterator found(list.begin(), list.end(), name), end; found != end; ++found)
        listed.insert((*found)[1]);
    for (char const* const command : {"list", "show"})
        listed.erase(command);
    EXPECT_EQ(listed, std::set<std::string>(kRuleMembers.begin(), kRuleMembers.end()));
}

} // namespace
} // namespace CallRecordingUtils
