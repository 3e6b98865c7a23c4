// What a report is about: rules, where they are from, and who changed them meanwhile.

#ifndef RECORDS_REPORT_REPLAYFACTS_H
#define RECORDS_REPORT_REPLAYFACTS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/RuleList.h"
#include "records/counting/CountedCalls.h"
#include "records/report/RuleForms.h"

namespace CallRecordingUtils {

/// A rule file, as it was when it was read.
struct RuleFileFacts {
    std::string path;
    std::string digest; ///< Empty when there is no such file.
    RuleList rules;
};

/// An edit of the rule file.
struct EditFacts {
    std::int64_t number = 0;        ///< In the history; 0 for one that it does not have yet.
    Moment time;                    ///< When; of a change from outside, when it was first seen.
    std::optional<Moment> earliest; ///< Of a change from outside: it was made after this, if known.
    bool isOutside = false;
    std::string user, command, message;
    std::vector<std::string> changes; ///< Sentences.
    bool isCertain = true;            ///< It was made in the period; otherwise it may have been.
};

/// A time for which the file held the same rules. Without times: since ever, until now.
struct EraFacts {
    std::optional<Moment> from,
        to; ///< The instants never decrease, also where a clock was set back.
    std::string digest;
    std::string problem;     ///< Why the rules are not known; empty if they are.
    std::vector<Form> forms; ///< The rules.
};

/// When the first and the last call were: within a range each, where a time can be two instants.
struct Period {
    Instants first, last;
};

/// A claim about all calls, and whether the rules keep it.
struct ClaimFacts {
    std::size_t line = 0; ///< Of the policy.
    std::string text;
    std::string rules; ///< Which rules it is about.
    bool isProved = false;
    std::string verdict;
};

/// When the file had a rule, in the states of the period.
struct RuleSpan {
    bool isStillThere = true; ///< In the last of these states.
    bool isNew = false;       ///< The period began before it.
    std::optional<CallTime> since,
        until; ///< When the first state with it began, and the last ended.
    std::vector<std::pair<CallTime, CallTime>> breaks; ///< Times in between of states without it.
};

/// By which of the rules that the file has had calls are decided.
struct RulesAsked {
    bool areOfTheirTime = false; ///< For each call those of its time.
    std::string asOf;            ///< Else: those of this time; empty for those of now.
};

/// The rules that a report is about.
struct ReplayFacts {
    /// Where rules of their time decide: all of the period, those of the last state first.
    RuleFileFacts here;
    std::optional<RuleFileFacts> there; ///< The rules to compare with.
    RulesAsked asked;
    std::vector<RuleSpan> spans;      ///< Of each rule, where rules of their time decide.
    std::vector<EraFacts> unknown;    ///< States of the period whose rules are not known.
    std::vector<EditFacts> edits;     ///< Those that were or may be of the period, in their order.
    std::vector<ClaimFacts> claims;   ///< Of a policy; not a part of a state.
    std::size_t laterEdits = 0;       ///< How many were made after the last call.
    std::vector<std::string> options; ///< How calls were read and counted, as it was asked for.
};

/// What was counted, in a form to which more can be added.
struct ReplayState {
    ReplayFacts facts; ///< With the edits since the first call; in a part with all.
    std::optional<Period> period;
    RuleForms forms;
    /// Where rules of their time decide: the states of the file in the period, in a part all.
    std::map<std::size_t, EraFacts> eras;
    CountedCalls calls;
};

/// A report for people.
struct WholeReport {
    ReplayFacts facts;
    ReplayReport report;
    RuleForms forms;
    std::vector<EraFacts> eras; ///< Of the period; one, where rules of one time decide.
};

/// Widens the period so that it covers the other one.
void Widen(std::optional<Period>& period, std::optional<Period> const& other);

/// Whether the rules were in force at some time of the period.
bool IsWithin(EraFacts const& era, std::optional<Period> const& period);

WholeReport InOne(ReplayState&& state);

} // namespace CallRecordingUtils

#endif
