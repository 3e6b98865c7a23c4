// Reads rules together with what tells one state of their file from another.

#ifndef LOADING_LOADEDRULES_H
#define LOADING_LOADEDRULES_H

#include <cstdint>
#include <ctime>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "calls/RuleSet.h"

namespace CallRecordingUtils {

/// What a file's metadata tells: two that differ belong to different states of the file.
struct FileStamp {
    int error = 0; // Why there are no metadata: ENOENT when there is no file.
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t written = 0; // In nanoseconds, as changed.
    std::int64_t changed = 0;

    bool operator==(FileStamp const& other) const;

    /// Takes one system call.
    static FileStamp Of(std::string const& path);
};

/// Rules and where they come from; nothing changes them.
struct LoadedRules {
    /// No rules, because nothing was read yet.
    LoadedRules() = default;
    LoadedRules(std::vector<CallRecordingRuleParams> records, std::string sha256);

    RuleSet rules;
    std::string digest;   // Of the text: 64 hexadecimal digits; empty when nothing was read yet.
    std::time_t time = 0; // When it was read.

    bool WereRead() const { return !digest.empty(); }
};

/// Reads the rules of the file at path; a missing file in a directory that exists has none. stamp
/// becomes that of what was read, also on failure. Throws what RuleFile does, and when the file
/// keeps changing while it is read.
std::unique_ptr<LoadedRules const> ReadRulesOfFile(std::string const& path, FileStamp& stamp);

/// Reads the rules of a text. Exceptions name it "the text".
std::unique_ptr<LoadedRules const> ReadRulesOfText(std::string_view text);

/// Why there are no rules, or none other than before.
struct LoadFailure {
    /// The values are those of the C interface.
    enum class Kind { None, Missing, Permission, Malformed, Memory, Other };
    Kind kind = Kind::None;
    std::string text;
};

/// What exception, which reading the file at path has thrown, says: its text, with the path where
/// it lacks it.
LoadFailure FailureOf(std::exception_ptr const& exception, std::string const& path) noexcept;

} // namespace CallRecordingUtils

#endif
