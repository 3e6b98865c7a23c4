// The names that fields of rules and calls have in JSON: whatever writes or reads one takes it from
// here, and the manual page lists them.

#ifndef JSON_NAMES_H
#define JSON_NAMES_H

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace CallRecordingUtils {

/// A member of the object that a rule is in JSON.
enum class RuleMember {
    Position,
    Id,
    CallerPattern,
    CallerEntry,
    CallerMalformed,
    CallerType,
    CallerTypeName,
    CalledPattern,
    CalledEntry,
    CalledMalformed,
    CalledType,
    CalledTypeName,
    RecordingType,
    RecordTo,
    Duration,
    Description,
    State,
    StateName,
    Enabled,
    FileState,
    FileDigest
};

/// By RuleMember.
inline constexpr std::array<char const*, 21> kRuleMembers{"position",
                                                          "callrecordingrule_id",
                                                          "caller_pattern",
                                                          "caller_pattern_entry",
                                                          "caller_pattern_malformed",
                                                          "caller_call_type",
                                                          "caller_call_type_name",
                                                          "called_pattern",
                                                          "called_pattern_entry",
                                                          "called_pattern_malformed",
                                                          "called_call_type",
                                                          "called_call_type_name",
                                                          "call_recording_type",
                                                          "record_to",
                                                          "recording_duration",
                                                          "description",
                                                          "recording_rule_state",
                                                          "recording_rule_state_name",
                                                          "enabled",
                                                          "file_state",
                                                          "file_digest"};

constexpr char const* NameOf(RuleMember member) {
    return kRuleMembers[static_cast<std::size_t>(member)];
}

/// The member with this name, if there is one.
inline std::optional<RuleMember> RuleMemberOf(std::string_view name) {
    for (std::size_t i = 0; i < kRuleMembers.size(); ++i)
        if (name == kRuleMembers[i])
            return static_cast<RuleMember>(i);
    return std::nullopt;
}

/// The members that say what one side of a rule is.
struct SideMembers {
    RuleMember pattern;   ///< As it is stored.
    RuleMember entry;     ///< As it is entered.
    RuleMember malformed; ///< Whether it is.
    RuleMember type;
    RuleMember typeName;
};

inline constexpr SideMembers kCallerMembers{RuleMember::CallerPattern, RuleMember::CallerEntry,
                                            RuleMember::CallerMalformed, RuleMember::CallerType,
                                            RuleMember::CallerTypeName};
inline constexpr SideMembers kCalledMembers{RuleMember::CalledPattern, RuleMember::CalledEntry,
                                            RuleMember::CalledMalformed, RuleMember::CalledType,
                                            RuleMember::CalledTypeName};

/// A call has two sides, each with a type and an address.
inline constexpr char kCallFrom[] = "from";
inline constexpr char kCallTo[] = "to";
inline constexpr char kCallType[] = "call_type";
inline constexpr char kCallAddress[] = "address";

/// A side of a question about a call also says whether it is typed or a party, which has no type.
inline constexpr char kSideKind[] = "kind";
inline constexpr char kPartyUser[] = "user";
inline constexpr char kPartyHost[] = "host";
inline constexpr char kPartyPort[] = "port";

} // namespace CallRecordingUtils

#endif
