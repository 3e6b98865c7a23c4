// Builds sets of addresses.

#include "analysis/SideLanguage.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostNodes = 4000;
constexpr std::uint64_t kMostCount = std::uint64_t{1} << 53; // Exact in JSON, too.

/// How many bytes a symbol stands for.
std::uint64_t BytesOf(Symbol symbol) {
    if (symbol >= kTextSymbols)
        return 1;
    return static_cast<std::uint64_t>(std::count(kSymbolOf.begin(), kSymbolOf.end(), symbol));
}

/// An automaton over texts that is not the smallest yet.
struct RawTexts {
    std::vector<TextLanguage::Row> next;
    std::vector<bool> isAccepting;
    std::vector<bool> isAddress; // Whether a text that ends here is an address at all.
    std::uint32_t start;
};

/// The states from which one of those is reached, themselves among them.
template <typename Rows>
std::vector<bool> Reaching(Rows const& next, std::vector<bool> reaching) {
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (std::size_t state = next.size(); state-- > 0;)
            if (!reaching[state] &&
                std::any_of(next[state].begin(), next[state].end(),
                            [&](std::uint32_t to) { return to < reaching.size() && reaching[to]; }))
                reaching[state] = isChanged = true;
    }
    return reaching;
}

/// States from which no address is rejected accept everything, and the other way round.
void Settle(RawTexts& texts) {
    std::vector<bool> ends(texts.next.size());
    for (std::size_t state = 0; state < ends.size(); ++state)
        ends[state] = texts.isAddress[state] && !texts.isAccepting[state];
    std::vector<bool> const canAccept = Reaching(texts.next, texts.isAccepting);
    std::vector<bool> const canReject = Reaching(texts.next, ends);
    for (std::uint32_t state = 0; state < ends.size(); ++state)
        if (!canAccept[state] || !canReject[state]) {
            texts.next[state].fill(state);
            texts.isAccepting[state] = canAccept[state];
        }
}

/// States that accept the same become one (Moore); then they are numbered as they are met.
TextLanguage Smallest(RawTexts texts) {
    Settle(texts);
    std::size_t const count = texts.next.size();
    std::vector<std::uint32_t> group(count);
    for (std::size_t state = 0; state < count; ++state)
        group[state] = texts.isAccepting[state] ? 1 : 0;
    for (std::size_t groups = 0;;) {
        std::map<std::pair<std::uint32_t, TextLanguage::Row>, std::uint32_t> known;
        std::vector<std::uint32_t> divided(count);
        for (std::size_t state = 0; state < count; ++state) {
            TextLanguage::Row row;
            std::transform(texts.next[state].begin(), texts.next[state].end(), row.begin(),
                           [&group](std::uint32_t to) { return group[to]; });
            divided[state] =
                known
                    .emplace(std::pair(group[state], row), static_cast<std::uint32_t>(known.size()))
                    .first->second;
        }
        group = std::move(divided);
        if (known.size() == groups)
            break;
        groups = known.size();
    }
    TextLanguage smallest;
    std::map<std::uint32_t, std::uint32_t> numberOf{{group[texts.start], 0}};
    std::vector<std::uint32_t> states{texts.start};
    for (std::size_t i = 0; i < states.size(); ++i) {
        TextLanguage::Row row;
        for (std::size_t symbol = 0; symbol < kTextSymbols; ++symbol) {
            std::uint32_t const to = texts.next[states[i]][symbol];
            auto const [known, isNew] =
                numberOf.emplace(group[to], static_cast<std::uint32_t>(states.size()));
            if (isNew)
                states.push_back(to);
            row[symbol] = known->second;
        }
        smallest.next.push_back(row);
        smallest.isAccepting.push_back(texts.isAccepting[states[i]]);
    }
    return smallest;
}

} // namespace

SideProduct::SideProduct(AutomatonPool& pool, SideId must, std::vector<SideId> others)
    : pool_(pool), sides_(std::move(others)) {
    sides_.insert(sides_.begin(), must);
}

