// Finds and changes sections.

#include "database/RuleFileEdit.h"

#include <stdexcept>
#include <utility>

namespace CallRecordingUtils {

RuleFileEdit::RuleFileEdit(std::string const& path) : file_(path) {}

/// Makes the section at place the current one. Returns whether there is such a section.
bool RuleFileEdit::GoTo(std::size_t place) {
    std::size_t at = place_.value_or(0);
    bool const isShorterFromFront = place < at / 2;
    if (!place_ || isShorterFromFront) {
        place_.reset();
        file_.File().Restart();
        if (!file_.Next())
            return false;
        at = 0;
    }
    place_.reset(); // In case the walk fails.
    for (; at > place; --at)
        file_.File().GotoPreviousSection();
    for (; at < place; ++at)
        if (!file_.Next())
            return false;
    place_ = place;
    return true;
}

SectionReader* RuleFileEdit::At(std::size_t place) {
    return GoTo(place) ? &file_.Reader() : nullptr;
}

std::vector<CallRecordingRuleParams> RuleFileEdit::Rules() {
    std::vector<CallRecordingRuleParams> rules;
    for (std::size_t place = 0; GoTo(place); ++place)
        rules.push_back(file_.ReadRule());
    return rules;
}

CallRecordingRuleParams RuleFileEdit::RuleAt(std::size_t place) {
    if (!GoTo(place))
        throw std::out_of_range("there is no rule at place " + std::to_string(place));
    return file_.ReadRule();
}

void RuleFileEdit::Set(std::size_t place, std::vector<SectionEntry> const& entries) {
    GoTo(place);
    SetEntries(file_.File(), entries);
}

void RuleFileEdit::Set(std::size_t place, CallRecordingRuleParams const& rule) {
    Set(place, RuleEntries(rule));
}

std::int32_t RuleFileEdit::NextId() {
    place_.reset();
    return NextRuleId(file_.File());
}

bool RuleFileEdit::AddSection() {
    place_.reset(); // The number of sections is not known.
    return file_.File().AddSection(false) != 0;
}

void RuleFileEdit::SetAdded(CallRecordingRuleParams const& rule) {
    SetEntries(file_.File(), RuleEntries(rule));
}

void RuleFileEdit::Append(CallRecordingRuleParams const& rule) {
    if (!AddSection())
        throw std::runtime_error("no section can be added");
    SetAdded(rule);
}

void RuleFileEdit::Delete(std::size_t place) {
    GoTo(place);
    file_.File().DeleteSection();
    place_.reset();
    if (file_.Next())
        place_ = place;
}

// Every rule in between moves one place towards from, and takes over the identifier of that place.
void RuleFileEdit::Move(std::size_t from, std::size_t to) {
    if (from == to)
        return;
    CallRecordingRuleParams moved = RuleAt(from);
    std::size_t const step = from < to ? 1 : static_cast<std::size_t>(-1);
    for (std::size_t place = from; place != to; place += step) {
        CallRecordingRuleParams neighbour = RuleAt(place + step);
        std::swap(neighbour.callrecordingrule_id, moved.callrecordingrule_id);
        Set(place, neighbour);
    }
    Set(to, moved);
}

void RuleFileEdit::Save() {
    file_.Save();
}

} // namespace CallRecordingUtils
