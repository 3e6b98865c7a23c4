/// @file
/// check without patterns: what is wrong with the rules of the rule file. The values are what the
/// platform's class reads; the text of the file itself only tells on which line each of them
/// stands.

#include "Commands.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <limits>
#include <map>

#include <fmt/format.h>

#include <callrecordingutils/tokensArray.h>

#include "RuleText.h"
#include "Table.h"
#include "model/SipAddress.h"

namespace callrecordingctl {
namespace {

using namespace CallRecordingUtils;

struct Finding {
    std::size_t line;
    std::size_t position; // Of the rule.
    std::int32_t id;      // As the library reads it.
    std::string message;
    std::string caret; // The pattern with a caret under the place, if it is about a pattern.
};

struct Section {
    std::size_t line = 0;
    std::map<std::string, std::size_t> lineOf; // Of the first entry of each key.
    std::vector<std::pair<std::size_t, std::string>>
        oddKeys; // Lines, and what is wrong with the key.
    std::string values[RULE_FILE_KEY_COUNT];
    Rule rule;

    std::size_t LineOf(RuleFileKeys key) const {
        auto const found = lineOf.find(tokensArray[key]);
        return found != lineOf.end() ? found->second : line;
    }
};

/// Letters and digits only, in lower case: what a hand tends to get right in a key.
std::string Essence(std::string const& key) {
    std::string essence;
    for (char const c : key)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            essence += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return essence;
}

void TakeKey(Section& section, std::string const& key, std::size_t line) {
    auto const [first, isNew] = section.lineOf.emplace(key, line);
    for (char const* known : tokensArray) {
        if (key == known && !isNew)
            section.oddKeys.emplace_back(
                line,
                fmt::format("{} is given again; the one on line {} counts", key, first->second));
        if (key != known && Essence(key) == Essence(known))
            section.oddKeys.emplace_back(
                line, fmt::format("\"{}\" is not read; is \"{}\" meant?", Printable(key), known));
    }
}

/// The sections' places in the text of a file that MultiSectionFile accepts.
std::vector<Section> Locate() {
    std::vector<Section> sections;
    std::ifstream lines(RuleFilePath());
    std::string line;
    for (std::size_t number = 1; std::getline(lines, line); ++number) {
        line.erase(0, line.find_first_not_of(" \t"));
        std::size_t const separator = line.find('=');
        if (line.compare(0, 1, "{") == 0 && separator == std::string::npos)
            sections.emplace_back().line = number;
        else if (line.compare(0, 1, "#") != 0 && separator != std::string::npos &&
                 !sections.empty())
            TakeKey(sections.back(), line.substr(0, separator), number);
    }
    return sections;
}

void ReadValues(Configuration::MultiSectionFile& file, RuleStore& store, Section& section) {
    std::vector<char> buffer(65536);
    for (int key = 0; key < RULE_FILE_KEY_COUNT; ++key) {
        file.GetSectionEntry(tokensArray[key], buffer.data(), static_cast<unsigned>(buffer.size()));
        section.values[key] = buffer.data();
    }
    store.Database().GetCurrentSection(&file, section.rule);
    long long const id =
        std::strtoll(section.values[KEY_CALLRECORDINGRULE_ID].c_str(), nullptr, 10);
    using Limits = std::numeric_limits<std::int32_t>;
    section.rule.callrecordingrule_id =
        static_cast<std::int32_t>(std::clamp<long long>(id, Limits::min(), Limits::max()));
}

std::vector<Section> ReadSections() {
    try {
        auto const file = OpenRuleFile();
        std::vector<Section> sections = Locate();
        RuleStore store;
        for (Section& section : sections)
            if (file->GotoNextSection() != 0)
                ReadValues(*file, store, section);
        return sections;
    } catch (std::exception const& error) {
        throw Failure(EXIT_CODE_UNREADABLE, error.what());
    }
}

/// A SIP pattern without a port takes every port.
std::string WithPort(std::string const& pattern) {
    auto const pieces = CallRecordingUtils::SplitSipAddress(pattern);
    if (!pieces || !pieces->port.value_or("").empty())
        return pattern;
    return pattern + (pieces->port ? "*" : ":*");
}

/// Whether every address that the later side matches is matched by the earlier one, as far as that
/// shows without looking into patterns.
bool Covers(std::string const& earlier, CallType earlierType, std::string const& later,
            CallType laterType) {
    if (earlierType == CALL_TYPE_ANY && earlier == "*")
        return true;
    if (laterType == CALL_TYPE_SIP)
        return earlierType == CALL_TYPE_SIP &&
               (WithPort(earlier) == "*@*:*" || WithPort(earlier) == WithPort(later));
    // A side of type any compares a number just as one of the two number types does.
    bool const isOfType = earlierType == laterType || earlierType == CALL_TYPE_ANY;
    return isOfType && (earlier == later || earlier == "*");
}

bool CanDecide(Rule const& rule) {
    return rule.recording_rule_state == RULE_ENABLED && !rule.caller_pattern.empty() &&
           !rule.called_pattern.empty();
}

bool Covers(Rule const& earlier, Rule const& later) {
    return CanDecide(earlier) && CanDecide(later) &&
           Covers(earlier.caller_pattern, earlier.caller_call_type, later.caller_pattern,
                  later.caller_call_type) &&
           Covers(earlier.called_pattern, earlier.called_call_type, later.called_pattern,
                  later.called_call_type);
}

class FileCheck {
  public:
    std::vector<Finding> Run(std::vector<Section> const& sections) {
        for (mSection = sections.begin(); mSection != sections.end(); ++mSection, ++mPosition) {
            for (auto const& [line, message] : mSection->oddKeys)
                Find(line, message);
            CheckId();
            CheckNumbers();
            CheckPattern(KEY_CALLER_PATTERN, "from", mSection->rule.caller_call_type);
            CheckPattern(KEY_CALLED_PATTERN, "to", mSection->rule.called_call_type);
            CheckReach(sections.begin());
        }
        std::stable_sort(mFindings.begin(), mFindings.end(),
                         [](Finding const& a, Finding const& b) { return a.line < b.line; });
        return mFindings;
    }

