// Selects rules of a list.

#include "administration/selection/RuleSelection.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numeric>

#include <fmt/format.h>

#include "calls/SideTexts.h"
#include "common/Error.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {
namespace {

constexpr char kHint[] = "\"callrecordingctl list\" shows which there are";

[[noreturn]] void Fail(std::string const& message) {
    throw Error(Error::Kind::NoSuchRule, message);
}

std::string NameText(RuleName name) {
    return fmt::format("{}{}", name.isPosition ? "#" : "", name.number);
}

std::vector<std::size_t> PlacesIn(RuleList const& rules, RuleRange const& range) {
    RuleName const first = range.first;
    if (!range.last)
        return {FindRule(rules, first)};
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < rules.size(); ++place) {
        std::int64_t const number = first.isPosition ? static_cast<std::int64_t>(place) + 1
                                                     : rules[place].callrecordingrule_id;
        if (number >= first.number && number <= *range.last)
            places.push_back(place);
    }
    if (places.empty())
        Fail(*range.last == std::numeric_limits<std::int32_t>::max()
                 ? fmt::format("there is no rule from {} on; {}", NameText(first), kHint)
                 : fmt::format("there is no rule from {} to {}; {}", NameText(first),
                               NameText({*range.last, first.isPosition}), kHint));
    return places;
}

std::vector<std::size_t> Named(RuleList const& rules, std::vector<RuleRange> const& names) {
    std::vector<std::size_t> places;
    std::vector<bool> isThere(rules.size(), false);
    for (RuleRange const& range : names)
        for (std::size_t const place : PlacesIn(rules, range))
            if (!isThere[place]) {
                isThere[place] = true;
                places.push_back(place);
            }
    return places;
}

bool ContainsText(std::string const& text, std::string const& part) {
    auto const isSame = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), isSame) != text.end();
}

/// A filter whose addresses have been read.
class ReadFilter {
  public:
    explicit ReadFilter(RuleFilter const& filter)
        : filter_(filter), from_(Read(filter.from)), to_(Read(filter.to)) {}

    bool Takes(Rule const& rule) const {
        bool const isOn = rule.recording_rule_state == RULE_ENABLED;
        return filter_.isEnabled.value_or(isOn) == isOn &&
               filter_.recordTo.value_or(rule.record_to) == rule.record_to &&
               (!filter_.text || Mentions(rule, *filter_.text)) &&
               (!from_ || from_->Satisfies(rule.caller_pattern, rule.caller_call_type)) &&
               (!to_ || to_->Satisfies(rule.called_pattern, rule.called_call_type));
    }

  private:
    static std::optional<SideTexts> Read(std::optional<std::string> const& address) {
        return address ? std::optional(SideTexts(ReadParty(*address))) : std::nullopt;
    }

    RuleFilter const& filter_;
    std::optional<SideTexts> const from_;
    std::optional<SideTexts> const to_;
};

/// The options that filter asks for, as they are written.
std::string OptionsText(RuleFilter const& filter) {
    std::string text;
    auto const add = [&text](char const* option, std::optional<std::string> const& value) {
        if (value)
            text += fmt::format("{}{} \"{}\"", text.empty() ? "" : ", ", option, *value);
    };
    add("--grep", filter.text);
    add("--matching-from", filter.from);
    add("--matching-to", filter.to);
    add("--record-to-is", filter.recordTo);
    if (filter.isEnabled)
        text += fmt::format("{}{}", text.empty() ? "" : ", ",
                            *filter.isEnabled ? "--is-enabled" : "--is-disabled");
    return text;
}

} // namespace

std::size_t FindRule(RuleList const& rules, RuleName name) {
    if (name.isPosition) {
        if (name.number < 1 || static_cast<std::size_t>(name.number) > rules.size())
            Fail(fmt::format("there is no rule {}; {}", NameText(name), kHint));
        return static_cast<std::size_t>(name.number) - 1;
    }
    auto const hasId = [name](Rule const& rule) {
        return rule.callrecordingrule_id == name.number;
    };
    auto const found = std::find_if(rules.begin(), rules.end(), hasId);
    if (found == rules.end())
        Fail(fmt::format("there is no rule {}; {}", name.number, kHint));
    if (std::count_if(found, rules.end(), hasId) > 1)
        Fail(fmt::format("there is more than one rule {}; name it by its position, as in '#{}', or "
                         "give them new identifiers with \"renumber\"",
                         name.number, found - rules.begin() + 1));
    return static_cast<std::size_t>(found - rules.begin());
}

std::vector<std::size_t> Matching(RuleList const& rules, RuleSelection const& selection) {
    std::vector<std::size_t> places = Named(rules, selection.names);
    if (selection.names.empty()) {
        places.resize(rules.size());
        std::iota(places.begin(), places.end(), 0);
    }
    ReadFilter const filter(selection.filter);
    auto const isOut = [&](std::size_t place) { return !filter.Takes(rules[place]); };
    places.erase(std::remove_if(places.begin(), places.end(), isOut), places.end());
    return places;
}

std::string NoneMatches(RuleList const& rules, RuleSelection const& selection) {
    if (rules.empty())
        return "there are no rules";
    return fmt::format("none of the {} passes {}",
                       selection.names.empty() ? fmt::format("{} rules", rules.size())
                                               : "rules that are named",
                       OptionsText(selection.filter));
}

std::vector<std::size_t> Select(RuleList const& rules, RuleSelection const& selection) {
    std::vector<std::size_t> places = Matching(rules, selection);
    if (places.empty())
        Fail(NoneMatches(rules, selection));
    return places;
}

bool Mentions(Rule const& rule, std::string const& text) {
    return ContainsText(ToEntry(rule.caller_pattern, rule.caller_call_type), text) ||
           ContainsText(ToEntry(rule.called_pattern, rule.called_call_type), text) ||
           ContainsText(rule.record_to, text) || ContainsText(rule.description, text);
}

std::vector<std::size_t> MerelyTaking(RuleList const& rules, std::string const& text) {
    std::vector<std::size_t> places;
    Party const party = ReadParty(text);
    if (!party.HasNumber() && (party.user.empty() || party.host.empty()))
        return places;
    SideTexts const side(party);
    for (std::size_t place = 0; place < rules.size(); ++place) {
        Rule const& rule = rules[place];
        if (!Mentions(rule, text) && (side.Satisfies(rule.caller_pattern, rule.caller_call_type) ||
                                      side.Satisfies(rule.called_pattern, rule.called_call_type)))
            places.push_back(place);
    }
    return places;
}

} // namespace CallRecordingUtils
