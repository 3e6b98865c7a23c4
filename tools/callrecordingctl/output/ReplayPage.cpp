// Adds to the counts what only the rules themselves tell.

#include "output/ReplayPage.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>

#include <sys/stat.h>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "Failure.h"
#include "administration/check/Reasons.h"
#include "analysis/RuleAnalysis.h"
#include "output/RuleText.h"
#include "records/page/Page.h"

namespace callrecordingctl {
namespace {

/// Empty where nothing is known.
std::string Why(RuleReport const& report, RuleList const& rules) {
    if (report.standing != RuleReport::kDecides)
        return WhyItDecidesNothing(report, rules);
    return fmt::format(
        "it decided no call of these files; of typed calls it would decide one from {} to {}",
        AddressText(report.call->caller), AddressText(report.call->called));
}

std::map<std::size_t, std::string> WhyNever(ReplayReport const& report, RuleList const& rules) {
    std::map<std::size_t, std::string> why;
    RuleAnalysis analysis(rules);
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (report.byRule[i].calls > 0)
            continue;
        std::string const reason = Why(analysis.Report(i, 0), rules);
        if (!reason.empty())
            why[i] = reason;
    }
    return why;
}

/// The time; where pages are to be the same in every run, the one that SOURCE_DATE_EPOCH gives.
std::string Now() {
    char const* const given = std::getenv("SOURCE_DATE_EPOCH");
    std::time_t const now =
        given != nullptr ? static_cast<std::time_t>(std::atoll(given)) : std::time(nullptr);
    std::tm parts{};
    char text[64] = "";
    if (localtime_r(&now, &parts) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %z", &parts);
    return text;
}

/// Replaces the file at path as a whole, so that a full disk leaves the page that was there. What
/// is no regular file, such as a pipe, is written to.
void Write(std::string const& path, std::string const& page) {
    struct stat status {};
    bool const isThere = stat(path.c_str(), &status) == 0;
    std::optional<HostPlatform::FileStamp> stamp;
    if (isThere && S_ISREG(status.st_mode))
        stamp = HostPlatform::FileStamp::Of(status);
    if (!isThere || stamp) {
        try {
            return HostPlatform::ReplaceFile(path, page, stamp);
        } catch (std::exception const& error) {
            throw Failure(kExitUnsaved,
                          fmt::format("{}: cannot be written: {}", path, error.what()));
        }
    }
    std::ofstream file(path, std::ios::binary);
    file << page;
    file.close();
    if (!file)
        throw Failure(kExitUnsaved,
                      fmt::format("{}: cannot be written: {}", path, std::strerror(errno)));
}

} // namespace

void RequireSparePage(std::string const& page, std::vector<std::string> const& used) {
    namespace fs = std::filesystem;
    std::error_code error;
    for (std::string const& path : used)
        if (fs::equivalent(page, path == "-" ? "/dev/stdin" : path, error) &&
            fs::is_regular_file(page, error))
            throw Failure(kExitUsage, fmt::format("--html {}: would overwrite {}", page,
                                                  path == "-" ? "standard input" : path));
}

void WriteReplayPage(std::string const& path, ReplayReport const& report,
                     ReplayFacts const& facts) {
    PageFacts page;
    for (Rule const& rule : facts.here.rules)
        page.sides.push_back({SideText(rule.caller_pattern, rule.caller_call_type),
                              SideText(rule.called_pattern, rule.called_call_type)});
    page.whyNever = WhyNever(report, facts.here.rules);
    page.made = Now();
    page.by = "callrecordingctl " CALLRECORDINGCTL_VERSION;
    Write(path, PageOf(report, facts, page));
}

} // namespace callrecordingctl
