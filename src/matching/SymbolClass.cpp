// The count of a pattern's constructs.

#include "matching/SymbolClass.h"

namespace CallRecordingUtils {

void CountConstructs(std::string_view pattern, wild_card_counts& counts) {
    std::size_t at = 0;
    auto const skipGroup = [&](char closing) { at = pattern.find(closing, at); };
    // A group that is not closed leaves at at npos, which ends the loop.
    for (; at < pattern.size(); ++at) {
        switch (char const c = pattern[at]) {
        case '?': ++counts.question_count; break;
        case '*': ++counts.star_count; break;
        case '[':
            ++counts.symbol_set_count;
            skipGroup(']');
            break;
        case '<':
            ++counts.range_expression_count;
            skipGroup('>');
            break;
        default:
            if (IsLiteral(c))
                ++counts.symbol_count;
        }
        if (at == std::string_view::npos)
            return;
    }
}

} // namespace CallRecordingUtils
