// The functions of the C interface that have a handle: each turns C's arguments into the core's.

#include <callrecordingutils/callrecordingutils.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "ForC.h"
#include "RuleHandle.h"
#include "calls/RuleFit.h"
#include "database/exported/RuleFilePath.h"
#include "model/SipAddress.h"

using namespace CallRecordingUtils;

struct callrecording_rules {
    explicit callrecording_rules(std::string path) : handle(std::move(path)) {}

    RuleHandle handle;
};

namespace {

static_assert(CALLRECORDING_FAILURE_OTHER == static_cast<int>(LoadFailure::Kind::Other));

// --- Structures that cross ---

/// The rule and its texts in one piece of memory, so that it keeps nothing else alive.
callrecording_rule* NewRuleForC(CallRecordingRuleParams const& record, std::size_t place) {
    std::string const* const texts[] = {&record.caller_pattern, &record.called_pattern,
                                        &record.record_to, &record.recording_duration,
                                        &record.description};
    callrecording_rule rule{};
    char const** const members[] = {&rule.caller_pattern, &rule.called_pattern, &rule.record_to,
                                    &rule.recording_duration, &rule.description};
    std::size_t size = sizeof rule;
    for (std::string const* text : texts)
        size += text->size() + 1;
    auto* const memory = static_cast<char*>(std::malloc(size));
    if (memory == nullptr)
        throw std::bad_alloc();
    char* at = memory + sizeof rule;
    for (std::size_t i = 0; i < std::size(texts); ++i) {
        *members[i] = at;
        at = static_cast<char*>(std::memcpy(at, texts[i]->c_str(), texts[i]->size() + 1)) +
             texts[i]->size() + 1;
    }
    rule.size = sizeof rule;
    rule.place = static_cast<std::int32_t>(place);
    rule.id = record.callrecordingrule_id;
    rule.state = record.recording_rule_state;
    rule.forbids_recording = ForbidsRecording(record) ? 1 : 0;
    rule.recording_type = record.call_recording_type;
    rule.caller_call_type = record.caller_call_type;
    rule.called_call_type = record.called_call_type;
    return new (memory) callrecording_rule(rule);
}

/// Copies as much of full into *structure as the program that was compiled with a certain version
/// of the header knows. Returns false when that is less than the first version had.
template <typename Structure>
bool FillIn(Structure* structure, Structure const& full) {
    if (structure->size < sizeof full) // To become smaller than sizeof when members are added.
        return false;
    std::size_t const size = structure->size;
    *structure = full;
    structure->size = size;
    return true;
}

std::string_view TextOf(char const* bytes, std::size_t length) {
    if (bytes == nullptr)
        return {};
    return {bytes, length == CALLRECORDING_NUL_TERMINATED ? std::strlen(bytes) : length};
}

bool IsGiven(callrecording_party const* party) {
    return party != nullptr && party->size >= sizeof *party;
}

/// REQUIRES: IsGiven(&party).
SideTexts SideOf(callrecording_party const& party) {
    if (party.text != nullptr)
        return SideTexts(ReadParty(TextOf(party.text, party.text_length)));
    return SideTexts(ReadParty(TextOf(party.user, party.user_length),
                               TextOf(party.host, party.host_length),
                               TextOf(party.port, party.port_length)));
}

// --- Decisions ---

void CountAnswer(RuleHandle::Reader const& rules, AnswerKind kind) {
    rules.Count(static_cast<std::size_t>(kind));
}

/// What the two functions that decide do with the rule that takes the call.
enum class OnForbidden { ReturnRule, ReturnNothing };

std::int32_t Answer(RuleHandle::Reader const& rules, CallRecordingRuleParams const* deciding,
                    OnForbidden onForbidden, callrecording_rule const** rule) {
    bool const isForbidden = deciding != nullptr && ForbidsRecording(*deciding);
    bool const isReturned =
        deciding != nullptr && (!isForbidden || onForbidden == OnForbidden::ReturnRule);
    if (rule != nullptr && isReturned)
        *rule = NewRuleForC(*deciding, rules->rules.PlaceOf(*deciding));
    CountAnswer(rules, deciding == nullptr ? AnswerKind::No
                       : isForbidden       ? AnswerKind::Forbidden
                                           : AnswerKind::Yes);
    return deciding != nullptr && !isForbidden ? CALLRECORDING_YES : CALLRECORDING_NO;
}

/// Calls decide(rules), which throws nothing but for lack of memory, if rules were ever loaded.
template <typename Decide>
std::int32_t Decided(callrecording_rules* rules, callrecording_rule const** rule, Decide decide) {
    if (rule != nullptr)
        *rule = nullptr;
    if (rules == nullptr)
        return CALLRECORDING_ERROR;
    RuleHandle::Reader const reader(rules->handle.Rules());
    std::int32_t const answer = Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        return reader->WereRead() ? decide(reader) : CALLRECORDING_ERROR;
    });
    if (answer == CALLRECORDING_ERROR)
        CountAnswer(reader, AnswerKind::Error);
    return answer;
}

