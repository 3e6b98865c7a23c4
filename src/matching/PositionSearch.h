// The search of the pattern matcher where range expressions can end at several positions.

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

/// Goes on with a search from one element and one position on.
///
/// Before each element a row of bits says at which positions of the address the reading can stand.
/// An element moves a row on as a whole, 64 positions at a time. So the time is that of testing the
/// candidates; and what a list of items makes of the run of a certain length at a certain position
/// is tested once, however many range expressions have this list.
///
/// The rows answer whether the pattern matches. Which way the backtracker takes is found after
/// that, when it is asked for: the search goes the backtracker's way over the positions of the
/// rows, and strikes out those from which it had to turn back, so that it never comes there twice.
/// This alone needs all the rows: a bit for each element and position.
class PositionSearch {
  public:
    enum class Asked { Answer, AnswerAndWay };

    /// texts must outlive the search.
    PositionSearch(MatchedTexts const& texts, Asked asked);

    /// Returns whether the pattern from the element at at on matches the address from the position
    /// of way on. When the way was asked for, way is the backtracker's then, at the match's end.
    bool Matches(std::size_t at, Way& way);

    /// Where in the pattern the match ends. REQUIRES: Matches returned true.
    std::size_t End() const { return steps_.back().element.begin; }

  private:
    /// An element of the pattern.
    struct Step {
        Element element;
        Lengths lengths;  // Of what it takes.
        Lengths rest;     // Of what it and all behind it take together.
        std::size_t list; // Of a range expression: its place in lists_.
    };

    /// The items of one or more range expressions.
    struct List {
        std::string_view items;
        Lengths lengths;
        std::size_t known; // Where known_ holds what was tested of it; kNotKept: nowhere.
    };

    /// What is known of the runs of one length from 64 positions: which were tested, and admitted.
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

    // For addresses and patterns of usual lengths everything fits into the array, and nothing is
    // allocated.
    std::array<std::byte, 4096> memory_;
    std::pmr::monotonic_buffer_resource arena_{memory_.data(), memory_.size()};
    std::pmr::vector<Step> steps_{&arena_};
    std::pmr::vector<List> lists_{&arena_};
    std::pmr::vector<Known> known_{&arena_};
    std::pmr::vector<Word> rows_{&arena_};   // All of them when the way is asked for, else two.
    std::pmr::vector<Word> wanted_{&arena_}; // Where the row that is being made may still grow.
};

} // namespace CallRecordingUtils

#endif
