// Sets of addresses, as automata that can be compared and written down as patterns.

#ifndef ANALYSIS_SIDELANGUAGE_H
#define ANALYSIS_SIDELANGUAGE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "analysis/AddressSearch.h"
#include "analysis/AutomatonPool.h"

namespace CallRecordingUtils {

/// A set of texts: the smallest automaton for it, numbered in the order in which its states are
/// met, so that equal sets have equal automata. State 0 is the start.
struct TextLanguage {
    using Row = std::array<std::uint32_t, kTextSymbols>;

    std::vector<Row> next;
    std::vector<bool> isAccepting;

    bool operator==(TextLanguage const& other) const {
        return next == other.next && isAccepting == other.isAccepting;
    }
    bool IsEmpty() const { return next.size() == 1 && !isAccepting[0]; }
    /// Whether all that can follow from state is accepted, or nothing.
    bool IsEvery(std::uint32_t state) const { return IsSettled(state) && isAccepting[state]; }
    bool IsNone(std::uint32_t state) const { return IsSettled(state) && !isAccepting[state]; }

  private:
    bool IsSettled(std::uint32_t state) const {
        for (std::uint32_t const to : next[state])
            if (to != state)
                return false;
        return true;
    }
};

/// A set of addresses of all kinds.
struct SideLanguage {
    TextLanguage number;
    TextLanguage number2;
    /// Of kind kSip: the users, where no more than the user matters; else texts user@host:port.
    TextLanguage sip;
    bool isSipOfUser;
    /// How many addresses there are; nothing when there is no end of them, or too many to count.
    std::optional<std::uint64_t> count;

    bool operator==(SideLanguage const& other) const {
        return number == other.number && number2 == other.number2 && sip == other.sip &&
               isSipOfUser == other.isSipOfUser;
    }
    bool IsEmpty() const { return number.IsEmpty() && number2.IsEmpty() && sip.IsEmpty(); }
};

/// Runs the automata of some sides over all addresses that one side accepts, and finds every set of
/// them that an address is accepted by.
class SideProduct {
  public:
    SideProduct(AutomatonPool& pool, SideId must, std::vector<SideId> others);

    /// Returns false when it takes more than allowed.
    bool Run(Allowance& allowance);

    /// The sets, as numbers of others, ascending.
    using Accepted = std::vector<std::uint32_t>;
    std::vector<Accepted> const& Sets() const { return sets_; }

    /// The addresses whose sets are wanted, by the number of the set.
    SideLanguage LanguageOf(std::vector<bool> const& wanted) const;

  private:
    static constexpr std::uint32_t kNoNode = ~std::uint32_t{0};
    static constexpr std::uint32_t kNoSet = ~std::uint32_t{0};
    struct Node {
        std::vector<StateId> states; // Of must, then of others.
        Zone zone;
        std::array<std::uint32_t, kSymbols> next; // kNoNode: no address goes on like this.
        std::uint32_t set;                        // kNoSet: no address that must accepts ends here.
        std::uint32_t rest;                       // Where most symbols lead.
    };
    /// What a set of addresses makes of a node.
    struct Outlook {
        std::vector<bool> canAccept;
        std::vector<bool> canReject;
    };

    std::uint32_t NodeOf(Zone zone, std::vector<StateId> states);
    void Expand(std::uint32_t node);
    Outlook Look(std::vector<bool> const& accepts) const;
    TextLanguage Texts(std::uint32_t start, std::vector<bool> const& accepts) const;
    std::optional<TextLanguage> Users(Outlook const& outlook) const;
    TextLanguage WholeTexts(std::vector<bool> const& accepts) const;
    std::optional<std::uint64_t> Count(std::vector<bool> const& accepts,
                                       Outlook const& outlook) const;

    AutomatonPool& pool_;
    std::vector<SideId> sides_;
    std::array<std::uint32_t, kAddressKinds> start_{};
    std::vector<Node> nodes_;
    std::map<std::pair<Zone, std::vector<StateId>>, std::uint32_t> known_;
    std::vector<Accepted> sets_;
    std::map<Accepted, std::uint32_t> numberOf_;
};

} // namespace CallRecordingUtils

#endif