  private:
    using Place = std::vector<Section>::const_iterator;

    void Find(std::size_t line, std::string const& message, std::string const& caret = "") {
        mFindings.push_back({line, mPosition, mSection->rule.callrecordingrule_id, message, caret});
    }

    void CheckId() {
        std::string const& text = mSection->values[KEY_CALLRECORDINGRULE_ID];
        std::int32_t const id = mSection->rule.callrecordingrule_id;
        std::size_t const line = mSection->LineOf(KEY_CALLRECORDINGRULE_ID);
        if (text != std::to_string(id) || id < 0)
            Find(line, fmt::format("the identifier \"{}\" is no plain number; it reads as {}",
                                   Printable(text), id));
        auto const [first, isNew] = mLineOfId.emplace(id, line);
        if (!isNew)
            Find(line, fmt::format("the identifier {} is that of the rule on line {} already", id,
                                   first->second));
    }

    void CheckNumbers() {
        Rule const& rule = mSection->rule;
        bool const isEnabled = rule.recording_rule_state == RULE_ENABLED;
        CheckNumber(KEY_CALLER_CALL_TYPE, "0123", CallTypeName(rule.caller_call_type));
        CheckNumber(KEY_CALLED_CALL_TYPE, "0123", CallTypeName(rule.called_call_type));
        CheckNumber(KEY_CALL_RECORDING_TYPE, "01", "1");
        CheckNumber(KEY_RECORDING_RULE_STATE, "01", isEnabled ? "1, on" : "0, off");
    }

    void CheckNumber(RuleFileKeys key, std::string_view digits, char const* readAs) {
        std::string const& text = mSection->values[key];
        if (text.size() != 1 || digits.find(text[0]) == std::string_view::npos)
            Find(mSection->LineOf(key),
                 fmt::format("{} is \"{}\", expected 0 to {}; it reads as {}", tokensArray[key],
                             Printable(text), digits.back(), readAs));
    }

    void CheckPattern(RuleFileKeys key, char const* side, CallType type) {
        std::string const& stored = mSection->values[key];
        std::size_t const line = mSection->LineOf(key);
        if (stored.empty())
            Find(line, fmt::format("{}: an empty pattern never matches", side));
        else if (auto const problem = ExplainStored(stored, type))
            Find(line, fmt::format("{}: malformed pattern: {}", side, problem->message),
                 "\n" + CaretText(ToEntry(stored, type), *problem));
    }

    void CheckReach(Place first) {
        auto const found = std::find_if(first, mSection, [this](Section const& earlier) {
            return Covers(earlier.rule, mSection->rule);
        });
        if (found != mSection)
            Find(mSection->line,
                 fmt::format(
                     "can never decide: rule {} on line {} matches every call that it matches",
                     found->rule.callrecordingrule_id, found->line));
    }

    Place mSection;
    std::size_t mPosition = 1;
    std::map<std::int32_t, std::size_t> mLineOfId;
    std::vector<Finding> mFindings;
};

} // namespace

ExitCode CheckRuleFile(bool json) {
    auto const sections = HasRuleFile() ? ReadSections() : std::vector<Section>();
    std::vector<Finding> const findings = FileCheck().Run(sections);
    auto document = nlohmann::ordered_json::array();
    for (auto const& [line, position, id, message, caret] : findings) {
        document.push_back({{"line", line},
                            {"position", position},
                            {"callrecordingrule_id", id},
                            {"message", message}});
        if (!json)
            fmt::print("{}:{}: rule {}: {}{}\n", RuleFilePath(), line, id, message, caret);
    }
    if (json)
        PrintJson(document);
    else if (findings.empty())
        fmt::print("{} {}, nothing found\n", sections.size(),
                   sections.size() == 1 ? "rule" : "rules");
    return findings.empty() ? EXIT_CODE_YES : EXIT_CODE_NO;
}

} // namespace callrecordingctl
