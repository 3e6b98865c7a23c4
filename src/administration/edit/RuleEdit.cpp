// Changes the list of rules, and has text and report made from it.

#include "administration/edit/RuleEdit.h"

#include <algorithm>
#include <limits>
#include <system_error>

#include "administration/inspection/ReadRules.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

/// Returns what action returns; what it throws becomes an Error of this kind.
template <typename Action>
auto WithKind(Error::Kind kind, Action action) {
    try {
        return action();
    } catch (std::exception const& error) {
        throw Error(kind, error.what());
    }
}

std::ptrdiff_t Step(std::size_t place) {
    return static_cast<std::ptrdiff_t>(place);
}

} // namespace

RuleEdit::RuleEdit(std::string const& path)
    : path_(path), fileBefore_(WithKind(Error::Kind::Unreadable,
                                        [&path] { return HostPlatform::ReadFile(path); })) {
    try {
        before_ = RulesOf(TextBefore(), path_);
    } catch (Error const& error) {
        malformation_ = error;
    } catch (std::system_error const& error) {
        // What cannot be read must not pass for malformed, which may be replaced.
        throw Error(Error::Kind::Unsaved, std::string("nothing was changed: ") + error.what());
    }
    for (std::size_t i = 0; i < before_.size(); ++i)
        slots_.push_back({{i, before_[i]}});
}

void RuleEdit::RequireRules() const {
    if (malformation_)
        throw *malformation_;
}

RuleList const& RuleEdit::Before() const {
    RequireRules();
    return before_;
}

std::optional<std::string> RuleEdit::Malformation() const {
    return malformation_ ? std::optional<std::string>(malformation_->what()) : std::nullopt;
}

std::size_t RuleEdit::Count() const {
    if (!wholeText_)
        RequireRules();
    return slots_.size();
}

std::vector<StoredRule> RuleEdit::Stored() const {
    return StoredRulesOf(TextBefore(), path_);
}

// --- Changes ---

RuleEdit::Slot& RuleEdit::At(std::size_t place) {
    Mention(place);
    return slots_[place];
}

void RuleEdit::Mention(std::size_t place) {
    RequireRules();
    textAfter_.reset();
    after_.reset();
    if (slots_[place].turn == 0)
        slots_[place].turn = ++turn_;
}

void RuleEdit::Set(std::size_t place, Rule const& rule) {
    At(place).edited.rule = rule;
}

void RuleEdit::SetState(std::size_t place, bool enabled) {
    At(place).edited.rule.recording_rule_state = enabled ? RULE_ENABLED : RULE_DISABLED;
}

void RuleEdit::SetId(std::size_t place, std::int32_t id) {
    EditedRule& edited = At(place).edited;
    edited.rule.callrecordingrule_id = id;
    edited.writesId = true;
}

std::int32_t RuleEdit::NextId() const {
    std::int32_t greatest = -1;
    for (Slot const& slot : slots_)
        greatest = std::max(greatest, slot.edited.rule.callrecordingrule_id);
    if (greatest == std::numeric_limits<std::int32_t>::max())
        throw Error(Error::Kind::Unsaved,
                    "no identifier is left after 2147483647; \"callrecordingctl renumber --all\" "
                    "makes room");
    return greatest + 1;
}

std::size_t RuleEdit::Append(Rule rule) {
    RequireRules();
    rule.callrecordingrule_id = NextId();
    slots_.push_back({{std::nullopt, std::move(rule)}});
    Mention(slots_.size() - 1);
    return slots_.size() - 1;
}

void RuleEdit::Insert(Rule const& rule, std::size_t place) {
    std::size_t const last = Append(rule);
    if (place != last)
        Move(last, place);
}

void RuleEdit::Delete(std::size_t place) {
    if (auto const origin = At(place).edited.origin)
        deleted_.push_back(*origin);
    slots_.erase(slots_.begin() + Step(place));
}

void RuleEdit::Move(std::size_t from, std::size_t to) {
    Mention(from);
    auto const [begin, end] = std::minmax(from, to);
    std::vector<std::int32_t> ids;
    for (std::size_t place = begin; place <= end; ++place)
        ids.push_back(slots_[place].edited.rule.callrecordingrule_id);
    auto const first = slots_.begin() + Step(begin);
    auto const last = slots_.begin() + Step(end) + 1;
    std::rotate(first, from < to ? first + 1 : last - 1, last);
    for (std::size_t place = begin; place <= end; ++place)
        slots_[place].edited.rule.callrecordingrule_id = ids[place - begin];
}

