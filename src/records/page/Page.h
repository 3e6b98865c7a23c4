// The report of a replay as a page for an auditor's folder.

#ifndef RECORDS_PAGE_PAGE_H
#define RECORDS_PAGE_PAGE_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "records/report/ReportJson.h"

namespace CallRecordingUtils {

/// What the page says in addition to the report. Texts are not escaped.
struct PageFacts {
    struct Sides {
        std::string from, to; // Call type and pattern, for people.
    };
    std::vector<Sides> sides; // Of the rules, in order.
    /// Why a rule never applied, by its place, where that is known,
    std::map<std::size_t, std::string> whyNever;
    std::size_t lookedInto = 0; // for so many of the rules that never applied.
    std::string system;         // Whose calls they are.
    std::string made;           // When,
    std::string by;             // by which program, and by whom, where.
    std::string zone;           // Of all times.
    std::string policy;         // The file of the claims; empty for none.
};

/// A page in one file: no network, no scripts.
std::string PageOf(ReplayReport const& report, ReplayFacts const& facts, PageFacts const& page);

} // namespace CallRecordingUtils

#endif
