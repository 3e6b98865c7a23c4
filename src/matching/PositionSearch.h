// The search of the pattern matcher when range expressions can end at several positions.

#ifndef MATCHING_POSITIONSEARCH_H
#define MATCHING_POSITIONSEARCH_H

#include <array>
#include <cstddef>
#include <memory_resource>
#include <string_view>
#include <vector>

#include "common/Bits.h"
#include "matching/MatchedTexts.h"

namespace CallRecordingUtils {

/// Continues a search from one element and one position.
///
/// Before each element there is a row of bits: the positions of the address that can be reached. An
/// element moves a whole row on, 64 positions at a time, so the time goes into testing candidates.
/// Whether a list of items admits the run of some length at some position is tested only once,
/// however many range expressions have this list.
///
/// The rows answer whether the pattern matches. The way that the recursion takes is found
/// afterwards, if it is asked for: the search follows the recursion over the positions of the rows,
/// and clears those from which it had to turn back, so that it never comes there twice. Only this
/// needs all rows at once: a bit for each element and position.
class PositionSearch {
  public:
    enum class Asked { Answer, AnswerAndWay };

    /// texts must outlive the search.
    PositionSearch(MatchedTexts const& texts, Asked asked);

    /// Returns whether the pattern, from the element at `at`, matches the address from the position
    /// of way. If so and if the way was asked for, way becomes the recursion's way to the end.
    bool Matches(std::size_t at, Way& way);

    /// Where in the pattern the match ends. REQUIRES: Matches returned true.
    std::size_t End() const { return steps_.back().element.begin; }

  private:
    /// An element of the pattern.
    struct Step {
        Element element;
        Lengths lengths;  // Of what it takes.
        Lengths rest;     // Of what it and all elements after it take together.
        std::size_t list; // The place in lists_ of a range expression.
    };

    /// The items of one or more range expressions.
    struct List {
        std::string_view items;
        Lengths lengths;
        std::size_t known; // Where known_ has its tests; kNotKept if it does not.
    };

    /// Which runs of one length, from 64 positions, have been tested, and which were admitted.
    struct Known {
        Word tested = 0;
        Word admitted = 0;
    };
    static constexpr std::size_t kNotKept = static_cast<std::size_t>(-1);
    static constexpr std::size_t kMostKept = std::size_t{1} << 16;

    bool ReadSteps(std::size_t at);
    Lengths ReadLengths(Step& step);
    std::size_t ListOf(Element const& range);

    Word* Row(std::size_t k);
    bool Move(std::size_t k);
    void SetWanted(Step const& next);
    void MoveSingle(Element const& element, Word const* from, Word* to) const;
    void MoveAnyRun(Word const* from, Word* to) const;
    void MoveRange(Step const& range, Word const* from, Word* to);
    Word Admitted(List const& list, std::size_t length, std::size_t w, Word from);

    void FindWay(Way& way);
    std::size_t NextEnd(std::size_t k, std::size_t position, std::size_t untried);
    bool Takes(Step const& step, std::size_t position, std::size_t end);

    MatchedTexts const& texts_;
    Asked const asked_;
    std::size_t const words_; // Of a row.

    // For addresses and patterns of the usual lengths everything fits into the array, so nothing is
    // allocated.
    std::array<std::byte, 4096> memory_;
    std::pmr::monotonic_buffer_resource arena_{memory_.data(), memory_.size()};
    std::pmr::vector<Step> steps_{&arena_};
    std::pmr::vector<List> lists_{&arena_};
    std::pmr::vector<Known> known_{&arena_};
    std::pmr::vector<Word> rows_{&arena_};   // All rows if the way is asked for, else two.
    std::pmr::vector<Word> wanted_{&arena_}; // The positions that the next row may still get.
};

} // namespace CallRecordingUtils

#endif
