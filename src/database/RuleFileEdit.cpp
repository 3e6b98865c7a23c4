// The changes of an edit, made to the file object section by section.

#include "database/RuleFileEdit.h"

namespace CallRecordingUtils {

RuleFileEdit::RuleFileEdit(std::string const& path) : file_(path) {}

std::vector<CallRecordingRuleParams> RuleFileEdit::Rules() {
    std::vector<CallRecordingRuleParams> rules;
    file_.File().Restart();
    for (next_ = 0; file_.Next(); ++next_)
        rules.push_back(file_.ReadRule());
    ++next_; // The cursor stands behind the last section.
    return rules;
}

/// Makes the section at place the current one.
void RuleFileEdit::GoTo(std::size_t place) {
    if (place + 1 < next_ / 2) {
        file_.File().Restart();
        next_ = 0;
    }
    for (; next_ > place + 1; --next_)
        file_.File().GotoPreviousSection();
    for (; next_ <= place; ++next_)
        file_.File().GotoNextSection();
}

void RuleFileEdit::Set(std::size_t place, CallRecordingRuleParams const& rule) {
    GoTo(place);
    SetEntries(file_.File(), RuleEntries(rule));
}

void RuleFileEdit::Append(CallRecordingRuleParams const& rule) {
    file_.File().AddSection(false);
    SetEntries(file_.File(), RuleEntries(rule));
    file_.File().Restart();
    next_ = 0;
}

void RuleFileEdit::Delete(std::size_t place) {
    GoTo(place);
    file_.File().DeleteSection();
    file_.File().Restart();
    next_ = 0;
}

void RuleFileEdit::Move(std::size_t from, std::size_t to) {
    GoTo(from);
    CallRecordingRuleParams const moved = file_.ReadRule();
    std::int32_t id = moved.callrecordingrule_id;
    std::size_t const step = from < to ? 1 : static_cast<std::size_t>(-1);
    for (std::size_t place = from; place != to; place += step) {
        GoTo(place + step);
        CallRecordingRuleParams neighbour = file_.ReadRule();
        std::swap(neighbour.callrecordingrule_id, id);
        Set(place, neighbour);
    }
    CallRecordingRuleParams last = moved;
    last.callrecordingrule_id = id;
    Set(to, last);
}

void RuleFileEdit::Save() {
    file_.Save();
}

} // namespace CallRecordingUtils