bool SideProduct::Run(Allowance& allowance) {
    for (AddressKind const kind : {kNumber, kSip, kNumber2}) {
        std::vector<StateId> states;
        for (SideId const side : sides_)
            states.push_back(pool_.Start(side, kind));
        start_[kind] = NodeOf(FirstZone(kind), std::move(states));
    }
    for (std::uint32_t node = 0; node < nodes_.size(); ++node) {
        std::uint64_t const steps = kSymbols * (sides_.size() + 8);
        if (nodes_.size() > kMostNodes || allowance.steps < steps)
            return false;
        allowance.steps -= steps;
        Expand(node);
    }
    return true;
}

std::uint32_t SideProduct::NodeOf(Zone zone, std::vector<StateId> states) {
    if (states[0] == 0)
        states.assign(states.size(), 0);
    auto const [known, isNew] =
        known_.emplace(std::pair(zone, states), static_cast<std::uint32_t>(nodes_.size()));
    if (!isNew)
        return known->second;
    std::uint32_t set = kNoSet;
    if (MayEndIn(zone) && pool_.IsAccepting(states[0])) {
        Accepted accepted;
        for (std::uint32_t i = 1; i < states.size(); ++i)
            if (pool_.IsAccepting(states[i]))
                accepted.push_back(i - 1);
        auto const number = numberOf_.emplace(accepted, static_cast<std::uint32_t>(sets_.size()));
        if (number.second)
            sets_.push_back(accepted);
        set = number.first->second;
    }
    nodes_.push_back({std::move(states), zone, {}, set, kNoNode});
    return known->second;
}

void SideProduct::Expand(std::uint32_t node) {
    Zone const zone = nodes_[node].zone;
    std::vector<StateId> const states = nodes_[node].states;
    SymbolSet special;
    for (StateId const state : states)
        special |= pool_.SpecialOf(state);
    std::map<Zone, std::uint32_t> rest; // By the zone behind.
    for (std::size_t i = 0; i < kSymbols; ++i) {
        auto const symbol = static_cast<Symbol>(i);
        auto const behind = ZoneBehind(pool_.Calls(), zone, symbol);
        std::uint32_t to = kNoNode;
        if (behind && !special.Has(symbol) && rest.count(*behind) != 0) {
            to = rest[*behind];
        } else if (behind) {
            std::vector<StateId> next;
            for (StateId const state : states)
                next.push_back(pool_.Next(state, symbol));
            to = NodeOf(*behind, std::move(next));
            if (!special.Has(symbol))
                rest[*behind] = to;
        }
        nodes_[node].next[symbol] = to;
    }
    nodes_[node].rest = nodes_[node].next[kAboveDigits];
}

SideProduct::Outlook SideProduct::Look(std::vector<bool> const& accepts) const {
    std::vector<std::array<std::uint32_t, kSymbols>> next;
    std::vector<bool> rejects;
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
        next.push_back(nodes_[node].next);
        rejects.push_back(MayEndIn(nodes_[node].zone) && !accepts[node]);
    }
    return {Reaching(next, accepts), Reaching(next, rejects)};
}

SideLanguage SideProduct::LanguageOf(std::vector<bool> const& wanted) const {
    std::vector<bool> accepts;
    for (Node const& node : nodes_)
        accepts.push_back(node.set != kNoSet && wanted[node.set]);
    Outlook const outlook = Look(accepts);
    auto users = Users(outlook);
    bool const isSipOfUser = users.has_value();
    return {Texts(start_[kNumber], accepts), Texts(start_[kNumber2], accepts),
            isSipOfUser ? std::move(*users) : WholeTexts(accepts), isSipOfUser,
            Count(accepts, outlook)};
}

/// Where no address goes on like a text, it does not matter what is said of that text.
TextLanguage SideProduct::Texts(std::uint32_t start, std::vector<bool> const& accepts) const {
    RawTexts texts{{}, accepts, std::vector<bool>(nodes_.size(), true), start};
    for (std::uint32_t node = 0; node < nodes_.size(); ++node) {
        TextLanguage::Row& row = texts.next.emplace_back();
        for (std::size_t symbol = 0; symbol < kTextSymbols; ++symbol) {
            std::uint32_t const to = nodes_[node].next[symbol];
            std::uint32_t const instead = nodes_[node].rest == kNoNode ? node : nodes_[node].rest;
            row[symbol] = to == kNoNode ? instead : to;
        }
    }
    return Smallest(std::move(texts));
}

