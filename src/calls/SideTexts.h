// Which text of one side of a call each side of a rule is compared with.

#ifndef CALLS_SIDETEXTS_H
#define CALLS_SIDETEXTS_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "calls/Party.h"
#include "matching/CallSide.h"

namespace CallRecordingUtils {

/// One side of a call as rules see it: of a party, each call type sees the part that it names; of a
/// typed address, its own type and type any see it.
class SideTexts {
  public:
    /// Number sees a user that is a number, SIP sees user@host:port if there is a host, any sees
    /// the user, number2 sees nothing. What patterns store as codes becomes the codes.
    explicit SideTexts(Party party);

    /// The typed question: the address is compared byte for byte. A SIP address is user@host or
    /// user@host:port. REQUIRES: type is not any.
    SideTexts(std::string_view address, CallType type);

    /// Whether the side is a party.
    bool IsParty() const { return party_.has_value(); }
    /// Null for a typed address.
    Party const* AsParty() const { return party_ ? &*party_ : nullptr; }

    /// What a side of a rule with this type is compared with; nothing when it takes no such call.
    std::optional<std::string_view> SeenBy(CallType ruleType) const;

    /// Whether the side satisfies a side of a rule.
    bool Satisfies(std::string_view pattern, CallType ruleType) const;

    /// The same text as it was dialled, for people: each byte stands where its code does. Empty
    /// when SeenBy has nothing.
    std::string Shown(CallType ruleType) const;

    /// Typed sides which together see what this side sees: a rule side is satisfied by this side
    /// if and only if it is satisfied by one of them. They borrow the texts.
    struct TypedSides {
        std::array<TypedText, 2> sides;
        std::size_t count;
    };
    TypedSides Typed() const;

  private:
    std::string_view User() const { return std::string_view(whole_).substr(0, userSize_); }
    bool Sees(CallType type) const { return sees_[static_cast<std::size_t>(type)]; }

    std::optional<Party> party_; // Of a typed address nothing.
    std::string whole_;          // The user, and "@host:port" where SIP sees it; with codes.
    std::size_t userSize_;
    std::array<bool, 3> sees_{}; // By call type: number, SIP, number2.
};

} // namespace CallRecordingUtils

#endif
