// Follows rules by their places, and puts the list together without the edit.

#include "administration/edit/Reversal.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <set>
#include <utility>

#include "administration/inspection/ReadRules.h"
#include "common/Error.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

using Ids = std::vector<std::int32_t>;

Ids IdsOf(RuleList const& rules) {
    Ids ids;
    for (Rule const& rule : rules)
        ids.push_back(rule.callrecordingrule_id);
    return ids;
}

/// Where each of count rules went.
RulePlaces Inverse(RuleOrigins const& origins, std::size_t count) {
    RulePlaces places(count);
    for (std::size_t i = 0; i < origins.size(); ++i)
        if (origins[i])
            places[*origins[i]] = i;
    return places;
}

/// The identifiers of one list that another one lacks.
template <typename Others>
std::set<std::int32_t> Without(Ids const& ids, Others const& others) {
    std::set<std::int32_t> left(ids.begin(), ids.end());
    for (std::int32_t const id : others)
        left.erase(id);
    return left;
}

bool IsRising(Ids const& ids) {
    return std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end();
}

std::int32_t FreeId(std::set<std::int32_t> const& taken) {
    if (taken.empty())
        return 0;
    if (*taken.rbegin() == std::numeric_limits<std::int32_t>::max())
        throw Error(Error::Kind::Unsaved, "no identifier is left after 2147483647");
    return *taken.rbegin() + 1;
}

} // namespace

Reversal::Reversal(std::string const& before, std::string const& after)
    : textBefore_(before), before_(RulesOf(before, "the rule file before the edit")),
      after_(RulesOf(after, "the rule file after the edit")),
      changes_(ChangesBetween(before_, after_)), origins_(OriginsOf(before_, after_)),
      places_(Inverse(origins_, before_.size())), kept_(KeptOrder(origins_)), now_(after_) {
    for (std::size_t i = 0; i < after_.size(); ++i)
        traced_.push_back({i});
}

/// Whether a later change of the rule at place of after_ touches what the edit did to it.
bool Reversal::IsTouched(Change const& change, std::size_t place, bool movesNow) const {
    bool const isAdded = !origins_[place];
    bool const isChanged = isAdded || !AreAlike(before_[*origins_[place]], after_[place]);
    bool const isMoved = isAdded || !kept_[place];
    if (change.after == nullptr)
        return isChanged || isMoved;
    return (isChanged && !AreAlike(*change.before, *change.after)) || (isMoved && movesNow);
}

/// Whether a rule that the edit deleted is there again.
bool Reversal::ComesBack(Rule const& added) const {
    return std::any_of(
        changes_.begin(), changes_.end(),
        [&added](Change const& change) {
            return change.after == nullptr && AreAlike(*change.before, added);
        });
}

std::vector<Change> Reversal::Follow(std::string const& next) {
    last_ = std::exchange(now_, RulesOf(next, "the rule file after a later edit"));
    RuleOrigins const origins = OriginsOf(last_, now_);
    std::vector<bool> const kept = KeptOrder(origins);
    RulePlaces const places = Inverse(origins, last_.size());
    std::vector<Change> touching;
    for (std::size_t i = 0; i < traced_.size(); ++i) {
        if (!traced_[i].now)
            continue;
        std::size_t const was = *traced_[i].now;
        traced_[i].now = places[was];
        Change change{&last_[was], was + 1, nullptr, 0, true};
        bool movesNow = false;
        if (auto const now = places[was]) {
            change.after = &now_[*now];
            change.afterPosition = *now + 1;
            movesNow = !kept[*now];
            traced_[i].wasMoved = traced_[i].wasMoved || movesNow;
        }
        if (IsTouched(change, i, movesNow))
            touching.push_back(change);
    }
    for (std::size_t i = 0; i < now_.size(); ++i)
        if (!origins[i] && ComesBack(now_[i]))
            touching.push_back({nullptr, 0, &now_[i], i + 1, true});
    return touching;
}

