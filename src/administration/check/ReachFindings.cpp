// Asks the analysis about each rule, and says what it found.

#include "administration/check/ReachFindings.h"

#include <optional>
#include <utility>

#include <fmt/format.h>

#include "administration/check/Reasons.h"
#include "administration/inspection/RuleNames.h"
#include "analysis/RuleAnalysis.h"
#include "calls/PartyPatterns.h"

namespace CallRecordingUtils {
namespace {

RuleList RulesOf(std::vector<StoredRule> const& stored) {
    RuleList rules;
    for (StoredRule const& rule : stored)
        rules.push_back(rule.rule);
    return rules;
}

class ReachChecker {
  public:
    ReachChecker(std::vector<StoredRule> const& stored, CheckOptions const& options)
        : stored_(stored), options_(options), rules_(RulesOf(stored)), calls_(options.calls),
          standings_(stored.size()) {}

    /// One kind of calls after the other, so that only one analysis is held at a time.
    std::vector<FileFinding> Run() {
        Analyse(
            calls_,
            [this] {
                RuleReport const report = analysis_->Report(place_, options_.mostTakers);
                standings_[place_] = report.standing;
                CheckReport(report);
                CheckParties();
            });
        Analyse(OtherThan(calls_), [this] { CheckOther(); });
        return std::move(findings_);
    }

  private:
    template <typename Check>
    void Analyse(CallKind calls, Check const& check) {
        analysis_.reset();
        analysis_.emplace(rules_, options_.memory, calls);
        for (FileFinding const& finding : findings_)
            Count(finding);
        for (place_ = 0; place_ < stored_.size(); ++place_) {
            std::size_t const before = findings_.size();
            check();
            for (std::size_t i = before; i < findings_.size(); ++i)
                Count(findings_[i]);
            if (options_.onProgress)
                options_.onProgress(++done_, 2 * stored_.size());
        }
    }

    /// What was found is held, too.
    void Count(FileFinding const& finding) {
        analysis_->Reserve(sizeof(finding) + finding.message.capacity() +
                           finding.takenBy.capacity() * sizeof(finding.takenBy[0]));
    }

    FileFinding& Find(std::string_view kind, std::string const& message) {
        FileFinding finding{};
        finding.kind = kind;
        finding.line = stored_[place_].line;
        finding.position = place_ + 1;
        finding.id = rules_[place_].callrecordingrule_id;
        finding.message = message;
        findings_.push_back(finding);
        return findings_.back();
    }

    void CheckReport(RuleReport const& report) {
        Rule const& rule = rules_[place_];
        switch (report.standing) {
        case RuleReport::kHidden: CheckHidden(report); break;
        case RuleReport::kMatchesNothing: // An empty pattern is reported as such.
            if (!rule.caller_pattern.empty() && !rule.called_pattern.empty())
                Find(kMatchesNothing, WhyItDecidesNothing(report, rules_)).neverDecides = true;
            break;
        case RuleReport::kUndecided:
            Find(report.why->rule == place_ ? kNotAnalysable : kUndecided,
                 WhyItDecidesNothing(report, rules_));
            break;
        case RuleReport::kDecides: CheckDeciding(report); break;
        case RuleReport::kOff: break;
        }
    }

    void CheckHidden(RuleReport const& report) {
        HiddenRule const hidden = analysis_->Judge(place_, report.takenBy);
        std::string message = WhyItDecidesNothing(report, rules_);
        std::string_view kind = kNeverDecides;
        if (hidden.isTakenAlike == true) {
            kind = kDroppable;
            message += report.takenBy.size() == 1 ? ", and does the same" : ", and do the same";
        } else if (hidden.isForbidden) {
            kind = kForbidden;
            message += ", and a rule that says never takes some of them";
        } else if (hidden.isBehindWider) {
            kind = kOrder;
            message += ", and does something else; is this rule meant to come before it?";
        } else if (hidden.isTakenAlike == false) {
            kind = kConflict;
            message += ", and something else is done with some of them";
        }
        FileFinding& finding = Find(kind, message);
        SetTakers(report, finding);
        finding.neverDecides = !report.takenBy.empty();
        if (hidden.call && hidden.taker)
            finding.loss = {*hidden.taker, *hidden.call};
    }

    void CheckDeciding(RuleReport const& report) {
        Removal const removal = analysis_->WithoutRule(place_);
        if (removal.changesNothing == true)
            Find(kCouldGo, removal.heirs.empty()
                               ? "could go without any call being decided differently"
                               : fmt::format("could go: {} behind it would do the same with the "
                                             "calls that it decides",
                                             RulesText(rules_, removal.heirs)));
        if (!report.takenBy.empty())
            SetTakers(report,
                      Find(kLosesCalls, "some calls that it matches are taken by " +
                                            RulesText(rules_, report.takenBy) +
                                            (report.isComplete ? "" : ", and perhaps by more")));
    }

    static void SetTakers(RuleReport const& report, FileFinding& finding) {
        finding.takenBy = report.takenBy;
        finding.isTakenByComplete = report.isComplete;
    }

    void CheckParties() {
        Rule const& rule = rules_[place_];
        if (rule.recording_rule_state != RULE_ENABLED)
            return;
        CheckParty("from", rule.caller_pattern, rule.caller_call_type);
        CheckParty("to", rule.called_pattern, rule.called_call_type);
    }

    void CheckParty(char const* side, std::string const& pattern, CallType type) {
        char const* const why = pattern.empty() ? nullptr : WhyNoPartyMatches(pattern, type);
        if (why != nullptr)
            Find(kNoParty,
                 fmt::format("{}: the pattern {}; only typed questions can match it", side, why));
    }

    /// Says when the rule decides calls of the one kind only, unless no party can match it anyway.
    void CheckOther() {
        RuleReport const other = analysis_->Report(place_, 0);
        if (other.standing == standings_[place_] || other.standing == RuleReport::kMatchesNothing)
            return;
        char const* const which = calls_ == CallKind::Typed ? "calls of parties" : "typed calls";
        if (other.standing == RuleReport::kDecides)
            Find(kOtherCalls, fmt::format("of {} it decides some", which));
        else
            Find(kOtherCalls, fmt::format("of {}: {}", which, WhyItDecidesNothing(other, rules_)));
    }

    std::vector<StoredRule> const& stored_;
    CheckOptions const& options_;
    RuleList const rules_;
    CallKind const calls_;
    std::optional<RuleAnalysis> analysis_;
    std::vector<RuleReport::Standing> standings_; // Of rules, for calls_.
    std::size_t done_ = 0;
    std::size_t place_ = 0;
    std::vector<FileFinding> findings_;
};

} // namespace

std::vector<FileFinding> FindReach(std::vector<StoredRule> const& rules,
                                   CheckOptions const& options) {
    return ReachChecker(rules, options).Run();
}

} // namespace CallRecordingUtils
