// The functions of the C interface that are about patterns alone.

#include <callrecordingutils/callrecordingutils.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "ForC.h"
#include "RuleHandle.h"
#include "language/Forms.h"
#include "validation/SidePattern.h"

using namespace CallRecordingUtils;

namespace {

/// Writes the text that convert(text) makes and returns its answer; an error writes the empty text.
template <typename Convert>
std::int32_t WriteForm(char const* pattern, std::int32_t callType, char* buffer, std::size_t size,
                       std::size_t* length, Convert convert) {
    std::string form;
    auto const answer = Guarded<std::int32_t>(CALLRECORDING_ERROR, [&] {
        if (pattern == nullptr || !IsCallType(callType, CALL_TYPE_ANY))
            return CALLRECORDING_ERROR;
        return convert(form);
    });
    if (length != nullptr)
        *length = form.size();
    CopyToBuffer(form, buffer, size);
    return answer;
}

} // namespace

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

std::int32_t callrecording_stored_form(char const* entry, std::int32_t callType, char* buffer,
                                       std::size_t size, std::size_t* length) {
    return WriteForm(
        entry, callType, buffer, size, length,
        [&](std::string& form) {
            StoredPattern stored = ToStored(entry, static_cast<CallType>(callType));
            form = std::move(stored.stored);
            return stored.problem ? CALLRECORDING_NO : CALLRECORDING_YES;
        });
}

std::int32_t callrecording_entry_form(char const* stored, std::int32_t callType, char* buffer,
                                      std::size_t size, std::size_t* length) {
    return WriteForm(
        stored, callType, buffer, size, length,
        [&](std::string& form) {
            auto const type = static_cast<CallType>(callType);
            form = ToEntry(stored, type);
            bool const isReversible = ToStored(form, type).stored == stored;
            if (!isReversible)
                form = stored;
            return isReversible ? CALLRECORDING_YES : CALLRECORDING_NO;
        });
}
