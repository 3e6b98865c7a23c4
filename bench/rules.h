/// @file
/// The rule lists that are timed, and calls for them.

#ifndef BENCH_RULES_H
#define BENCH_RULES_H

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <CallParams.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

namespace bench {

using Rule = CallRecordingUtils::CallRecordingRuleParams;

struct Call {
    CallParams caller;
    CallType callerType;
    CallParams called;
    CallType calledType;
    int decidedBy = -1; ///< Once that is known, the place of the rule in the list; -1 for none.
};

enum class Mix {
    Numbers,    ///< Callers "*"; called: extensions, prefixes, sets, range expressions, suffixes.
    Sip,        ///< One side "*", the other user@host or user@host:port.
    BothSides,  ///< Both sides restricted: three quarters numbers, one quarter SIP.
    Prefix,     ///< Callers "*", as all below; called: all begin with the same six digits.
    Extensions, ///< Exact extensions.
    Domain,     ///< SIP users of one domain.
    Tails,      ///< "*" and a literal tail.
    SetsFirst,  ///< Two sets, then digits.
    SetsOnly,   ///< Nothing but sets.
    Middle,     ///< Digits between two "*".
};

/// Returns the name of a mix in the tables.
char const* NameOf(Mix mix);

/// Returns whether some patterns of a mix have range expressions.
bool MixHasRanges(Mix mix);

struct RuleList {
    Mix mix;
    bool hasRanges; ///< Some patterns have range expressions, which globs do not have.
    std::vector<Rule> rules;
    std::vector<Call> examples; ///< A call for each rule, which the rule matches.
};

/// Always the same list for the same arguments. The identifier of a rule is its place in the list.
RuleList MakeRules(Mix mix, std::size_t size, bool withRanges, unsigned seed = 1);

/// Returns the rules as they are written in the rule file.
std::string RuleFileText(std::vector<Rule> const& rules);

constexpr int kCallsInGroup = 64;

struct CallGroup {
    char const* name;
    std::vector<Call> calls;
};

/// Returns three groups of calls: decided by a rule in the first tenth of the list (of ten rules:
/// by the first three), by one in the last tenth, and by none. decide is the library's decision.
std::vector<CallGroup> MakeCalls(RuleList const& list,
                                 std::function<int(Call const&)> const& decide);

/// Returns calls of all kinds, near misses among them, for comparing the engines.
std::vector<Call> MakeRandomCalls(RuleList const& list, std::size_t count);

} // namespace bench

#endif
