// Reads claims, and puts them into words.

#include "commands/ClaimOptions.h"

#include <algorithm>
#include <fstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "common/Error.h"
#include "model/CallTypeNames.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"
#include "json/Names.h"

namespace callrecordingctl {
namespace {

void AddSide(CLI::App& command, SideFields& side, std::vector<std::string>& exceptions,
             std::string const& name) {
    AddText(
        command, "--" + name, "PATTERN",
        fmt::format("The {} side of the calls (default: *)", name == "from" ? "calling" : "called"),
        [&side](std::string const& text) { side.pattern = text; });
    AddCallType(command, "--" + name + "-type",
                "Only calls with this call type on that side\n(default: sip with an \"@\" in the "
                "pattern, else\nany, which means addresses of every type)",
                side.type);
    command
        .add_option_function<std::vector<std::string>>(
            "--except-" + name,
            [&exceptions](std::vector<std::string> const& texts) { exceptions = texts; },
            "But not calls with this side (repeatable)")
        ->type_name("PATTERN")
        ->expected(1)
        ->take_all();
}

void AddOutcomes(CLI::App& command, ClaimOptions& claim) {
    auto const add = [&](char const* name, char const* help, bool isRecorded) {
        return command.add_flag_callback(
            name, [&claim, isRecorded] { claim.isRecorded = isRecorded; }, help);
    };
    add("--recorded", "They are all recorded", true);
    CLI::Option* const notRecorded = add("--not-recorded", "None of them is recorded", false);
    notRecorded->excludes(command.get_option("--recorded"));
    AddText(
        command, "--by", "ID", "They are all decided by this rule",
        [&claim](std::string const& text) { claim.rule = ParseRuleName(text); });
    AddText(
        command, "--record-to", "TEXT", "They are all recorded to exactly this place",
        [&claim](std::string const& text) { claim.recordTo = text; })
        ->excludes(notRecorded);
    AddText(command, "--duration", "TEXT", "They are all recorded for exactly this duration",
            [&claim](std::string const& text) { claim.duration = text; })
        ->excludes(notRecorded);
    AddText(command, "--recording-type", "0|1", "They are all recorded with this kind of recording",
            [&claim](std::string const& text) {
                if (text != "0" && text != "1")
                    throw CLI::ValidationError("--recording-type",
                                               fmt::format("\"{}\" is not 0 or 1", text));
                claim.recordingType = text[0] - '0';
            })
        ->excludes(notRecorded);
}

/// Mentions what is well formed, but surely not meant.
void NoteOn(std::string const& option, std::string const& entry, CallType type) {
    if (auto const suspicion = SuspectEntry(entry, type))
        Say("{}: note: {}\n{}", option, suspicion->message, CaretText(entry, suspicion->position));
}

} // namespace

bool ClaimOptions::AreGiven() const {
    return from.pattern || from.type || to.pattern || to.type || !exceptFrom.empty() ||
           !exceptTo.empty() || isRecorded || rule || recordTo || duration || recordingType;
}

void AddClaim(CLI::App& command, ClaimOptions& claim) {
    AddSide(command, claim.from, claim.exceptFrom, "from");
    AddSide(command, claim.to, claim.exceptTo, "to");
    AddOutcomes(command, claim);
}

std::vector<std::string> WordsOf(std::string const& line) {
    std::vector<std::string> words;
    char quote = '\0';
    bool isInWord = false;
    for (char const c : line) {
        bool const isBlank = c == ' ' || c == '\t' || c == '\r';
        if (quote == '\0' && isBlank) {
            isInWord = false;
            continue;
        }
        if (!isInWord && c == '#')
            break;
        if (!isInWord)
            words.emplace_back();
        isInWord = true;
        if (quote == '\0' ? c == '\'' || c == '"' : c == quote)
            quote = quote == '\0' ? c : '\0';
        else
            words.back() += c;
    }
    if (quote != '\0')
        throw Failure(kExitUsage, fmt::format("the {} is not closed", quote));
    return words;
}

ClaimOptions ReadClaim(std::vector<std::string> words) {
    ClaimOptions claim;
    CLI::App app;
    app.set_help_flag();
    AddClaim(app, claim);
    std::reverse(words.begin(), words.end()); // CLI11 takes them from the back.
    try {
        app.parse(words);
    } catch (CLI::ParseError const& error) {
        throw Failure(kExitUsage, error.what());
    }
    return claim;
}

std::vector<std::pair<std::size_t, ClaimOptions>> ReadPolicy(std::string const& path) {
    std::vector<std::pair<std::size_t, ClaimOptions>> claims;
    std::ifstream file(path);
    std::string line;
    for (std::size_t number = 1; std::getline(file, line); ++number)
        try {
            std::vector<std::string> const words = WordsOf(line);
            if (!words.empty())
                claims.emplace_back(number, ReadClaim(words));
        } catch (Failure const& failure) {
            throw Failure(failure.Code(), fmt::format("{}:{}: {}", path, number, failure.what()));
        }
    if (!file.is_open() || file.bad())
        throw Failure(kExitUnreadable, path + ": cannot be read");
    if (claims.empty())
        throw Failure(kExitUsage, path + ": there is no claim in this file");
    return claims;
}

NamedClaim::NamedClaim(ClaimOptions const& options, RuleList const& rules)
    : options_(options), from_(Read(options.from, "--from")), to_(Read(options.to, "--to")) {
    if (!options.isRecorded && !options.rule && !options.recordTo && !options.duration &&
        !options.recordingType)
        throw Failure(kExitUsage, "one of --recorded, --not-recorded, --by, --record-to, "
                                  "--duration and --recording-type is needed");
    for (std::string const& text : options.exceptFrom)
        exceptFrom_.push_back(Read({text, std::nullopt}, "--except-from"));
    for (std::string const& text : options.exceptTo)
        exceptTo_.push_back(Read({text, std::nullopt}, "--except-to"));
    if (!options.rule)
        return;
    try {
        place_ = FindRule(rules, *options.rule);
    } catch (Error const& error) {
        throw Failure(kExitNoSuchRule, error.what()); // Like the claim's other faults.
    }
    id_ = rules[*place_].callrecordingrule_id;
}

/// A side without a type is of every type, unless its pattern is one of SIP addresses.
NamedClaim::Side NamedClaim::Read(SideFields fields, std::string const& option) {
    if (!fields.pattern)
        fields.pattern = fields.type == CALL_TYPE_SIP ? "*@*" : "*";
    if (!fields.type)
        fields.type =
            fields.pattern->find('@') != std::string::npos ? CALL_TYPE_SIP : CALL_TYPE_ANY;
    Side side{"", *fields.type};
    if (auto const fault = SetSide(fields, side.pattern, side.type))
        throw Failure(kExitNo, fmt::format("{}: {}", option, *fault));
    NoteOn(option, *fields.pattern, side.type);
    return side;
}

Claim NamedClaim::ForAnalysis() const {
    auto const borrowed = [](Side const& side) { return RuleSide{side.pattern, side.type}; };
    Claim claim{};
    claim.calls = {borrowed(from_), borrowed(to_)};
    std::transform(exceptFrom_.begin(), exceptFrom_.end(), std::back_inserter(claim.exceptCallers),
                   borrowed);
    std::transform(exceptTo_.begin(), exceptTo_.end(), std::back_inserter(claim.exceptCalled),
                   borrowed);
    claim.isRecorded = options_.isRecorded;
    claim.rule = place_;
    claim.recordTo = options_.recordTo;
    claim.duration = options_.duration;
    claim.callRecordingType = options_.recordingType;
    return claim;
}

std::string NamedClaim::TextOf(Side const& side) {
    std::string const entry = Printable(ToEntry(side.pattern, side.type));
    return side.type == CALL_TYPE_ANY ? entry + " of any type"
                                      : fmt::format("{} {}", CallTypeName(side.type), entry);
}

std::string NamedClaim::Calls() const {
    auto const isEverything = [](Side const& side) {
        return side.type == CALL_TYPE_ANY && side.pattern == "*";
    };
    std::string text = "call";
    if (!isEverything(from_))
        text += " from " + TextOf(from_);
    if (!isEverything(to_))
        text += " to " + TextOf(to_);
    std::vector<std::string> exceptions;
    for (Side const& side : exceptFrom_)
        exceptions.push_back("from " + TextOf(side));
    for (Side const& side : exceptTo_)
        exceptions.push_back("to " + TextOf(side));
    if (!exceptions.empty())
        text += fmt::format(", except {},", fmt::join(exceptions, " and "));
    return text;
}

std::string NamedClaim::Text() const {
    std::vector<std::string> outcomes;
    if (options_.isRecorded == true)
        outcomes.push_back("is recorded");
    if (options_.recordTo)
        outcomes.push_back(fmt::format("is recorded to \"{}\"", Printable(*options_.recordTo)));
    if (options_.duration)
        outcomes.push_back(
            fmt::format("is recorded with the duration \"{}\"", Printable(*options_.duration)));
    if (options_.recordingType)
        outcomes.push_back(fmt::format("is recorded with type {}", *options_.recordingType));
    if (options_.isRecorded == false)
        outcomes.push_back("is left unrecorded");
    if (place_)
        outcomes.push_back(fmt::format("is decided by rule {}", id_));
    return fmt::format("every {} {}", Calls(), fmt::join(outcomes, " and "));
}

nlohmann::ordered_json NamedClaim::ToJson(std::vector<Side> const& sides) {
    auto json = nlohmann::ordered_json::array();
    for (Side const& side : sides)
        json.push_back({{"pattern", ToEntry(side.pattern, side.type)},
                        {"stored", side.pattern},
                        {"call_type", static_cast<int>(side.type)}});
    return json;
}

nlohmann::ordered_json NamedClaim::ToJson() const {
    nlohmann::ordered_json json{{"text", Text()},
                                {"from", ToJson(std::vector<Side>{from_})[0]},
                                {"to", ToJson(std::vector<Side>{to_})[0]},
                                {"except_from", ToJson(exceptFrom_)},
                                {"except_to", ToJson(exceptTo_)}};
    auto const add = [&](char const* name, auto const& value) {
        json[name] = value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
    };
    add("recorded", options_.isRecorded);
    add("by", place_ ? std::optional(id_) : std::nullopt);
    add("by_position", place_ ? std::optional(*place_ + 1) : std::nullopt);
    add(NameOf(RuleMember::RecordTo), options_.recordTo);
    add(NameOf(RuleMember::Duration), options_.duration);
    add(NameOf(RuleMember::RecordingType), options_.recordingType);
    return json;
}

} // namespace callrecordingctl
