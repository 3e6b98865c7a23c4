// The sections of the page.

#ifndef RECORDS_PAGE_SECTIONS_H
#define RECORDS_PAGE_SECTIONS_H

#include <string>

#include "records/page/Page.h"

namespace CallRecordingUtils {

/// What all sections are about.
struct PageSource {
    ReplayReport const& report;
    ReplayFacts const& facts;
    PageFacts const& page;

    RuleList const& Rules() const { return facts.here.rules; }
};

// Each is empty if there is nothing to say, or has its heading.
std::string ReconciliationSection(PageSource const& source);
std::string EditsSection(PageSource const& source);
std::string ClaimsSection(PageSource const& source);
std::string RulesSection(PageSource const& source);
std::string NeverAppliedSection(PageSource const& source);
std::string NotRecordedSection(PageSource const& source);
std::string DifferencesSection(PageSource const& source);
std::string ReadingSection(PageSource const& source);

/// What a rule does with a call, or that none takes it.
std::string OutcomeHtml(RuleList const& rules, Decision decision);

std::string Heading(char const* text);

} // namespace CallRecordingUtils

#endif
