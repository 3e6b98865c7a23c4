/// @file
/// Access to the rule file through the library, with the reason when that fails.

#include "RuleStore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

#include <callrecordingutils/tokensArray.h>

#include "Failure.h"

namespace callrecordingctl {
namespace {

namespace fs = std::filesystem;

/// The library only says that loading failed; the platform's class says why.
std::string WhyUnreadable() {
    try {
        auto const file = OpenRuleFile();
        std::vector<char> buffer(65536);
        while (file->GotoNextSection() != 0)
            for (char const* key : CallRecordingUtils::tokensArray)
                file->GetSectionEntry(key, buffer.data(), static_cast<unsigned>(buffer.size()));
    } catch (std::exception const& error) {
        return error.what();
    }
    return RuleFilePath() + ": cannot be read";
}

} // namespace

void UseConfiguration(std::string const& directory) {
    bool const isClosed = !directory.empty() && directory.back() == '/';
    setenv("QUVA_PATH", (directory + (isClosed ? "" : "/")).c_str(), 1);
}

std::string RuleFilePath() {
    char const* const directory = std::getenv("QUVA_PATH");
    return std::string(directory != nullptr ? directory : "/etc/quva-conf/") +
           "telephony/callrecordingdb";
}

std::unique_ptr<Configuration::MultiSectionFile> OpenRuleFile() {
    auto file = std::make_unique<Configuration::MultiSectionFile>(
        RuleFilePath().c_str(), true, false, false, nullptr, "{\n", "}\n", "=", "#", nullptr);
    file->Restart();
    return file;
}

bool HasRuleFile() {
    std::error_code error;
    fs::path const path(RuleFilePath());
    if (fs::symlink_status(path, error).type() != fs::file_type::not_found)
        return true;
    fs::path const directory = path.parent_path();
    if (fs::is_directory(directory, error))
        return false;
    fs::path const parent = directory.has_parent_path() ? directory.parent_path() : ".";
    if (directory.filename() == "telephony" && fs::is_directory(parent, error))
        return false;
    fs::path const culprit = directory.filename() == "telephony" ? parent : directory;
    throw Failure(EXIT_CODE_UNREADABLE,
                  fmt::format("{}: no such directory (the configuration directory is set with "
                              "--config-dir, or with QUVA_PATH, which ends in \"/\")",
                              culprit.string()));
}

RuleStore::RuleStore()
    : mpDatabase(CallRecordingUtils::CCallRecordingDB::GetInstance(false, false)) {}

RuleStore::~RuleStore() {
    CallRecordingUtils::CCallRecordingDB::CloseInstance();
}

RuleList RuleStore::Load(bool basicView) {
    CallRecordingUtils::CCallRecordingDB::SetMode(!basicView);
    if (HasRuleFile())
        return Reload();
    Say("{}: no such file, so there are no rules yet; \"add\" makes it\n", RuleFilePath());
    return {};
}

RuleList RuleStore::Reload() {
    if (!mpDatabase->Reload())
        throw Failure(EXIT_CODE_UNREADABLE, WhyUnreadable());
    RuleList rules;
    for (Rule const* rule : mpDatabase->GetCallRecordingRules())
        rules.push_back(*rule);
    return rules;
}

std::size_t FindRule(RuleList const& rules, std::int32_t id) {
    auto const hasId = [id](Rule const& rule) { return rule.callrecordingrule_id == id; };
    auto const found = std::find_if(rules.begin(), rules.end(), hasId);
    if (found == rules.end())
        throw Failure(
            EXIT_CODE_NO_SUCH_RULE,
            fmt::format("{} has no rule {}; \"callrecordingctl list\" shows which there are",
                        RuleFilePath(), id));
    if (std::count_if(found, rules.end(), hasId) > 1)
        FailAmbiguous(id);
    return static_cast<std::size_t>(found - rules.begin());
}

void FailAmbiguous(std::int32_t id) {
    throw Failure(EXIT_CODE_NO_SUCH_RULE,
                  fmt::format("{} has more than one rule {}; \"callrecordingctl check\" says where",
                              RuleFilePath(), id));
}

} // namespace callrecordingctl
