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
#include <unistd.h>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "Failure.h"
#include "administration/check/Reasons.h"
#include "administration/history/SaveRecorded.h"
#include "analysis/RuleAnalysis.h"
#include "output/RuleText.h"
#include "records/page/Page.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kMostReasons = 300; // Why rules never applied.

/// Empty where nothing is known.
std::string Why(RuleReport const& report, RuleList const& rules) {
    if (report.standing != RuleReport::kDecides)
        return WhyItDecidesNothing(report, rules);
    return fmt::format(
        "it decided no call of these files; of typed calls it would decide one from {} to {}",
        AddressText(report.call->caller), AddressText(report.call->called));
}

/// Looks into the first rules only where there are many: nobody waits for the reasons of thousands,
/// and check has them.
void LookIntoRules(PageFacts& page, ReplayReport const& report, RuleList const& rules) {
    RuleAnalysis analysis(rules);
    page.lookedInto = 0;
    for (std::size_t i = 0; i < rules.size() && page.lookedInto < kMostReasons; ++i) {
        if (report.byRule[i].calls > 0)
            continue;
        ++page.lookedInto;
        std::string const reason = Why(analysis.Report(i, 0), rules);
        if (!reason.empty())
            page.whyNever[i] = reason;
    }
}

std::string HostName() {
    char name[256] = "";
    return gethostname(name, sizeof name - 1) == 0 ? name : "an unknown host";
}

/// "CET (+0100)", as it is now.
std::string ZoneName() {
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    char text[64] = "";
    if (localtime_r(&now, &parts) != nullptr)
        std::strftime(text, sizeof text, "%Z (%z)", &parts);
    return text;
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

void WriteReplayPage(PageOptions const& options, ReplayReport const& report,
                     ReplayFacts const& facts) {
    PageFacts page;
    for (Rule const& rule : facts.here.rules)
        page.sides.push_back({SideText(rule.caller_pattern, rule.caller_call_type),
                              SideText(rule.called_pattern, rule.called_call_type)});
    page.lookedInto = facts.here.rules.size();
    if (!facts.asked.areOfTheirTime) // Rules of several times are no list that decides.
        LookIntoRules(page, report, facts.here.rules);
    page.system = options.system.empty() ? HostName() : options.system;
    page.made = Now();
    page.by = fmt::format("callrecordingctl {}, user {}, on {}", CALLRECORDINGCTL_VERSION,
                          EditorName(), HostName());
    page.zone = ZoneName();
    page.policy = options.policy;
    Write(options.path, PageOf(report, facts, page));
}

} // namespace callrecordingctl
