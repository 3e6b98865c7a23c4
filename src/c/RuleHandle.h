// The rules of one file for the C interface: read aside, then put in place of the old ones.

#ifndef C_RULEHANDLE_H
#define C_RULEHANDLE_H

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <ThreadMutex.h>

#include <callrecordingutils/CallRecordingRuleParams.h>

#include "matching/Decision.h"
#include "matching/RuleIndex.h"

namespace CallRecordingUtils {

/// Rules as they were read; nothing changes them.
class RuleSnapshot {
  public:
    /// None.
    RuleSnapshot() = default;
    /// Those of the file at path. Throws what RuleFile does.
    explicit RuleSnapshot(std::string const& path);

    RuleSnapshot(RuleSnapshot const&) = delete;
    RuleSnapshot& operator=(RuleSnapshot const&) = delete;

    std::vector<CallRecordingRuleParams> const& Records() const { return records_; }

    /// The record that decides call, or null.
    CallRecordingRuleParams const* Deciding(Call const& call) const {
        return DecidingRecord(order_, index_, call);
    }

  private:
    std::vector<CallRecordingRuleParams> records_;
    std::list<CallRecordingRuleParams*> order_; // Of the records.
    RuleIndex index_;                           // Of order_.
};

/// Any number of threads may use it at once.
class RuleHandle {
  public:
    /// Without rules, until Reload has read them.
    explicit RuleHandle(std::string path);

    RuleHandle(RuleHandle const&) = delete;
    RuleHandle& operator=(RuleHandle const&) = delete;

    /// Reads the file. When it cannot be read the rules stay, and the last failure says why.
    bool Reload();

    /// The rules as they are now; they live as long as somebody holds them.
    std::shared_ptr<RuleSnapshot const> Rules();

    /// Writes the last failure to buffer, cut to fit into size bytes with its NUL, and returns its
    /// whole length. Needs no memory.
    std::size_t CopyLastFailure(char* buffer, std::size_t size);

  private:
    void Replace(std::shared_ptr<RuleSnapshot const> rules, std::string failure) noexcept;

    std::string const path_;
    ThreadMutex reloading_; // From before a reload reads until it has replaced the rules.
    ThreadMutex mutex_;     // Guards the rest, for a moment at a time.
    std::shared_ptr<RuleSnapshot const> rules_;
    std::string lastFailure_;
};

/// Writes text to buffer, cut to fit into size bytes with its NUL. buffer may be null when size is
/// 0.
void CopyToBuffer(std::string const& text, char* buffer, std::size_t size);

} // namespace CallRecordingUtils

#endif
