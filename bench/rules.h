/// @file
/// The rule lists that are timed, and the calls that they decide.

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
    int decidedBy = -1; ///< Place of the rule in the list, -1 for none, once that is known.
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

/// The name of a mix, as the tables show it.
char const* NameOf(Mix mix);

/// Whether range expressions are among the patterns of a mix.
bool MixHasRanges(Mix mix);

struct RuleList {
    Mix mix;
    bool hasRanges; ///< Range expressions, which a glob cannot say, are among the patterns.
    std::vector<Rule> rules;
    std::vector<Call> examples; ///< For every rule a call that it matches.
};

/// Always the same list for the same arguments. The identifier of a rule is its place in the list.
RuleList MakeRules(Mix mix, std::size_t size, bool withRanges, unsigned seed = 1);

/// The rules as the rule file has them.
std::string RuleFileText(std::vector<Rule> const& rules);

constexpr int kCallsInGroup = 64;

struct CallGroup {
    char const* name;
    std::vector<Call> calls;
};

/// Groups of calls that a rule decides in the first tenth of the list (the first three rules of
/// ten), in its last tenth, and that none decides. decide is the library's decision.
std::vector<CallGroup> MakeCalls(RuleList const& list,
                                 std::function<int(Call const&)> const& decide);

/// Calls of all kinds, near misses among them, to compare answers with.
std::vector<Call> MakeRandomCalls(RuleList const& list, std::size_t count);

} // namespace bench

#endif
