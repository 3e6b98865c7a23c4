// The rules behind a handle of the C interface, and what is known about how they were loaded.

#ifndef C_RULEHANDLE_H
#define C_RULEHANDLE_H

#include <cstddef>
#include <ctime>
#include <mutex>
#include <string>
#include <string_view>

#include <ThreadMutex.h>

#include "Published.h"
#include "loading/LoadedRules.h"

namespace CallRecordingUtils {

/// How a call was answered; the counters of the published rules.
enum class AnswerKind : std::size_t { Yes, No, Forbidden, Error };

/// Any number of threads may use it at once.
class RuleHandle {
  public:
    /// The rules of the file at path, once Reload has read them.
    explicit RuleHandle(std::string path);

    RuleHandle(RuleHandle const&) = delete;
    RuleHandle& operator=(RuleHandle const&) = delete;

    enum class Result { Loaded, Unchanged, Failed };
    struct Outcome {
        Result result;
        LoadFailure failure; // With Loaded: that the file is missing.
    };

    /// Reads the file. When it cannot be read the rules stay as they are.
    Outcome Reload();

    /// Reads the file if it is another one than at the last attempt. The rest is as with Reload.
    /// While another thread reads rules it returns at once: Unchanged.
    Outcome ReloadIfChanged();

    /// Takes the rules of a text instead of the file's.
    Outcome Load(std::string_view text);

    using Reader = Published<LoadedRules>::Reader;
    Published<LoadedRules>& Rules() { return rules_; }

    /// How many calls were answered like this, as the readers counted.
    std::size_t Answers(AnswerKind kind) const {
        return rules_.Counted(static_cast<std::size_t>(kind));
    }

    /// How loading went.
    struct History {
        std::size_t loads = 0; // Attempts, failed ones included.
        std::size_t failedLoads = 0;
        std::time_t lastFailedTime = 0;
        LoadFailure lastFailed; // Of the last attempt that failed, whatever came afterwards.
        LoadFailure last;       // Of the last attempt.
    };
    History LoadHistory();

    /// The failure of the last attempt. Needs no memory.
    std::size_t CopyLastFailure(char* buffer, std::size_t size);

  private:
    /// What the last attempt saw of the file.
    struct Seen {
        Result result = Result::Unchanged;
        FileStamp stamp;
        bool isSettled = false; // A later change would have changed the stamp.
    };

    enum class Replacing { Always, IfOther };
    template <typename Read>
    Outcome Attempt(Replacing replacing, Read read) noexcept;
    void Remember(Seen const& seen, LoadFailure const& failure) noexcept;
    bool MayHaveChanged();
    bool Holds(LoadedRules const& loaded);

    Published<LoadedRules> rules_;
    std::string const path_;
    std::mutex loading_; // Held while rules are read and put in place.

    ThreadMutex mutex_; // Guards what follows, for a moment at a time.
    Seen seen_;
    History history_;
};

/// Writes text to buffer, cut to fit into size bytes with its NUL. buffer may be null when size is
/// 0.
void CopyToBuffer(std::string_view text, char* buffer, std::size_t size);

} // namespace CallRecordingUtils

#endif
