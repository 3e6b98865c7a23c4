// What a report is about: rules, where they are from, and who changed them meanwhile.

#ifndef RECORDS_REPORT_REPLAYFACTS_H
#define RECORDS_REPORT_REPLAYFACTS_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "model/RuleList.h"
#include "records/counting/CountedCalls.h"

namespace CallRecordingUtils {

/// A rule file, as it was when it was read.
struct RuleFileFacts {
    std::string path;
    std::string digest; ///< Empty when there is no such file.
    RuleList rules;
};

/// An edit of the rule file.
struct EditFacts {
    std::int64_t number = 0;          ///< In the history; 0 for one that it does not have yet.
    CallTime time = 0;                ///< When; of a change from outside, when it was first seen.
    std::optional<CallTime> earliest; ///< Of a change from outside: when it can have been made.
    bool isOutside = false;
    std::string user, command, message;
    std::vector<std::string> changes; ///< Sentences.
};

/// A time for which the file held the same rules. Without times: since ever, until now.
struct EraFacts {
    std::optional<CallTime> from, to;
    std::string digest;
    RuleList rules;
};

/// A claim about all calls, and whether the rules keep it.
struct ClaimFacts {
    std::size_t line = 0; ///< Of the policy.
    std::string text;
    std::string rules; ///< Which rules it is about.
    bool isProved = false;
    std::string verdict;
};

/// From when and until when a rule was in force, as far as calls show it: states that decided no
/// call do not count.
struct RuleSpan {
    bool isStillThere = true; ///< In the last rules that decided calls.
    std::optional<CallTime> since, until;
};

/// By which of the rules that the file has had calls are decided.
struct RulesAsked {
    bool areOfTheirTime = false; ///< For each call those of its time.
    std::string asOf;            ///< Else: those of this time; empty for those of now.
};

/// The rules that a report is about.
struct ReplayFacts {
    /// Where rules of their time decide: all that did, those of the last era first.
    RuleFileFacts here;
    std::optional<RuleFileFacts> there; ///< The rules to compare with.
    RulesAsked asked;
    std::vector<RuleSpan> spans;    ///< Of each rule, where rules of their time decide.
    std::vector<EditFacts> edits;   ///< Those between the first and the last call, in their order.
    std::vector<ClaimFacts> claims; ///< Of a policy; not a part of a state.
    std::size_t laterEdits = 0;     ///< How many were made after the last call.
    std::vector<std::string> options; ///< How calls were read and counted, as it was asked for.
};

/// What was counted, in a form to which more can be added.
struct ReplayState {
    ReplayFacts facts; ///< With the edits since the first call; in a part with all.
    std::map<std::size_t, EraFacts>
        eras; ///< Those that have calls, where rules of their time decide.
    CountedCalls calls;
};

/// A report for people.
struct WholeReport {
    ReplayFacts facts;
    ReplayReport report;
    std::vector<EraFacts> eras; ///< With all rules that decided: one, where rules of one time did.
};

WholeReport InOne(ReplayState&& state);

} // namespace CallRecordingUtils

#endif
