// Reads the rules for the commands.

#include "Rules.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "Failure.h"
#include "administration/inspection/Digest.h"
#include "administration/inspection/ReadRules.h"
#include "database/RuleFile.h"

namespace callrecordingctl {

namespace fs = std::filesystem;

std::string RuleFilePath(std::optional<std::string> const& directory) {
    if (directory)
        return RuleFilePathIn(*directory + (directory->back() == '/' ? "" : "/"));
    char const* const configured = std::getenv("QUVA_PATH");
    return RuleFilePathIn(configured != nullptr ? configured : kDefaultDirectory);
}

void RequireDirectory(std::string const& path) {
    fs::path const directory = fs::path(path).parent_path();
    std::error_code error;
    if (fs::is_directory(directory, error))
        return;
    if (fs::exists(directory, error))
        throw Failure(kExitUnreadable, fmt::format("{}: is not a directory", directory.string()));
    fs::path const parent = directory.parent_path();
    if (directory.filename() == "telephony" && fs::is_directory(parent, error))
        throw Failure(kExitUnreadable,
                      fmt::format("{}: no such directory, so the library cannot load; \"add\" "
                                  "makes it with its first rule",
                                  directory.string()));
    throw Failure(
        kExitUnreadable,
        fmt::format("{}: no such directory (the configuration directory is set with "
                    "--config-dir, or with QUVA_PATH, which ends in \"/\")",
                    directory.filename() == "telephony" ? parent.string() : directory.string()));
}

bool HasRuleFile(std::string const& path) {
    RequireDirectory(path);
    std::error_code error;
    return fs::symlink_status(path, error).type() != fs::file_type::not_found;
}

RuleList LoadRules(std::string const& path, std::string& digest) {
    if (!HasRuleFile(path))
        Say("{}: no such file, so there are no rules yet; \"add\" makes it", path);
    try {
        std::string const text = HostPlatform::ReadFile(path).text;
        digest = DigestOf(text);
        return RulesOf(text, path);
    } catch (std::runtime_error const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

RuleList LoadRules(std::string const& path) {
    std::string digest;
    return LoadRules(path, digest);
}

std::size_t FindRule(RuleList const& rules, RuleName name) {
    constexpr char kHint[] = "\"callrecordingctl list\" shows which there are";
    if (name.isPosition) {
        if (name.number < 1 || static_cast<std::size_t>(name.number) > rules.size())
            throw Failure(kExitNoSuchRule,
                          fmt::format("there is no rule #{}; {}", name.number, kHint));
        return static_cast<std::size_t>(name.number) - 1;
    }
    auto const hasId = [name](Rule const& rule) {
        return rule.callrecordingrule_id == name.number;
    };
    auto const found = std::find_if(rules.begin(), rules.end(), hasId);
    if (found == rules.end())
        throw Failure(kExitNoSuchRule, fmt::format("there is no rule {}; {}", name.number, kHint));
    if (std::count_if(found, rules.end(), hasId) > 1)
        throw Failure(kExitNoSuchRule,
                      fmt::format("there is more than one rule {}; name it by its position, as in "
                                  "'#{}', or give them new identifiers with \"renumber\"",
                                  name.number, found - rules.begin() + 1));
    return static_cast<std::size_t>(found - rules.begin());
}

} // namespace callrecordingctl
