// Fills the rows of answers.

#include "analysis/ExampleMatches.h"

#include "matching/CallSide.h"

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kBits = 64;

bool Satisfies(CallSide const& side, RuleSide const& rule) {
    auto const type = static_cast<CallType>(rule.type);
    return side.MaySatisfy(rule.pattern, type) && side.Satisfies(rule.pattern, type);
}

} // namespace

bool Satisfies(CallParty const& party, RuleSide const& rule) {
    return Satisfies(CallSide(party.params, party.type), rule);
}

ExampleMatches::Row const& ExampleMatches::Of(WhichSide side, std::size_t number,
                                              CallParty const& party) {
    std::vector<Row>& rows = rows_[side == WhichSide::Caller ? 0 : 1];
    rows.resize(rules_.size());
    if (rows[number].empty())
        rows[number] = MakeRow(side, party);
    return rows[number];
}

ExampleMatches::Row ExampleMatches::MakeRow(WhichSide side, CallParty const& party) const {
    CallSide const asSeen(party.params, party.type);
    Row row(rules_.size() / kBits + 1, 0);
    for (std::size_t place = 0; place < rules_.size(); ++place) {
        RuleSides const sides = SidesOf(rules_[place]);
        if (rules_[place].recording_rule_state == RULE_ENABLED &&
            Satisfies(asSeen, side == WhichSide::Caller ? sides.caller : sides.called))
            row[place / kBits] |= std::uint64_t{1} << place % kBits;
    }
    return row;
}

std::optional<std::size_t> ExampleMatches::FirstOfBoth(Row const& callers, Row const& called) {
    for (std::size_t word = 0; word < callers.size(); ++word)
        if (std::uint64_t const both = callers[word] & called[word])
            for (std::size_t bit = 0; bit < kBits; ++bit)
                if ((both >> bit & 1) != 0)
                    return word * kBits + bit;
    return std::nullopt;
}

} // namespace CallRecordingUtils
