// The functions of the C interface: each turns C's arguments into the core's, and lets no exception
// out.

#include <callrecordingutils/callrecordingutils.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "RuleHandle.h"
#include "common/CancellationHeld.h"
#include "database/exported/RuleFilePath.h"
#include "matching/Decision.h"
#include "model/SipAddress.h"
#include "validation/SidePattern.h"

using namespace CallRecordingUtils;

struct callrecording_rules {
    explicit callrecording_rules(std::string path) : handle(std::move(path)) {}

    RuleHandle handle;
};

namespace {

/// A rule for C, and what its texts lie in.
struct DecidingRuleForC : callrecording_rule {
    /// record is one of snapshot.
    DecidingRuleForC(std::shared_ptr<RuleSnapshot const> snapshot,
                     CallRecordingRuleParams const& record)
        : callrecording_rule{}, keeper(std::move(snapshot)) {
        place = static_cast<std::int32_t>(&record - keeper->Records().data());
        id = record.callrecordingrule_id;
        recording_type = record.call_recording_type;
        caller_call_type = record.caller_call_type;
        called_call_type = record.called_call_type;
        caller_pattern = record.caller_pattern.c_str();
        called_pattern = record.called_pattern.c_str();
        record_to = record.record_to.c_str();
        recording_duration = record.recording_duration.c_str();
        description = record.description.c_str();
    }

    std::shared_ptr<RuleSnapshot const> const keeper;
};

bool IsCallType(std::int32_t type, std::int32_t greatest) {
    return CALL_TYPE_NUMBER <= type && type <= greatest;
}

/// Runs step; whatever it throws becomes failed. A cancelled thread would unwind through here too.
template <typename Result, typename Step>
Result Guarded(Result failed, Step step) noexcept {
    CancellationHeld const held;
    try {
        return step();
    } catch (...) {
        return failed;
    }
}

std::string RuleFilePathOf(char const* directory) {
    if (directory == nullptr)
        return RuleFilePath();
    std::string path(directory);
    if (path.empty() || path.back() != '/')
        path += '/';
    return RuleFilePathIn(path);
}

std::int32_t Decide(RuleHandle& handle, CallParty const& caller, CallParty const& called,
                    callrecording_rule const** rule) {
    std::shared_ptr<RuleSnapshot const> snapshot = handle.Rules();
    CallRecordingRuleParams const* const deciding =
        snapshot->Deciding(Call(caller.params, caller.type, called.params, called.type));
    if (deciding == nullptr)
        return CALLRECORDING_NO;
    if (rule != nullptr)
        *rule = new DecidingRuleForC(std::move(snapshot), *deciding);
    return CALLRECORDING_YES;
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

void callrecording_close(callrecording_rules* rules) {
    delete rules;
}

std::int32_t callrecording_reload(callrecording_rules* rules) {
    return Guarded<std::int32_t>(
        CALLRECORDING_ERROR,
        [&] {
            return rules != nullptr && rules->handle.Reload() ? CALLRECORDING_YES
                                                              : CALLRECORDING_ERROR;
        });
}

std::int32_t callrecording_count(callrecording_rules* rules) {
    return rules == nullptr ? CALLRECORDING_ERROR
                            : static_cast<std::int32_t>(rules->handle.Rules()->Records().size());
}

std::int32_t callrecording_decide(callrecording_rules* rules, char const* caller,
                                  std::int32_t callerType, char const* called,
                                  std::int32_t calledType, callrecording_rule const** rule) {
    if (rule != nullptr)
        *rule = nullptr;
    if (rules == nullptr || caller == nullptr || called == nullptr ||
        !IsCallType(callerType, CALL_TYPE_NUMBER2) || !IsCallType(calledType, CALL_TYPE_NUMBER2))
        return CALLRECORDING_ERROR;
    return Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        return Decide(rules->handle, ReadCallParty(caller, static_cast<CallType>(callerType)),
                      ReadCallParty(called, static_cast<CallType>(calledType)), rule);
    });
}

void callrecording_rule_free(callrecording_rule const* rule) {
    delete static_cast<DecidingRuleForC const*>(rule);
}

std::size_t callrecording_last_failure(callrecording_rules* rules, char* buffer, std::size_t size) {
    std::string const noHandle = "out of memory"; // So short that it needs none.
    if (rules != nullptr)
        return rules->handle.CopyLastFailure(buffer, size);
    CopyToBuffer(noHandle, buffer, size);
    return noHandle.size();
}

std::int32_t callrecording_check_pattern(char const* pattern, std::int32_t callType,
                                         std::size_t* position, char* reason, std::size_t size) {
    PatternProblem problem{0, ""};
    auto const answer = Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        if (pattern == nullptr || !IsCallType(callType, CALL_TYPE_ANY))
            return CALLRECORDING_ERROR;
        auto const type = static_cast<CallType>(callType);
        if (auto found = ToStored(pattern, type).problem) {
            problem = std::move(*found);
            return CALLRECORDING_NO;
        }
        if (auto found = SuspectEntry(pattern, type)) {
            problem = std::move(*found);
            return CALLRECORDING_DOUBTFUL;
        }
        return CALLRECORDING_YES;
    });
    if (position != nullptr)
        *position = problem.position;
    CopyToBuffer(problem.message, reason, size);
    return answer;
}
