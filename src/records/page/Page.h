// What a replay counted, as a page for an auditor's folder.

#ifndef RECORDS_PAGE_PAGE_H
#define RECORDS_PAGE_PAGE_H

#include <map>
#include <string>
#include <vector>

#include "records/report/ReportJson.h"

namespace CallRecordingUtils {

/// What the page says beside the report. Texts are not escaped yet.
struct PageFacts {
    struct Sides {
        std::string from, to; // Call type and pattern, for people.
    };
    std::vector<Sides> sides; // Of the rules in their order.
    /// Why a rule never applied, by its index, where that is known.
    std::map<std::size_t, std::string> whyNever;
    std::string made; // When,
    std::string by;   // and by which program.
};

/// One file that needs nothing else: no network, no script.
std::string PageOf(ReplayReport const& report, ReplayFacts const& facts, PageFacts const& page);

} // namespace CallRecordingUtils

#endif
