// Keeps the states at hand that two neighbouring edits share.

#include "commands/RulesOfStates.h"

#include <algorithm>

#include <fmt/format.h>

#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"

namespace callrecordingctl {

RulesOfStates::RulesOfStates(History& history, std::string const& current)
    : history_(history), current_(current), currentDigest_(DigestOf(current)) {}

RulesOfStates::State const& RulesOfStates::Read(std::string const& digest) {
    constexpr std::size_t kKept = 3;
    auto const found = std::find_if(states_.begin(), states_.end(), [&digest](State const& state) {
        return state.digest == digest;
    });
    if (found != states_.end()) {
        states_.splice(states_.begin(), states_, found);
    } else {
        states_.push_front({digest, std::nullopt, ""});
        Load(states_.front());
        if (states_.size() > kKept)
            states_.pop_back();
    }
    return states_.front();
}

void RulesOfStates::Load(State& state) {
    constexpr char kUnknown[] = "what changed is not known";
    std::string const name = "state " + StateToken(state.digest);
    try {
        auto const text = state.digest == currentDigest_ ? std::optional(current_)
                                                         : history_.GlanceAt(state.digest);
        if (text)
            state.rules = RulesOf(*text, name);
        else
            state.problem = fmt::format("{}: the {} of the rule file is not kept", kUnknown, name);
    } catch (std::exception const& error) {
        state.problem = fmt::format("{}: {}", kUnknown, error.what());
    }
}

std::vector<Change> RulesOfStates::ChangesOf(HistoryEntry const& entry) {
    RuleList const* const before = Find(entry.before);
    RuleList const* const after = Find(entry.after);
    return before != nullptr && after != nullptr ? ChangesBetween(*before, *after)
                                                 : std::vector<Change>();
}

std::string RulesOfStates::ProblemOf(HistoryEntry const& entry) {
    std::string const problem = Read(entry.before).problem;
    return problem.empty() ? Read(entry.after).problem : problem;
}

std::size_t RulesOfStates::CountAfter(HistoryEntry const& entry) {
    RuleList const* const after = Find(entry.after);
    return after != nullptr ? after->size() : 0;
}

} // namespace callrecordingctl