// --- Explanations ---

std::int32_t Explain(CallRecordingRuleParams const& rule, std::size_t place, PartyCall const& call,
                     callrecording_explanation* explanation) {
    RuleFit const fit = FitOf(rule, call);
    callrecording_explanation full = CALLRECORDING_EXPLANATION_INIT;
    full.place = static_cast<std::int32_t>(place);
    full.is_enabled = fit.isEnabled ? 1 : 0;
    full.caller_matches = fit.caller.Matches() ? 1 : 0;
    full.called_matches = fit.called.Matches() ? 1 : 0;
    CopyToBuffer(fit.Reason(), full.reason, sizeof full.reason);
    if (!FillIn(explanation, full))
        return CALLRECORDING_ERROR;
    return fit.Takes() ? CALLRECORDING_YES : CALLRECORDING_NO;
}

std::int32_t ExplainNone(callrecording_explanation* explanation) {
    callrecording_explanation full = CALLRECORDING_EXPLANATION_INIT;
    CopyToBuffer("every rule takes the call, or there are none", full.reason, sizeof full.reason);
    return FillIn(explanation, full) ? CALLRECORDING_NO : CALLRECORDING_ERROR;
}

// --- Loading ---

std::string RuleFilePathOf(char const* directory) {
    if (directory == nullptr)
        return RuleFilePath();
    std::string path(directory);
    if (path.empty() || path.back() != '/')
        path += '/';
    return RuleFilePathIn(path);
}

void FillInFailure(callrecording_failure* failure, LoadFailure::Kind kind, std::string_view text) {
    callrecording_failure full = CALLRECORDING_FAILURE_INIT;
    full.kind = static_cast<std::int32_t>(kind);
    CopyToBuffer(text, full.text, sizeof full.text);
    if (failure != nullptr)
        FillIn(failure, full);
}

template <typename Load>
std::int32_t Loaded(callrecording_rules* rules, callrecording_failure* failure, Load load) {
    FillInFailure(failure, LoadFailure::Kind::Memory, "out of memory");
    if (rules == nullptr)
        return CALLRECORDING_ERROR;
    return Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        RuleHandle::Outcome const outcome = load(rules->handle);
        FillInFailure(failure, outcome.failure.kind, outcome.failure.text);
        switch (outcome.result) {
        case RuleHandle::Result::Loaded: return CALLRECORDING_YES;
        case RuleHandle::Result::Unchanged: return CALLRECORDING_NO;
        default: return CALLRECORDING_ERROR;
        }
    });
}

// --- State ---

void AddLoaded(RuleHandle& handle, callrecording_state& state) {
    constexpr std::size_t kDigits = 8;
    RuleHandle::Reader const reader(handle.Rules());
    state.is_loaded = reader->WereRead() ? 1 : 0;
    state.rule_count = static_cast<std::int32_t>(reader->rules.Rules().size());
    state.loaded_time = reader->time;
    CopyToBuffer(std::string_view(reader->digest).substr(0, kDigits), state.digits,
                 sizeof state.digits);
}

void AddHistory(RuleHandle::History const& history, callrecording_state& state) {
    state.loads = history.loads;
    state.failed_loads = history.failedLoads;
    state.failed_kind = static_cast<std::int32_t>(history.lastFailed.kind);
    state.failed_time = history.lastFailedTime;
    CopyToBuffer(history.lastFailed.text, state.failed_text, sizeof state.failed_text);
}

} // namespace

std::int32_t callrecording_version() {
    return CALLRECORDING_VERSION;
}

callrecording_rules* callrecording_open(char const* directory) {
    return Guarded<callrecording_rules*>(
        nullptr,
        [&] {
            auto rules = std::make_unique<callrecording_rules>(RuleFilePathOf(directory));
            rules->handle.Reload();
            return rules.release();
        });
}

callrecording_rules* callrecording_open_text(char const* text, std::size_t length) {
    return Guarded<callrecording_rules*>(
        nullptr,
        [&] {
            auto rules = std::make_unique<callrecording_rules>("");
            rules->handle.Load(TextOf(text, length));
            return rules.release();
        });
}

void callrecording_close(callrecording_rules* rules) {
    delete rules;
}

std::int32_t callrecording_reload(callrecording_rules* rules, callrecording_failure* failure) {
    return Loaded(
        rules, failure, [](RuleHandle& handle) { return handle.Reload(); });
}

