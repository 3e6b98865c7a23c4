// Moves the rows of positions on, and finds the recursion's way through them.

#include "matching/PositionSearch.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

void Set(Word* row, std::size_t position) {
    row[position / kWordBits] |= Word{1} << position % kWordBits;
}

void Clear(Word* row, std::size_t position) {
    row[position / kWordBits] &= ~(Word{1} << position % kWordBits);
}

/// Sets the positions from begin up to end in row.
void SetAll(Word* row, std::size_t begin, std::size_t end) {
    for (; begin < end && begin % kWordBits != 0; ++begin)
        Set(row, begin);
    for (; end - begin >= kWordBits && begin < end; begin += kWordBits)
        row[begin / kWordBits] = ~Word{0};
    for (; begin < end; ++begin)
        Set(row, begin);
}

/// Returns the first position from position on that is in row, a row of `words` words; npos when
/// there is none.
std::size_t FirstFrom(Word const* row, std::size_t words, std::size_t position) {
    std::size_t w = position / kWordBits;
    Word word = w < words ? row[w] & ~Word{0} << position % kWordBits : 0;
    while (word == 0 && ++w < words)
        word = row[w];
    return word == 0 ? std::string_view::npos : w * kWordBits + LowestBit(word);
}

/// Calls act with the position of each bit of word, which is word w of a row.
template <typename Act>
void ForEach(Word word, std::size_t w, Act act) {
    for (; word != 0; word &= word - 1)
        act(w * kWordBits + LowestBit(word));
}

/// Returns word w of a row of `words` words that is moved towards the front by distance.
Word MovedBack(Word const* row, std::size_t words, std::size_t w, std::size_t distance) {
    std::size_t const from = w + distance / kWordBits;
    std::size_t const bits = distance % kWordBits;
    Word const near = from < words ? row[from] >> bits : 0;
    return bits > 0 && from + 1 < words ? near | row[from + 1] << (kWordBits - bits) : near;
}

} // namespace

PositionSearch::PositionSearch(MatchedTexts const& texts, Asked asked)
    : texts_(texts), asked_(asked), words_(texts.address.size() / kWordBits + 1) {}

bool PositionSearch::Matches(std::size_t at, Way& way) {
    if (!ReadSteps(at))
        return false;
    rows_.resize((asked_ == Asked::Answer ? 2 : steps_.size()) * words_);
    wanted_.resize(words_);
    Set(Row(0), way.position);
    for (std::size_t k = 0; k + 1 < steps_.size(); ++k)
        if (!Move(k))
            return false;
    if (asked_ == Asked::AnswerAndWay)
        FindWay(way);
    return true;
}

/// Reads the pattern from at to its end. Returns false when it cannot match.
bool PositionSearch::ReadSteps(std::size_t at) {
    steps_.reserve(8); // Each in one go, for most patterns.
    lists_.reserve(4);
    known_.reserve(8 * words_);
    std::size_t const size = texts_.address.size();
    for (bool isRead = false; !isRead;) {
        Step step{ReadElement(texts_.pattern, at), {0, 0}, {0, 0}, 0};
        Construct const construct = step.element.construct;
        if (construct == Construct::Unclosed)
            return false;
        isRead = construct == Construct::End || construct == Construct::Stop;
        step.lengths = ReadLengths(step);
        at = step.element.end;
        steps_.push_back(step);
    }
    Lengths rest{0, 0};
    for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
        rest.shortest += step->lengths.shortest;
        rest.longest = std::min(size, rest.longest + step->lengths.longest);
        step->rest = rest;
    }
    return true;
}

Lengths PositionSearch::ReadLengths(Step& step) {
    switch (step.element.construct) {
    case Construct::End:
        if (texts_.ending == Ending::AtEnd)
            return {0, 0};
        [[fallthrough]];
    case Construct::Stop:
    case Construct::AnyRun: return {0, texts_.address.size()};
    case Construct::Range: step.list = ListOf(step.element); return lists_[step.list].lengths;
    default: return {1, 1};
    }
}

std::size_t PositionSearch::ListOf(Element const& range) {
    std::string_view const items = ItemsOf(texts_.pattern, range);
    for (std::size_t i = 0; i < lists_.size(); ++i)
        if (lists_[i].items == items)
            return i;
    Lengths lengths = CandidateLengths(items);
    lengths.longest = std::min(lengths.longest, texts_.address.size());
    // If that took too much memory, candidates are tested again each time.
    bool const isKept = lengths.longest <= (kMostKept - known_.size()) / words_;
    lists_.push_back({items, lengths, isKept ? known_.size() : kNotKept});
    if (isKept)
        known_.resize(known_.size() + lengths.longest * words_);
    return lists_.size() - 1;
}

Word* PositionSearch::Row(std::size_t k) {
    return rows_.data() + (asked_ == Asked::Answer ? k % 2 : k) * words_;
}

/// Makes row k + 1, the positions that element k leads to. Returns whether there are any.
bool PositionSearch::Move(std::size_t k) {
    Step const& step = steps_[k];
    Word const* const from = Row(k);
    Word* const to = Row(k + 1);
    SetWanted(steps_[k + 1]);
    std::fill(to, to + words_, 0);
    switch (step.element.construct) {
    case Construct::AnyRun: MoveAnyRun(from, to); break;
    case Construct::Range: MoveRange(step, from, to); break;
    default: MoveSingle(step.element, from, to);
    }
    return std::any_of(to, to + words_, [](Word word) { return word != 0; });
}