/// All rules now in their order, without those that the edit added or moved.
std::vector<Reversal::Item> Reversal::RulesThatStay() const {
    std::vector<Item> items(now_.size());
    std::vector<bool> goes(now_.size(), false);
    for (std::size_t i = 0; i < after_.size(); ++i)
        if (auto const now = traced_[i].now) {
            goes[*now] = !origins_[i] || !kept_[i];
            items[*now] = {*now, origins_[i], !traced_[i].wasMoved};
        }
    std::vector<Item> staying;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (!goes[i])
            staying.push_back(items[i].before ? items[i] : Item{i, std::nullopt, false});
    return staying;
}

/// Puts back the rules that the edit deleted or moved. The guides are in the order of before_.
void Reversal::PutBack(std::vector<Item>& items) const {
    for (std::size_t i = 0; i < before_.size(); ++i) {
        auto const place = places_[i];
        if (place && kept_[*place])
            continue;
        auto const comesFirst = [i](Item const& item) { return item.isGuide && *item.before < i; };
        auto const behind = std::find_if(items.rbegin(), items.rend(), comesFirst);
        auto const ahead =
            std::find_if(items.begin(), items.end(), [](Item const& item) { return item.isGuide; });
        items.insert(behind != items.rend() ? behind.base()
                     : ahead != items.end() ? ahead
                                            : items.begin(),
                     {place ? traced_[*place].now : std::nullopt, i, true});
    }
}

EditedRule Reversal::RuleOf(Item const& item, std::vector<std::string> const& sections) const {
    EditedRule edited{item.now, item.now ? now_[*item.now] : before_[*item.before], false, ""};
    if (!item.now) {
        edited.section = sections[*item.before];
        edited.writesId = true;
    } else if (item.before && !AreAlike(before_[*item.before], after_[*places_[*item.before]])) {
        edited.rule = before_[*item.before];
    }
    return edited;
}

/// The identifiers of the rules without the edit, where identifiers rise from place to place.
Ids Reversal::RisingIds(std::vector<EditedRule> const& rules) const {
    Ids const before = IdsOf(before_), after = IdsOf(after_), now = IdsOf(now_);
    std::set<std::int32_t> ids = Without(now, Without(after, before));
    for (std::int32_t const id : Without(before, after))
        ids.insert(id);
    // Where an identifier that the edit introduced has gone already, that of its rule goes.
    std::set<std::int32_t> gone(now.begin(), now.end());
    for (EditedRule const& rule : rules)
        if (rule.origin)
            gone.erase(now[*rule.origin]);
    for (auto id = gone.rbegin(); id != gone.rend() && ids.size() > rules.size(); ++id)
        ids.erase(*id);
    while (ids.size() < rules.size())
        ids.insert(FreeId(ids));
    return {ids.begin(), ids.end()};
}

/// The same where they do not: every rule keeps its own as far as it is free.
Ids Reversal::OwnIds(std::vector<EditedRule> const& rules) const {
    std::set<std::int32_t> taken;
    for (Rule const& rule : now_)
        taken.insert(rule.callrecordingrule_id);
    Ids ids;
    for (EditedRule const& rule : rules) {
        std::int32_t id = rule.rule.callrecordingrule_id;
        if (rule.origin)
            id = now_[*rule.origin].callrecordingrule_id;
        else if (!taken.insert(id).second)
            taken.insert(id = FreeId(taken));
        ids.push_back(id);
    }
    return ids;
}

void Reversal::TakeBack(RuleEdit& edit) const {
    std::vector<Item> items = RulesThatStay();
    PutBack(items);
    std::vector<std::string> const sections =
        SectionsOf("the rule file before the edit", textBefore_);
    std::vector<EditedRule> rules;
    for (Item const& item : items)
        rules.push_back(RuleOf(item, sections));
    Ids const now = IdsOf(now_);
    Ids const ids = now == IdsOf(after_) ? IdsOf(before_)
                    : IsRising(now)      ? RisingIds(rules)
                                         : OwnIds(rules);
    for (std::size_t i = 0; i < rules.size(); ++i)
        rules[i].rule.callrecordingrule_id = ids[i];
    edit.Replace(std::move(rules));
}

} // namespace CallRecordingUtils
