// Reads the rules for the commands.

#include "Rules.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

#include "Failure.h"
#include "database/RuleFile.h"

namespace callrecordingctl {

namespace fs = std::filesystem;

std::string RuleFilePath(std::optional<std::string> const& directory) {
    if (directory)
        return CallRecordingUtils::RuleFilePathIn(*directory +
                                                  (directory->back() == '/' ? "" : "/"));
    char const* const configured = std::getenv("QUVA_PATH");
    return CallRecordingUtils::RuleFilePathIn(
        configured != nullptr ? configured : CallRecordingUtils::kDefaultDirectory);
}

bool HasRuleFile(std::string const& path) {
    std::error_code error;
    if (fs::symlink_status(path, error).type() != fs::file_type::not_found)
        return true;
    fs::path const directory = fs::path(path).parent_path();
    if (fs::is_directory(directory, error))
        return false;
    fs::path const parent = directory.has_parent_path() ? directory.parent_path() : ".";
    if (directory.filename() == "telephony" && fs::is_directory(parent, error))
        return false;
    fs::path const culprit = directory.filename() == "telephony" ? parent : directory;
    throw Failure(kExitUnreadable,
                  fmt::format("{}: no such directory (the configuration directory is set with "
                              "--config-dir, or with QUVA_PATH, which ends in \"/\")",
                              culprit.string()));
}

RuleList LoadRules(std::string const& path) {
    if (!HasRuleFile(path)) {
        Say("{}: no such file, so there are no rules yet; \"add\" makes it", path);
        return {};
    }
    try {
        RuleList rules;
        CallRecordingUtils::RuleFile file(path);
        while (file.Next())
            rules.push_back(file.ReadRule());
        return rules;
    } catch (std::exception const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

std::size_t FindRule(RuleList const& rules, std::int32_t id) {
    auto const hasId = [id](Rule const& rule) { return rule.callrecordingrule_id == id; };
    auto const found = std::find_if(rules.begin(), rules.end(), hasId);
    if (found == rules.end())
        throw Failure(
            kExitNoSuchRule,
            fmt::format("there is no rule {}; \"callrecordingctl list\" shows which there are",
                        id));
    if (std::count_if(found, rules.end(), hasId) > 1)
        throw Failure(
            kExitNoSuchRule,
            fmt::format("there is more than one rule {}; \"callrecordingctl check\" says where",
                        id));
    return static_cast<std::size_t>(found - rules.begin());
}

} // namespace callrecordingctl