/// Before next only those positions are wanted from which the rest of the address is as long as the
/// rest of the pattern can be.
void PositionSearch::SetWanted(Step const& next) {
    std::fill(wanted_.begin(), wanted_.end(), 0);
    std::size_t const size = texts_.address.size();
    if (next.rest.shortest > size)
        return;
    std::size_t const first = size - next.rest.longest;
    if (next.element.construct != Construct::End || texts_.ending == Ending::AtEnd) {
        SetAll(wanted_.data(), first, size - next.rest.shortest + 1);
        return;
    }
    for (std::size_t position = first; position < size; ++position)
        if (texts_.CanEndAt(position))
            Set(wanted_.data(), position);
}

void PositionSearch::MoveSingle(Element const& element, Word const* from, Word* to) const {
    for (std::size_t w = 0; w < words_; ++w)
        ForEach(
            from[w] & MovedBack(wanted_.data(), words_, w, 1), w,
            [&](std::size_t position) {
                Way way{position, {}};
                if (texts_.Take(element, position + 1, way))
                    Set(to, position + 1);
            });
}

void PositionSearch::MoveAnyRun(Word const* from, Word* to) const {
    std::size_t const first = FirstFrom(from, words_, 0);
    std::size_t w = first / kWordBits;
    to[w] = wanted_[w] & ~Word{0} << first % kWordBits;
    while (++w < words_)
        to[w] = wanted_[w];
}

void PositionSearch::MoveRange(Step const& range, Word const* from, Word* to) {
    List const& list = lists_[range.list];
    for (std::size_t length = list.lengths.shortest; length <= list.lengths.longest; ++length) {
        std::size_t const skip = length / kWordBits;
        std::size_t const bits = length % kWordBits;
        for (std::size_t w = 0; w + skip < words_; ++w) {
            Word const open = from[w] & MovedBack(wanted_.data(), words_, w, length);
            Word const moved = open == 0 ? 0 : Admitted(list, length, w, open);
            if (moved == 0)
                continue;
            // A position that has been reached is not wanted again.
            to[w + skip] |= moved << bits;
            wanted_[w + skip] &= ~(moved << bits);
            if (bits > 0 && w + skip + 1 < words_) {
                to[w + skip + 1] |= moved >> (kWordBits - bits);
                wanted_[w + skip + 1] &= ~(moved >> (kWordBits - bits));
            }
        }
    }
}

/// Returns those positions in from, word w of a row, at which list admits the run of this length.
/// REQUIRES: these runs lie in the address.
Word PositionSearch::Admitted(List const& list, std::size_t length, std::size_t w, Word from) {
    Known kept;
    Known& known = list.known == kNotKept ? kept : known_[list.known + (length - 1) * words_ + w];
    ForEach(from & ~known.tested, w, [&](std::size_t position) {
        Consumed consumed;
        if (AdmitsCandidate(list.items, texts_.address.substr(position, length), consumed))
            known.admitted |= Word{1} << position % kWordBits;
    });
    known.tested |= from;
    return known.admitted & from;
}

/// Follows the recursion. From each position it tries the shortest run first, of those that lead to
/// a position of the next row.
void PositionSearch::FindWay(Way& way) {
    std::pmr::vector<std::size_t> positions(&arena_); // The way so far: one before each element.
    positions.reserve(steps_.size());
    positions.push_back(way.position);
    std::size_t untried = way.position;
    while (positions.size() < steps_.size()) {
        std::size_t const k = positions.size() - 1;
        std::size_t const end = NextEnd(k, positions.back(), untried);
        if (end <= texts_.address.size()) {
            positions.push_back(end);
            untried = end;
            continue;
        }
        untried = positions.back() + 1; // The run that led here was too short.
        Clear(Row(k), positions.back());
        positions.pop_back();
    }
    for (std::size_t k = 0; k + 1 < steps_.size(); ++k)
        (void)texts_.Take(steps_[k].element, positions[k + 1], way);
}

/// Returns the first position of the next row, from untried on, that element k leads to from
/// position; npos when there is none.
std::size_t PositionSearch::NextEnd(std::size_t k, std::size_t position, std::size_t untried) {
    Step const& step = steps_[k];
    Word const* const next = Row(k + 1);
    std::size_t const last = std::min(texts_.address.size(), position + step.lengths.longest);
    std::size_t end = std::max(untried, position + step.lengths.shortest);
    for (; (end = FirstFrom(next, words_, end)) <= last; ++end)
        if (Takes(step, position, end))
            return end;
    return std::string_view::npos;
}

bool PositionSearch::Takes(Step const& step, std::size_t position, std::size_t end) {
    if (step.element.construct == Construct::Range)
        return Admitted(lists_[step.list], end - position, position / kWordBits,
                        Word{1} << position % kWordBits) != 0;
    Way way{position, {}};
    return texts_.Take(step.element, end, way);
}

} // namespace CallRecordingUtils
