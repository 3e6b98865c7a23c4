// A claim about calls as the command line or a line of a policy gives it.

#ifndef CALLRECORDINGCTL_COMMANDS_CLAIMOPTIONS_H
#define CALLRECORDINGCTL_COMMANDS_CLAIMOPTIONS_H

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommandLine.h"
#include "Rules.h"
#include "administration/edit/SideFields.h"
#include "analysis/Claim.h"

namespace callrecordingctl {

struct ClaimOptions {
    SideFields from;
    SideFields to;
    std::vector<std::string> exceptFrom;
    std::vector<std::string> exceptTo;
    std::optional<bool> isRecorded;
    std::optional<RuleName> rule;
    std::optional<std::string> recordTo;
    std::optional<std::string> duration;
    std::optional<std::int32_t> recordingType;

    /// Whether any of the options was given.
    bool AreGiven() const;
};

void AddClaim(CLI::App& command, ClaimOptions& claim);

/// Reads the words of one line of a policy. No words: the line is empty, or only a comment.
std::vector<std::string> WordsOf(std::string const& line);
ClaimOptions ReadClaim(std::vector<std::string> words);

/// The claims of a policy with the numbers of their lines. Throws a Failure with path, line and
/// reason; also when there is none.
std::vector<std::pair<std::size_t, ClaimOptions>> ReadPolicy(std::string const& path);

/// A claim about the rules of one list.
class NamedClaim {
  public:
    /// Throws a Failure when nothing is claimed, a pattern is malformed or there is no such rule.
    NamedClaim(ClaimOptions const& options, RuleList const& rules);

    /// The claim for the analysis, which borrows the patterns of this object.
    Claim ForAnalysis() const;

    /// "every call to 112 of any type is recorded".
    std::string Text() const;
    nlohmann::ordered_json ToJson() const;

  private:
    struct Side {
        std::string pattern; // In the stored form.
        CallType type;
    };

    static Side Read(SideFields fields, std::string const& option);
    static std::string TextOf(Side const& side);
    static nlohmann::ordered_json ToJson(std::vector<Side> const& sides);
    std::string Calls() const;

    ClaimOptions const options_;
    Side from_;
    Side to_;
    std::vector<Side> exceptFrom_;
    std::vector<Side> exceptTo_;
    std::optional<std::size_t> place_; // Of the rule that is to decide.
    std::int32_t id_ = 0;              // The identifier of that rule.
};

} // namespace callrecordingctl

#endif
