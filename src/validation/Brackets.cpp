// Finds the bracket to blame for groups that do not open and close in turn.

#include "validation/Brackets.h"

namespace CallRecordingUtils {

Finding FirstMisplacedBracket(std::string_view text, Brackets brackets) {
    constexpr std::size_t none = std::string_view::npos;
    std::size_t open = none;
    for (std::size_t at = 0; at < text.size(); ++at) {
        bool const isOpening = text[at] == brackets.opening;
        if (!isOpening && text[at] != brackets.closing)
            continue;
        if (isOpening && open != none)
            return {PatternFault::NestedGroup, at, 1};
        if (!isOpening && open == none)
            return {PatternFault::UnopenedGroup, at, 1};
        open = isOpening ? at : none;
    }
    return {PatternFault::UnclosedGroup, open, 1};
}

} // namespace CallRecordingUtils
