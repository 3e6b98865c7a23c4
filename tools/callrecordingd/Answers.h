// Questions about calls, and their answers: as JSON, as a line for dialplans, and counted.

#ifndef CALLRECORDINGD_ANSWERS_H
#define CALLRECORDINGD_ANSWERS_H

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "LiveRules.h"
#include "calls/RuleSet.h"

namespace callrecordingd {

/// One side of a call as it was asked about: an address in any spelling or, with a host, its parts.
struct AskedParty {
    std::string address;
    std::optional<std::string> host;
    std::optional<std::string> port;

    CallRecordingUtils::Party Read() const;
};

struct Question {
    AskedParty from;
    AskedParty to;
    std::string id; ///< What the telephone system calls the call.

    CallRecordingUtils::PartyCall Call() const;
};

enum class Verdict { Recorded, NotRecorded, Forbidden, Undecided };

struct Answer {
    Verdict verdict = Verdict::Undecided;
    std::shared_ptr<Snapshot const> rules; ///< By which it was decided; null when undecided.
    std::size_t place = 0;                 ///< Of the rule; REQUIRES: Recorded or Forbidden.

    CallRecordingUtils::CallRecordingRuleParams const* Rule() const;

    /// {"recorded": ..., "rule": ..., "state": ...}
    std::string Json() const;
    /// yes|no|undecided, identifier, duration, type, destination, with tabs between them.
    std::string Line() const;
};

Answer Decide(LiveRules const& rules, Question const& question);

/// Counts answers, by what was answered and under which rule.
class AnswerCounts {
  public:
    /// The upper bounds of the histogram's buckets, in seconds.
    static constexpr std::array<double, 8> kBounds{1e-6,   2.5e-6, 5e-6, 1e-5,
                                                   2.5e-5, 1e-4,   1e-3, 1e-2};

    struct ByRule {
        std::uint64_t recorded = 0;
        std::uint64_t forbidden = 0;
    };
    struct Counts {
        std::map<std::int32_t, ByRule> byRule; ///< By identifiers.
        std::uint64_t notRecorded = 0;
        std::uint64_t undecided = 0;
        std::array<std::uint64_t, kBounds.size() + 1> buckets{}; ///< The last has no bound.
        double seconds = 0;

        std::uint64_t All() const;
    };

    void Count(Answer const& answer, std::chrono::nanoseconds time);
    Counts Now() const;

  private:
    mutable std::mutex mutex_;
    Counts counts_;
};

} // namespace callrecordingd

#endif
