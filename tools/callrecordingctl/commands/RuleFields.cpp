// Adds the options for the fields of a rule and sets the fields from them.

#include "commands/RuleFields.h"

#include <tuple>

#include <fmt/format.h>

#include "commands/HelpText.h"
#include "output/RuleText.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace callrecordingctl {
namespace {

void AddSide(CLI::App& command, SideFields& side, std::string const& name, char const* who,
             bool isNew) {
    AddText(command, "--" + name, "PATTERN",
            fmt::format("Pattern of the {} side{}", who, isNew ? " (default: *, all)" : ""),
            [&side](std::string const& text) { side.pattern = text; });
    AddCallType(command, "--" + name + "-type",
                isNew ? "Its call type (default: sip with an \"@\" in it,\nany for *, else number)"
                      : "Its call type",
                side.type);
}

CLI::Option* AddOptionalText(CLI::App& command, char const* name, char const* help,
                             std::optional<std::string>& field) {
    return AddText(
        command, name, "TEXT", help, [&field](std::string const& text) { field = text; });
}

void AddDestination(CLI::App& command, RuleFields& fields) {
    CLI::Option* const recordTo =
        AddOptionalText(command, "--record-to", "Where to record to", fields.recordTo);
    command
        .add_flag_callback(
            "--never", [&fields] { fields.recordTo = kNeverRecord; },
            "Forbid recording: the destination is never:")
        ->excludes(recordTo);
}

void AddRecordingType(CLI::App& command, RuleFields& fields) {
    AddText(
        command, "--recording-type", "0|1", "Kind of recording",
        [&fields](std::string const& text) {
            if (text != "0" && text != "1")
                throw CLI::ValidationError("--recording-type",
                                           fmt::format("\"{}\" is not 0 or 1", text));
            fields.recordingType = text == "0" ? CALL_RECORDING_TYPE_0 : CALL_RECORDING_TYPE_1;
        });
}

void AddState(CLI::App& command, RuleFields& fields, bool isNew) {
    command.add_flag_callback(
        "--disabled", [&fields] { fields.state = RULE_DISABLED; }, "Switch the rule off");
    auto const enable = [&fields] {
        if (fields.state)
            throw CLI::ValidationError("--enabled", "contradicts --disabled");
        fields.state = RULE_ENABLED;
    };
    command.add_flag_callback("--enabled", enable,
                              isNew ? "Switch the rule on (default)" : "Switch the rule on");
}

void ApplyText(std::optional<std::string> const& text, char const* option, std::string& field) {
    if (!text)
        return;
    if (text->find_first_of("\r\n") != std::string::npos)
        throw Failure(kExitUnsaved, fmt::format("{}: a line break cannot be stored", option));
    field = *text;
}

} // namespace

bool RuleFields::AreGiven() const {
    return from.pattern || from.type || to.pattern || to.type || recordTo || duration ||
           description || recordingType || state;
}

void AddRuleFields(CLI::App& command, RuleFields& fields, bool isNew) {
    AddSide(command, fields.from, "from", "calling", isNew);
    AddSide(command, fields.to, "to", "called", isNew);
    AddDestination(command, fields);
    AddOptionalText(command, "--duration", "How long to record", fields.duration);
    AddOptionalText(command, "--description", "What the rule is for", fields.description);
    AddRecordingType(command, fields);
    AddState(command, fields, isNew);
}

namespace {

/// Throws a Failure that names culprit if the pattern is malformed for its type.
void ApplySide(SideFields const& fields, std::string const& culprit, std::string& pattern,
               CallType& type) {
    if (auto const fault = SetSide(fields, pattern, type))
        throw Failure(kExitNo, fmt::format("{}: {}", culprit, *fault));
}

/// Adds what there is to note on a side.
void NoteOn(SideFields const& fields, std::string const& culprit, std::string const& pattern,
            CallType type, std::vector<std::string>& notes) {
    if (!fields.pattern)
        return;
    if (fields.pattern->find('\\') != std::string::npos)
        notes.push_back(fmt::format("{}: {}", culprit, kEscapeNote));
    if (auto const suspicion = SuspectStored(pattern, type))
        notes.push_back(fmt::format("{}: note: {}\n{}", culprit, suspicion->message,
                                    CaretText(*fields.pattern, suspicion->position)));
}

} // namespace

void Apply(RuleFields const& fields, Rule& rule) {
    ApplySide(fields.from, fields.from.pattern ? "--from" : "--from-type", rule.caller_pattern,
              rule.caller_call_type);
    ApplySide(fields.to, fields.to.pattern ? "--to" : "--to-type", rule.called_pattern,
              rule.called_call_type);
    ApplyText(fields.recordTo, "--record-to", rule.record_to);
    ApplyText(fields.duration, "--duration", rule.recording_duration);
    ApplyText(fields.description, "--description", rule.description);
    rule.call_recording_type = fields.recordingType.value_or(rule.call_recording_type);
    rule.recording_rule_state = fields.state.value_or(rule.recording_rule_state);
}

std::vector<std::string> NotesOn(RuleFields const& fields, Rule const& rule) {
    std::vector<std::string> notes;
    NoteOn(fields.from, "--from", rule.caller_pattern, rule.caller_call_type, notes);
    NoteOn(fields.to, "--to", rule.called_pattern, rule.called_call_type, notes);
    if (fields.recordTo && ForbidsRecording(rule))
        notes.push_back(
            fmt::format("note: this rule forbids recording; a host that uses the C++ class has to "
                        "ask ForbidsRecording(rule) before it records, or it records to \"{}\"",
                        kNeverRecord));
    return notes;
}

void NoteSuspicions(Rule const& rule, std::string const& where) {
    for (auto const& [side, pattern, type] :
         {std::tuple("from", rule.caller_pattern, rule.caller_call_type),
          std::tuple("to", rule.called_pattern, rule.called_call_type)})
        if (auto const suspicion = SuspectStored(pattern, type))
            Say("{}: {}: note: {}\n{}", where, side, suspicion->message,
                CaretText(ToEntry(pattern, type), suspicion->position));
}

void AddEveryone(CLI::App& command, bool& everyone) {
    command.add_flag("--everyone", everyone, "Confirm that the rule takes every call");
}

void RequireEveryone(Rule const& rule, bool everyone) {
    if (IsForEveryone(rule) && !everyone)
        throw Failure(kExitUsage,
                      fmt::format("this rule would {} {}; give --from or --to, or "
                                  "--everyone if you want that",
                                  ForbidsRecording(rule) ? "forbid recording" : "record",
                                  EveryoneText(rule)));
}

} // namespace callrecordingctl
