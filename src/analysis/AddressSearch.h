// Searches for an address that some rule sides accept, with an eye on which others do.

#ifndef ANALYSIS_ADDRESSSEARCH_H
#define ANALYSIS_ADDRESSSEARCH_H

#include <cstddef>
#include <cstdint>
#include <queue>
#include <unordered_set>
#include <vector>

#include "analysis/AutomatonPool.h"

namespace CallRecordingUtils {

/// What one question may still cost. A search counts what it holds in memory and the steps that it
/// takes; beyond either bound it ends without an answer.
struct Allowance {
    std::uint64_t steps;
    std::size_t bytes;
};

enum class Outcome { Found, None, Undecided };

/// Which of many addresses is found. Digits are what people like to see; where rules for many
/// numbers take these, one without digits is the sooner found.
enum class Prefer { Digits, OtherSymbols };

/// One search. It runs all automata at once over all addresses ("subset construction" of automata
/// side by side): a node is the set of states that they are in, and no node is met twice. It goes
/// where the rest of an address that all of must accept is cheapest (A*), and so finds the cheapest
/// first. There can be as many nodes as combinations of states, exponential in the number of sides;
/// for what people write it is about their sum.
class AddressSearch {
  public:
    /// Says what an address is worth. The lists are ascending, without those of must.
    class Judge {
      public:
        /// Whether no address is of any use that certain, and maybe further sides, accept.
        virtual bool IsHopeless(std::vector<SideId> const& certain) = 0;
        /// Whether address, which accepted of the others and no more accept, ends the search.
        virtual Outcome Try(std::vector<SideId> const& accepted, Address const& address) = 0;

      protected:
        ~Judge() = default;
    };

    /// others is ascending.
    AddressSearch(AutomatonPool& pool, std::vector<SideId> const& must,
                  std::vector<SideId> const& others, Judge& judge, Allowance& allowance,
                  Prefer prefer = Prefer::Digits);
    ~AddressSearch();
    AddressSearch(AddressSearch const&) = delete;
    AddressSearch& operator=(AddressSearch const&) = delete;

    /// Found once the judge has said so; None when every address was tried in vain.
    Outcome Run();

  private:
    using NodeId = std::uint32_t;
    struct Node {
        std::size_t states; // Where in states_; those of must come first.
        std::uint32_t size;
        NodeId parent; // The first nodes are their own parents.
        Cost cost;     // Of the address so far.
        Symbol symbol; // Read last.
        Zone zone;
        AddressKind kind;
        bool isClosed;
    };
    struct Entry {
        Cost estimate; // Of the cheapest whole address.
        Cost cost;
        NodeId node;
        bool isEnd; // The address ends here.

        /// The one to take later. Of equal ones, what is nearer to its end comes first.
        bool operator<(Entry const& other) const {
            if (estimate != other.estimate)
                return estimate > other.estimate;
            return cost != other.cost ? cost < other.cost : node > other.node;
        }
    };
    struct Hash {
        AddressSearch const* search;
        std::size_t operator()(NodeId node) const { return search->HashOf(node); }
    };
    struct Equal {
        AddressSearch const* search;
        bool operator()(NodeId a, NodeId b) const { return search->AreSame(a, b); }
    };

    Cost CostIn(Zone zone, Symbol symbol) const;
    std::size_t HashOf(NodeId node) const;
    bool AreSame(NodeId a, NodeId b) const;
    void Begin(AddressKind kind, Cost cost);
    void Expand(NodeId node);
    void Follow(NodeId from, Symbol symbol, Zone zone, Cost cost);
    bool AddState(StateId state, bool isMust);
    void Add(Node const& node);
    void AddEnd(NodeId node);
    bool IsHopeless(NodeId node);
    Outcome TryEnd(NodeId node);
    Address AddressOf(NodeId node) const;
    Cost CostToEnd(Node const& node) const;
    bool Spend(std::size_t steps);

    AutomatonPool& pool_;
    std::vector<SideId> const must_;
    std::vector<SideId> const others_;
    Judge& judge_;
    Allowance& allowance_;
    Prefer const prefer_;
    std::size_t bytes_ = 0; // Taken from the allowance, and given back in the end.
    bool isSpent_ = false;
    std::vector<StateId> states_;
    std::vector<Node> nodes_;
    std::unordered_set<NodeId, Hash, Equal> known_;
    std::priority_queue<Entry> queue_;
    std::vector<SideId> sides_; // For the judge.
};

} // namespace CallRecordingUtils

#endif
