// What is wrong with the rules of a file.

#include "check/FileFindings.h"

#include <algorithm>
#include <cctype>
#include <map>

#include <fmt/format.h>

#include "Similar.h"
#include "check/Suspicions.h"
#include "database/RuleKeys.h"
#include "model/SipAddress.h"
#include "output/RuleText.h"
#include "output/Table.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

using namespace CallRecordingUtils;

/// Letters and digits only, in lower case: what a hand tends to get right in a key.
std::string Essence(std::string const& key) {
    std::string essence;
    for (char const c : key)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            essence += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return essence;
}

/// The key of a rule that key is, or may have been meant for; null when there is none.
char const* KeyMeantBy(std::string const& key) {
    auto const find = [](auto isMeant) {
        auto const found = std::find_if(kRuleKeys.begin(), kRuleKeys.end(), isMeant);
        return found != kRuleKeys.end() ? *found : nullptr;
    };
    if (char const* const same = find([&](char const* known) { return key == known; }))
        return same;
    // Two slips at most: keys of another kind may be there for others to read.
    return find([essence = Essence(key)](char const* known) {
        return Distance(essence, Essence(known)) <= 2;
    });
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

class Checker {
  public:
    std::vector<FileFinding> Run(std::vector<StoredRule> const& rules) {
        for (rule_ = rules.begin(); rule_ != rules.end(); ++rule_, ++position_) {
            CheckKeys();
            CheckId();
            CheckNumbers();
            CheckPattern(KEY_CALLER_PATTERN, "from", rule_->rule.caller_call_type);
            CheckPattern(KEY_CALLED_PATTERN, "to", rule_->rule.called_call_type);
            CheckReach(rules.begin());
        }
        std::stable_sort(
            findings_.begin(), findings_.end(),
            [](FileFinding const& a, FileFinding const& b) { return a.line < b.line; });
        return findings_;
    }

  private:
    using Current = std::vector<StoredRule>::const_iterator;

    void Find(std::size_t line, std::string const& message, std::string const& caret = "") {
        findings_.push_back({line, position_, rule_->rule.callrecordingrule_id, message, caret});
    }

    void CheckKeys() {
        std::map<std::string, std::size_t> lineOf;
        for (auto const& [key, line] : rule_->entries) {
            auto const [first, isNew] = lineOf.emplace(key, line);
            char const* const meant = KeyMeantBy(key);
            if (meant != nullptr && key != meant)
                Find(line,
                     fmt::format("\"{}\" is not read; is \"{}\" meant?", Printable(key), meant));
            else if (meant != nullptr && !isNew)
                Find(line, fmt::format("{} is given again; the one on line {} counts", key,
                                       first->second));
        }
    }

    void CheckId() {
        constexpr char kRepair[] = "\"callrecordingctl renumber\" gives it one of its own";
        std::string const& text = rule_->values[KEY_CALLRECORDINGRULE_ID];
        std::int32_t const id = rule_->rule.callrecordingrule_id;
        std::size_t const line = rule_->LineOf(KEY_CALLRECORDINGRULE_ID);
        auto const [first, isNew] = lineOfId_.emplace(id, line);
        if (!isNew)
            Find(line, fmt::format("the identifier {} is that of the rule on line {} already; {}",
                                   id, first->second, kRepair));
        else if (!IsPlainId(*rule_))
            Find(line, fmt::format("the identifier \"{}\" is no plain number; it reads as {}; {}",
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
            Find(rule_->LineOf(key),
                 fmt::format("{} is \"{}\", expected 0 to {}; it reads as {}", kRuleKeys[key],
                             Printable(text), digits.back(), readAs));
    }

    void CheckPattern(RuleFileKeys key, char const* side, CallType type) {
        std::string const& stored = rule_->values[key];
        std::size_t const line = rule_->LineOf(key);
        if (stored.find('\r') != std::string::npos)
            Find(line, fmt::format("{}: the pattern has a carriage return in it, so it matches "
                                   "nothing; \"sed -i 's/\\r//' FILE\" takes them out",
                                   side));
        else if (stored.empty())
            Find(line, fmt::format("{}: an empty pattern never matches", side));
        else if (auto const problem = ExplainStored(stored, type))
            Find(line, fmt::format("{}: malformed pattern: {}", side, problem->message),
                 "\n" + CaretText(ToEntry(stored, type), *problem));
        else if (auto const suspicion = SurelyNotMeant(stored, type))
            Find(line, fmt::format("{}: {}", side, suspicion->message),
                 "\n" + CaretText(ToEntry(stored, type), *suspicion));
    }

    void CheckReach(Current first) {
        auto const found = std::find_if(first, rule_, [this](StoredRule const& earlier) {
            return Covers(earlier.rule, rule_->rule);
        });
        if (found != rule_)
            Find(rule_->line,
                 fmt::format(
                     "can never decide: rule {} on line {} matches every call that it matches",
                     found->rule.callrecordingrule_id, found->line));
    }

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

std::vector<FileFinding> FindFaults(std::vector<StoredRule> const& rules) {
    return Checker().Run(rules);
}

} // namespace callrecordingctl
