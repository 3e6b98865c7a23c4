// Checks the sides of rules and converts them to the stored form.

#include "administration/edit/SideFields.h"

#include <fmt/format.h>

#include "model/CallTypeNames.h"
#include "text/Printable.h"
#include "validation/SidePattern.h"

namespace CallRecordingUtils {

void Complete(SideFields& side) {
    if (!side.pattern)
        side.pattern = side.type == CALL_TYPE_SIP ? "*@*" : "*";
    if (!side.type)
        side.type = side.pattern->find('@') != std::string::npos ? CALL_TYPE_SIP
                    : *side.pattern == "*"                       ? CALL_TYPE_ANY
                                                                 : CALL_TYPE_NUMBER;
}

std::optional<std::string> SetSide(SideFields const& fields, std::string& pattern, CallType& type) {
    if (!fields.pattern && !fields.type)
        return std::nullopt;
    std::string const entry = fields.pattern.value_or(ToEntry(pattern, type));
    type = fields.type.value_or(type);
    if (entry.empty())
        return "an empty pattern never matches; write * for every call";
    StoredPattern const converted = ToStored(entry, type);
    if (converted.problem)
        return fmt::format("malformed pattern of call type {}: {}\n{}", CallTypeName(type),
                           converted.problem->message,
                           CaretText(entry, converted.problem->position));
    pattern = converted.stored;
    return std::nullopt;
}

} // namespace CallRecordingUtils