void RuleEdit::Exchange(std::vector<std::size_t> const& places,
                        std::vector<std::size_t> const& from) {
    std::vector<std::int32_t> ids;
    for (std::size_t i = 0; i < places.size(); ++i) {
        ids.push_back(slots_[places[i]].edited.rule.callrecordingrule_id);
        if (places[i] != from[i])
            Mention(from[i]);
    }
    std::vector<Slot> const before = slots_;
    for (std::size_t i = 0; i < places.size(); ++i) {
        slots_[places[i]] = before[from[i]];
        slots_[places[i]].edited.rule.callrecordingrule_id = ids[i];
    }
}

std::size_t RuleEdit::PlaceOf(std::size_t origin) const {
    auto const found = std::find_if(slots_.begin(), slots_.end(), [origin](Slot const& slot) {
        return slot.edited.origin == origin;
    });
    return static_cast<std::size_t>(found - slots_.begin());
}

void RuleEdit::Replace(RuleList const& rules) {
    SetSlots(rules);
    if (malformation_) // It has no sections that could be kept.
        wholeText_ = Compose("");
}

void RuleEdit::Replace(std::vector<EditedRule> rules) {
    RequireRules();
    slots_.clear();
    for (EditedRule& rule : rules)
        slots_.push_back({std::move(rule)});
}

void RuleEdit::ReplaceText(std::string const& text) {
    SetSlots(RulesOf(text, path_ + " after the edit"));
    wholeText_ = text;
}

void RuleEdit::SetSlots(RuleList const& rules) {
    RuleOrigins const origins = OriginsOf(before_, rules);
    slots_.clear();
    for (std::size_t i = 0; i < rules.size(); ++i)
        slots_.push_back({{origins[i], rules[i]}});
}

// --- The file after the edit ---

std::string RuleEdit::Compose(std::string const& before) const {
    std::vector<EditedRule> rules;
    for (Slot const& slot : slots_)
        rules.push_back(slot.edited);
    return WithKind(Error::Kind::Unsaved,
                    [&] { return EditedText(path_, before, before_, rules); });
}

std::string const& RuleEdit::TextAfter() {
    if (wholeText_)
        return *wholeText_;
    RequireRules();
    if (!textAfter_)
        textAfter_ = Compose(TextBefore());
    return *textAfter_;
}

RuleList const& RuleEdit::After() {
    if (!after_)
        after_ = RulesOf(TextAfter(), path_);
    return *after_;
}

void RuleEdit::Save() {
    try {
        HostPlatform::ReplaceFile(path_, TextAfter(), fileBefore_.stamp);
    } catch (std::exception const& error) {
        throw Error(Error::Kind::Unsaved,
                    (IsAsBefore() ? "nothing was changed: " : "") + std::string(error.what()));
    }
}

bool RuleEdit::IsAsBefore() const {
    try {
        return HostPlatform::ReadFile(path_).text == TextBefore();
    } catch (std::exception const&) {
        return false; // Nobody knows.
    }
}

std::vector<Change> RuleEdit::Changes() {
    return turn_ > 0 ? NamedChanges() : ChangesBetween(before_, After());
}

std::vector<Change> RuleEdit::NamedChanges() {
    RuleList const& after = After();
    std::vector<Change> named(turn_);
    std::vector<Change> others;
    for (std::size_t i = 0; i < after.size(); ++i) {
        auto const& [edited, turn] = slots_[i];
        Change change{nullptr, 0, &after[i], i + 1, turn > 0};
        if (edited.origin) {
            change.before = &before_[*edited.origin];
            change.beforePosition = *edited.origin + 1;
        }
        if (turn > 0)
            named[turn - 1] = change;
        else if (change.before == nullptr || !AreEqual(*change.before, after[i]))
            others.push_back(change);
    }
    // The turn of a deleted rule is empty.
    auto const isEmpty = [](Change const& change) { return change.after == nullptr; };
    named.erase(std::remove_if(named.begin(), named.end(), isEmpty), named.end());
    std::sort(deleted_.begin(), deleted_.end());
    for (std::size_t const place : deleted_)
        named.push_back({&before_[place], place + 1, nullptr, 0, true});
    named.insert(named.end(), others.begin(), others.end());
    return named;
}

} // namespace CallRecordingUtils
