// The count of a pattern's constructs.

#include "matching/PatternCounts.h"

#include "language/Elements.h"

namespace CallRecordingUtils {

void CountConstructs(std::string_view pattern, wild_card_counts& counts) {
    for (std::size_t at = 0;;) {
        Element const element = ReadElement(pattern, at);
        switch (element.construct) {
        case Construct::End: return;
        case Construct::Literal: ++counts.symbol_count; break;
        case Construct::AnyOne: ++counts.question_count; break;
        case Construct::AnyRun: ++counts.star_count; break;
        case Construct::Set: ++counts.symbol_set_count; break;
        case Construct::Range: ++counts.range_expression_count; break;
        case Construct::Stop: ++at; continue; // The matcher stops here, the counting does not.
        case Construct::Unclosed:
            ++(pattern[at] == '[' ? counts.symbol_set_count : counts.range_expression_count);
            return;
        }
        at = element.end;
    }
}

} // namespace CallRecordingUtils
