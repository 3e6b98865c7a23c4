// Reads the rules for the commands.

#include "Rules.h"

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

namespace {

/// The directory of the rule file at path.
fs::path DirectoryOf(std::string const& path) {
    fs::path const directory = fs::path(path).parent_path();
    return directory.empty() ? "." : directory;
}

} // namespace

void RefuseMistakenDirectory(std::string const& path) {
    std::error_code error;
    fs::path const directory = DirectoryOf(path);
    if (fs::exists(directory, error))
        return;
    fs::path const given = directory.parent_path();
    auto const fail = [&given](char const* what, fs::path const& meant) {
        throw Failure(kExitUnreadable,
                      fmt::format("{}: is {}; the configuration directory is {}", given.string(),
                                  what, meant.empty() ? "." : meant.string()));
    };
    fs::path const file(RuleFilePathIn("")); // telephony/callrecordingdb
    if (directory.filename() != file.parent_path()) {
        char const* const configured = std::getenv("QUVA_PATH");
        if (configured != nullptr && path == RuleFilePathIn(configured))
            throw Failure(kExitUnreadable,
                          fmt::format("{}: no such directory; QUVA_PATH is {} and has to end in "
                                      "\"/\"",
                                      directory.string(), configured));
    } else if (given.filename() == file.filename() && fs::is_regular_file(given, error)) {
        fail("the rule file", given.parent_path().parent_path());
    } else if (given.filename() == file.parent_path() && fs::is_directory(given, error)) {
        fail("the directory with the rules itself", given.parent_path());
    }
}

void RequireDirectory(std::string const& path) {
    fs::path const directory = DirectoryOf(path);
    std::error_code error;
    if (fs::is_directory(directory, error))
        return;
    RefuseMistakenDirectory(path);
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
        Say("{}: no such file, so there are no rules; \"add\" makes it", path);
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

} // namespace callrecordingctl
