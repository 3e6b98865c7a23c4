// Says when the file had rules and when they were edited.

#include "records/report/PeriodText.h"

#include <algorithm>

#include <fmt/format.h>

namespace CallRecordingUtils {

std::string InFileText(RuleSpan const& span) {
    bool const hasEnded = !span.isStillThere && span.until;
    std::string text =
        span.isNew && hasEnded
            ? fmt::format("from {} until {}", TimeText(*span.since), TimeText(*span.until))
        : span.isNew ? "since " + TimeText(*span.since)
        : hasEnded   ? "until " + TimeText(*span.until)
                     : "throughout";
    if (span.breaks.size() == 1)
        text += fmt::format(", but not from {} until {}", TimeText(span.breaks.front().first),
                            TimeText(span.breaks.front().second));
    else if (!span.breaks.empty())
        text += fmt::format(", with {} breaks", span.breaks.size());
    return text;
}

std::string MadeText(EditFacts const& edit) {
    return fmt::format(
        "made {}{}, when it was first seen",
        edit.earliest ? fmt::format("between {} and ", TimeText(edit.earliest->shown)) : "by ",
        TimeText(edit.time.shown));
}

std::string EditCountText(std::vector<EditFacts> const& edits) {
    auto const certain = std::count_if(edits.begin(), edits.end(),
                                       [](EditFacts const& edit) { return edit.isCertain; });
    auto const others = static_cast<std::ptrdiff_t>(edits.size()) - certain;
    return others == 0 ? std::to_string(certain)
                       : fmt::format("{}, perhaps {} more", certain, others);
}

std::vector<std::string> UnknownSentences(std::vector<EraFacts> const& unknown) {
    std::vector<std::string> sentences;
    for (auto first = unknown.begin(); first != unknown.end();) {
        auto end = first + 1;
        while (end != unknown.end() && end->problem == first->problem && (end - 1)->to &&
               end->from->instant == (end - 1)->to->instant)
            ++end;
        EraFacts const& last = *(end - 1);
        sentences.push_back(fmt::format("the rules that the file had from {} until {} are not "
                                        "known: {}; a rule that is told of may "
                                        "have been in it then, too",
                                        TimeText(first->from->shown),
                                        last.to ? TimeText(last.to->shown) : "now",
                                        first->problem));
        first = end;
    }
    return sentences;
}

} // namespace CallRecordingUtils
