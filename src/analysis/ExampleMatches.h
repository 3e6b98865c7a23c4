// Which rules the sides of example calls satisfy, for telling the decider of calls that are put
// together of them.

#ifndef ANALYSIS_EXAMPLEMATCHES_H
#define ANALYSIS_EXAMPLEMATCHES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "analysis/RuleSpace.h"

namespace CallRecordingUtils {

/// Asks the matcher, once for each side and rule, and keeps a bit of each answer: of n rules with
/// an example each, n * n / 4 bytes.
class ExampleMatches {
  public:
    /// rules must outlive the object.
    explicit ExampleMatches(std::vector<CallRecordingRuleParams> const& rules) : rules_(rules) {}

    static std::size_t BytesFor(std::size_t rules) { return rules * rules / 4; }

    /// Which of the rules one party satisfies as caller or as called; the row with that number is
    /// filled when it is asked for the first time.
    using Row = std::vector<std::uint64_t>;
    Row const& Of(WhichSide side, std::size_t number, CallParty const& party);

    /// The first enabled rule that both sides satisfy.
    static std::optional<std::size_t> FirstOfBoth(Row const& callers, Row const& called);

  private:
    Row MakeRow(WhichSide side, CallParty const& party) const;

    std::vector<CallRecordingRuleParams> const& rules_;
    std::array<std::vector<Row>, 2> rows_;
};

/// Whether party satisfies rule, one side of a rule. Asks the matcher.
bool Satisfies(CallParty const& party, RuleSide const& rule);

} // namespace CallRecordingUtils

#endif