/// Nothing: the host or port matters.
std::optional<TextLanguage> SideProduct::Users(Outlook const& outlook) const {
    std::vector<bool> takes(nodes_.size(), false);
    for (std::size_t node = 0; node < nodes_.size(); ++node) {
        std::uint32_t const host = nodes_[node].next[kHostMark];
        if (host == kNoNode)
            continue;
        if (outlook.canAccept[host] && outlook.canReject[host])
            return std::nullopt;
        takes[node] = outlook.canAccept[host];
    }
    return Texts(start_[kSip], takes);
}

/// The texts user@host:port: an "@" or ":" may be the mark or belong to the user or host.
TextLanguage SideProduct::WholeTexts(std::vector<bool> const& accepts) const {
    std::map<std::vector<std::uint32_t>, std::uint32_t> known{{{start_[kSip]}, 0}};
    std::vector<std::vector<std::uint32_t>> sets{{start_[kSip]}};
    RawTexts texts{{}, {}, {}, 0};
    for (std::size_t i = 0; i < sets.size(); ++i) {
        bool isAccepting = false;
        bool isAddress = false;
        for (std::uint32_t const node : sets[i]) {
            isAccepting = isAccepting || accepts[node];
            isAddress = isAddress || MayEndIn(nodes_[node].zone);
        }
        texts.isAccepting.push_back(isAccepting);
        texts.isAddress.push_back(isAddress);
        TextLanguage::Row row{};
        for (std::size_t j = 0; j < kTextSymbols; ++j) {
            std::vector<std::uint32_t> to;
            for (std::uint32_t const node : sets[i])
                for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
                    if (TextSymbolOf(static_cast<Symbol>(symbol)) == j &&
                        nodes_[node].next[symbol] != kNoNode)
                        to.push_back(nodes_[node].next[symbol]);
            std::sort(to.begin(), to.end());
            to.erase(std::unique(to.begin(), to.end()), to.end());
            auto const [place, isNew] = known.emplace(to, static_cast<std::uint32_t>(sets.size()));
            if (isNew)
                sets.push_back(to);
            row[j] = place->second;
        }
        texts.next.push_back(row);
    }
    return Smallest(std::move(texts));
}

/// The addresses that are accepted, symbol by symbol from the longest end on.
std::optional<std::uint64_t> SideProduct::Count(std::vector<bool> const& accepts,
                                                Outlook const& outlook) const {
    enum Mark : std::uint8_t { kNew, kOpen, kDone };
    std::vector<Mark> marks(nodes_.size(), kNew);
    std::vector<std::uint64_t> counts(nodes_.size(), 0);
    std::vector<std::uint32_t> stack(start_.begin(), start_.end());
    while (!stack.empty()) {
        std::uint32_t const node = stack.back();
        if (!outlook.canAccept[node] || marks[node] == kDone) {
            stack.pop_back();
            continue;
        }
        bool const isOpened = marks[node] == kOpen;
        marks[node] = isOpened ? kDone : kOpen;
        std::uint64_t count = accepts[node] ? 1 : 0;
        for (std::size_t symbol = 0; symbol < kSymbols; ++symbol) {
            std::uint32_t const to = nodes_[node].next[symbol];
            if (to == kNoNode || !outlook.canAccept[to])
                continue;
            if (!isOpened && marks[to] == kOpen)
                return std::nullopt; // A way back: no end of them.
            if (!isOpened && marks[to] == kNew)
                stack.push_back(to);
            if (isOpened && counts[to] > kMostCount / 256)
                return std::nullopt;
            if (isOpened)
                count += counts[to] * BytesOf(static_cast<Symbol>(symbol));
        }
        counts[node] = count;
        if (isOpened)
            stack.pop_back();
    }
    std::uint64_t sum = 0;
    for (std::uint32_t const start : start_)
        sum += outlook.canAccept[start] ? counts[start] : 0;
    return sum;
}

} // namespace CallRecordingUtils