std::int32_t callrecording_reload_if_changed(callrecording_rules* rules,
                                             callrecording_failure* failure) {
    return Loaded(
        rules, failure, [](RuleHandle& handle) { return handle.ReloadIfChanged(); });
}

std::size_t callrecording_last_failure(callrecording_rules* rules, char* buffer, std::size_t size) {
    constexpr std::string_view kNoHandle = "out of memory";
    if (rules != nullptr)
        return rules->handle.CopyLastFailure(buffer, size);
    CopyToBuffer(kNoHandle, buffer, size);
    return kNoHandle.size();
}

std::int32_t callrecording_count(callrecording_rules* rules) {
    if (rules == nullptr)
        return CALLRECORDING_ERROR;
    RuleHandle::Reader const reader(rules->handle.Rules());
    return static_cast<std::int32_t>(reader->rules.Rules().size());
}

std::int32_t callrecording_get_state(callrecording_rules* rules, callrecording_state* state) {
    if (rules == nullptr || state == nullptr)
        return CALLRECORDING_ERROR;
    return Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        callrecording_state full = CALLRECORDING_STATE_INIT;
        AddLoaded(rules->handle, full);
        AddHistory(rules->handle.LoadHistory(), full);
        full.answers_yes = rules->handle.Answers(AnswerKind::Yes);
        full.answers_no = rules->handle.Answers(AnswerKind::No);
        full.answers_forbidden = rules->handle.Answers(AnswerKind::Forbidden);
        full.answers_error = rules->handle.Answers(AnswerKind::Error);
        return FillIn(state, full) ? CALLRECORDING_YES : CALLRECORDING_ERROR;
    });
}

std::int32_t callrecording_decide_parties(callrecording_rules* rules,
                                          callrecording_party const* caller,
                                          callrecording_party const* called,
                                          callrecording_rule const** rule) {
    return Decided(
        rules, rule,
        [&](RuleHandle::Reader const& reader) {
            if (!IsGiven(caller) || !IsGiven(called))
                return CALLRECORDING_ERROR;
            PartyCall const call{SideOf(*caller), SideOf(*called)};
            return Answer(reader, reader->rules.Deciding(call), OnForbidden::ReturnRule, rule);
        });
}

std::int32_t callrecording_decide(callrecording_rules* rules, char const* caller,
                                  std::int32_t callerType, char const* called,
                                  std::int32_t calledType, callrecording_rule const** rule) {
    return Decided(
        rules, rule,
        [&](RuleHandle::Reader const& reader) {
            if (caller == nullptr || called == nullptr ||
                !IsCallType(callerType, CALL_TYPE_NUMBER2) ||
                !IsCallType(calledType, CALL_TYPE_NUMBER2))
                return CALLRECORDING_ERROR;
            CallParty const from = ReadCallParty(caller, static_cast<CallType>(callerType));
            CallParty const to = ReadCallParty(called, static_cast<CallType>(calledType));
            Call const call(from.params, from.type, to.params, to.type);
            return Answer(reader, reader->rules.Deciding(call), OnForbidden::ReturnNothing, rule);
        });
}

std::int32_t callrecording_rule_at(callrecording_rules* rules, std::int32_t place,
                                   callrecording_rule const** rule) {
    if (rule != nullptr)
        *rule = nullptr;
    if (rules == nullptr || rule == nullptr)
        return CALLRECORDING_ERROR;
    return Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        RuleHandle::Reader const reader(rules->handle.Rules());
        auto const& all = reader->rules.Rules();
        auto const at = static_cast<std::size_t>(place);
        if (place < 0 || at >= all.size())
            return CALLRECORDING_NO;
        *rule = NewRuleForC(all[at], at);
        return CALLRECORDING_YES;
    });
}

void callrecording_rule_free(callrecording_rule const* rule) {
    std::free(const_cast<callrecording_rule*>(rule));
}

std::int32_t callrecording_explain(callrecording_rules* rules, callrecording_party const* caller,
                                   callrecording_party const* called, std::int32_t place,
                                   callrecording_explanation* explanation) {
    if (rules == nullptr || explanation == nullptr || !IsGiven(caller) || !IsGiven(called) ||
        place < CALLRECORDING_NEAREST)
        return CALLRECORDING_ERROR;
    return Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        PartyCall const call{SideOf(*caller), SideOf(*called)};
        RuleHandle::Reader const reader(rules->handle.Rules());
        RuleSet const& set = reader->rules;
        bool const isNearest = place == CALLRECORDING_NEAREST;
        std::size_t const at =
            isNearest ? PlaceOfNearestMiss(set, call) : static_cast<std::size_t>(place);
        if (at < set.Rules().size())
            return Explain(set.Rules()[at], at, call, explanation);
        return isNearest ? ExplainNone(explanation) : CALLRECORDING_ERROR;
    });
}
