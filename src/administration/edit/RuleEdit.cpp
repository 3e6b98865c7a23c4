// Changes the file, and keeps track of its rules.

#include "administration/edit/RuleEdit.h"

#include <algorithm>
#include <limits>
#include <system_error>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "administration/edit/NewText.h"
#include "administration/inspection/ReadRules.h"
#include "common/Error.h"
#include "common/MemoryFile.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

/// Returns what action does; what it throws becomes an Error of this kind.
template <typename Action>
auto Or(Error::Kind kind, Action action) {
    try {
        return action();
    } catch (std::exception const& error) {
        throw Error(kind, error.what());
    }
}

/// Why text is not that of a rule file; empty if it is. Throws if that cannot be found out: a file
/// that cannot be read must not pass for a broken one, which may be replaced.
std::string FaultOf(std::string const& text, std::string const& path) {
    MemoryFile const memory(text);
    try {
        ReadRules(memory.Path());
        return "";
    } catch (std::system_error const&) {
        throw;
    } catch (std::runtime_error const& error) {
        std::string fault = error.what();
        std::size_t const at = fault.find(memory.Path());
        return at == std::string::npos ? fault : fault.replace(at, memory.Path().size(), path);
    }
}

std::ptrdiff_t Step(std::size_t place) {
    return static_cast<std::ptrdiff_t>(place);
}

} // namespace

RuleEdit::RuleEdit(std::string const& path, Broken broken)
    : path_(path),
      fileBefore_(Or(Error::Kind::Unreadable, [&path] { return HostPlatform::ReadFile(path); })),
      fault_(Or(Error::Kind::Unreadable,
                [&] { return broken == Broken::Replaced ? FaultOf(fileBefore_.text, path) : ""; })),
      file_(Or(Error::Kind::Unreadable,
               [&] { return RuleFileEdit(fault_.empty() ? path : MemoryFile("").Path()); })),
      before_(Or(Error::Kind::Unreadable, [this] { return file_.Rules(); })) {
    for (std::size_t i = 0; i < before_.size(); ++i)
        traces_.push_back({i, 0});
    if (Or(Error::Kind::Unreadable, [&path] { return HostPlatform::ReadFile(path); }).stamp !=
        fileBefore_.stamp)
        throw Error(Error::Kind::Unsaved,
                    path + ": was saved by another process just now; nothing was "
                           "changed, so try again");
}

void RuleEdit::Set(std::size_t place, Rule const& rule) {
    Or(Error::Kind::Unsaved, [&] { file_.Set(place, rule); });
    Mean(place);
}

std::vector<StoredRule> RuleEdit::Stored() const {
    return Or(
        Error::Kind::Unreadable, [this] { return ReadStoredRules(path_); });
}

void RuleEdit::SetState(std::size_t place, bool enabled) {
    Or(Error::Kind::Unsaved, [&] { file_.Set(place, {StateEntry(enabled)}); });
    Mean(place);
}

void RuleEdit::SetId(std::size_t place, std::int32_t id) {
    Or(Error::Kind::Unsaved, [&] {
        file_.Set(place, {{KEY_CALLRECORDINGRULE_ID, std::to_string(id)}});
    });
    Mean(place);
    isForced_ = true;
}

std::size_t RuleEdit::Append(Rule rule) {
    rule.callrecordingrule_id = Or(
        Error::Kind::Unsaved, [this] { return file_.NextId(); });
    Or(Error::Kind::Unsaved, [&] { file_.Append(rule); });
    traces_.push_back({std::nullopt, ++turn_});
    return traces_.size() - 1;
}

void RuleEdit::Delete(std::size_t place) {
    Or(Error::Kind::Unsaved, [&] { file_.Delete(place); });
    if (traces_[place].origin)
        deleted_.push_back(*traces_[place].origin);
    traces_.erase(traces_.begin() + Step(place));
}

std::size_t RuleEdit::PlaceOf(std::size_t origin) const {
    auto const found = std::find_if(traces_.begin(), traces_.end(), [origin](Trace const& trace) {
        return trace.origin == origin;
    });
    return static_cast<std::size_t>(found - traces_.begin());
}

void RuleEdit::Replace(RuleList const& rules) {
    bool const isReadable = fault_.empty();
    newText_ =
        NewText(isReadable ? TextBefore() : "", isReadable ? Stored() : std::vector<StoredRule>(),
                rules, OriginsOf(before_, rules));
    after_ = rules;
}

void RuleEdit::ReplaceText(std::string const& text) {
    newText_ = text;
    after_ = RulesOf(text, path_);
}

void RuleEdit::Move(std::size_t from, std::size_t to) {
    if (from != to)
        Or(Error::Kind::Unsaved, [&] { file_.Move(from, to); });
    auto const first = traces_.begin();
    if (from < to)
        std::rotate(first + Step(from), first + Step(from) + 1, first + Step(to) + 1);
    else
        std::rotate(first + Step(to), first + Step(from), first + Step(from) + 1);
    Mean(to);
}

void RuleEdit::Mean(std::size_t place) {
    if (traces_[place].turn == 0)
        traces_[place].turn = ++turn_;
}

bool RuleEdit::IsChanged() {
    if (newText_)
        return *newText_ != TextBefore();
    std::vector<Change> const changes = Changes();
    return isForced_ || std::any_of(changes.begin(), changes.end(), [](Change const& change) {
               return change.before == nullptr || change.after == nullptr ||
                      !AreEqual(*change.before, *change.after);
           });
}

void RuleEdit::Save() {
    Or(
        Error::Kind::Unsaved,
        [this] {
            if (!newText_)
                return file_.Save();
            HostPlatform::ReplaceFile(path_, *newText_, fileBefore_.stamp);
        });
}

std::vector<Change> RuleEdit::Changes() {
    if (newText_)
        return ChangesBetween(before_, after_);
    after_ = file_.Rules();
    std::vector<Change> meant(turn_);
    std::vector<Change> others;
    for (std::size_t i = 0; i < after_.size(); ++i) {
        auto const& [origin, turn] = traces_[i];
        Change change{nullptr, 0, &after_[i], i + 1, turn > 0};
        if (origin) {
            change.before = &before_[*origin];
            change.beforePosition = *origin + 1;
        }
        if (turn > 0)
            meant[turn - 1] = change;
        else if (change.before == nullptr || !AreEqual(*change.before, after_[i]))
            others.push_back(change);
    }
    // A rule that was changed and then deleted has left its turn empty.
    auto const isEmpty = [](Change const& change) { return change.after == nullptr; };
    meant.erase(std::remove_if(meant.begin(), meant.end(), isEmpty), meant.end());
    std::sort(deleted_.begin(), deleted_.end());
    for (std::size_t const place : deleted_)
        meant.push_back({&before_[place], place + 1, nullptr, 0, true});
    meant.insert(meant.end(), others.begin(), others.end());
    return meant;
}

} // namespace CallRecordingUtils
