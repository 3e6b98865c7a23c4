// Finds what is wrong with the entries of a rule file: keys, values and patterns.

#include "administration/check/FileFindings.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <utility>

#include <fmt/format.h>

#include "administration/check/ReachFindings.h"
#include "database/RuleKeys.h"
#include "model/CallTypeNames.h"
#include "text/Printable.h"
#include "text/Similar.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

/// Returns the letters and digits of key in lower case, which people mistype least.
std::string LettersAndDigits(std::string const& key) {
    std::string kept;
    for (char const c : key)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            kept += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return kept;
}

/// Returns the key of a rule that key is or may be a misspelling of; null when there is none.
char const* KeyMeantBy(std::string const& key) {
    auto const find = [](auto isMeant) {
        auto const found = std::find_if(kRuleKeys.begin(), kRuleKeys.end(), isMeant);
        return found != kRuleKeys.end() ? *found : nullptr;
    };
    if (char const* const same = find([&](char const* known) { return key == known; }))
        return same;
    // At most two slips: other programs may have keys of their own in the file.
    return find([typed = LettersAndDigits(key)](char const* known) {
        return Distance(typed, LettersAndDigits(known)) <= 2;
    });
}

class Checker {
  public:
    explicit Checker(std::vector<StoredRule> const& rules) : stored_(rules) {}

    std::vector<FileFinding> Run() {
        for (rule_ = stored_.begin(); rule_ != stored_.end(); ++rule_, ++position_) {
            CheckKeys();
            CheckId();
            CheckNumbers();
            CheckPattern(KEY_CALLER_PATTERN, "from", rule_->rule.caller_call_type);
            CheckPattern(KEY_CALLED_PATTERN, "to", rule_->rule.called_call_type);
        }
        return findings_;
    }

  private:
    using Current = std::vector<StoredRule>::const_iterator;

    void Find(std::string_view kind, std::size_t line, std::string const& message,
              std::string const& caret = "") {
        FileFinding finding{};
        finding.kind = kind;
        finding.line = line;
        finding.position = position_;
        finding.id = rule_->rule.callrecordingrule_id;
        finding.message = message;
        finding.caret = caret;
        findings_.push_back(finding);
    }

    void CheckKeys() {
        std::map<std::string, std::size_t> lineOf;
        for (auto const& [key, line] : rule_->entries) {
            auto const [first, isNew] = lineOf.emplace(key, line);
            char const* const meant = KeyMeantBy(key);
            if (meant != nullptr && key != meant)
                Find("key", line,
                     fmt::format("\"{}\" is not read; is \"{}\" meant?", Printable(key), meant));
            else if (meant != nullptr && !isNew)
                Find("key", line,
                     fmt::format("{} is given twice; only line {} counts", key, first->second));
        }
    }

    void CheckId() {
        constexpr char kRepair[] = "\"callrecordingctl renumber\" gives the rule another one";
        std::string const& text = rule_->values[KEY_CALLRECORDINGRULE_ID];
        std::int32_t const id = rule_->rule.callrecordingrule_id;
        std::size_t const line = rule_->LineOf(KEY_CALLRECORDINGRULE_ID);
        auto const [first, isNew] = lineOfId_.emplace(id, line);
        if (!isNew)
            Find("identifier", line,
                 fmt::format("the identifier {} is that of the rule on line {}, too; {}", id,
                             first->second, kRepair));
        else if (!IsPlainId(*rule_))
            Find("identifier", line,
                 fmt::format("the identifier \"{}\" is not a plain number and reads as {}; {}",
                             Printable(text), id, kRepair));
    }

    void CheckNumbers() {
        Rule const& rule = rule_->rule;
        bool const isEnabled = rule.recording_rule_state == RULE_ENABLED;
        CheckNumber(KEY_CALLER_CALL_TYPE, "0123", CallTypeName(rule.caller_call_type));
        CheckNumber(KEY_CALLED_CALL_TYPE, "0123", CallTypeName(rule.called_call_type));
        CheckNumber(KEY_CALL_RECORDING_TYPE, "01", "1");
        CheckNumber(KEY_RECORDING_RULE_STATE, "01", isEnabled ? "1, on" : "0, off");
    }

    void CheckNumber(RuleFileKeys key, std::string_view digits, char const* readAs) {
        std::string const& text = rule_->values[key];
        if (text.size() != 1 || digits.find(text[0]) == std::string_view::npos)
            Find("value", rule_->LineOf(key),
                 fmt::format("{} is \"{}\", expected 0 to {}; it reads as {}", kRuleKeys[key],
                             Printable(text), digits.back(), readAs));
    }

    void CheckPattern(RuleFileKeys key, char const* side, CallType type) {
        std::string const& stored = rule_->values[key];
        std::size_t const line = rule_->LineOf(key);
        std::size_t const carriageReturn = stored.find('\r');
        if (carriageReturn != std::string::npos)
            Find("pattern", line,
                 fmt::format("{}: the pattern has a carriage return in it{}; \"sed -i 's/\\r//g' "
                             "FILE\" removes all of them",
                             side, WhatStopMeans(stored, type, carriageReturn)));
        else if (stored.empty())
            Find("pattern", line, fmt::format("{}: an empty pattern never matches", side));
        else if (auto const problem = ExplainStored(stored, type))
            Find("pattern", line, fmt::format("{}: malformed pattern: {}", side, problem->message),
                 "\n" + CaretText(ToEntry(stored, type), problem->position));
        else if (auto const suspicion = SuspectStored(stored, type))
            Find("pattern", line, fmt::format("{}: {}", side, suspicion->message),
                 "\n" + CaretText(ToEntry(stored, type), suspicion->position));
    }

    std::vector<StoredRule> const& stored_;
    Current rule_;
    std::size_t position_ = 1;
    std::map<std::int32_t, std::size_t> lineOfId_;
    std::vector<FileFinding> findings_;
};

} // namespace

bool IsPlainId(StoredRule const& stored) {
    std::int32_t const id = stored.rule.callrecordingrule_id;
    return id >= 0 && stored.values[KEY_CALLRECORDINGRULE_ID] == std::to_string(id);
}

bool IsNote(FileFinding const& finding) {
    return std::find(kNotes.begin(), kNotes.end(), finding.kind) != kNotes.end();
}

std::vector<FileFinding> FindFaults(std::vector<StoredRule> const& rules,
                                    CheckOptions const& options) {
    std::vector<FileFinding> findings = Checker(rules).Run();
    std::vector<FileFinding> const reach = FindReach(rules, options);
    findings.insert(findings.end(), reach.begin(), reach.end());
    std::stable_sort(findings.begin(), findings.end(),
                     [](FileFinding const& a, FileFinding const& b) {
                         return std::pair(IsNote(a), a.line) < std::pair(IsNote(b), b.line);
                     });
    return findings;
}

} // namespace CallRecordingUtils
