// Reads rules aside, so that decisions go on meanwhile and a broken file takes nothing away.

#include "RuleHandle.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>
#include <utility>

#include "common/MutexGuard.h"

namespace CallRecordingUtils {
namespace {

/// Two changes within one tick of the system's clock can leave the same stamp. This is longer.
constexpr std::int64_t kTick = 50000000; // In nanoseconds.

bool IsOlderThanTick(FileStamp const& stamp) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::int64_t const last = std::max(stamp.written, stamp.changed);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec - last > kTick;
}

LoadFailure Copy(LoadFailure const& failure) noexcept {
    try {
        return failure;
    } catch (std::bad_alloc const&) {
        return {LoadFailure::Kind::Memory, "out of memory"}; // So short that it needs none.
    }
}

} // namespace

RuleHandle::RuleHandle(std::string path)
    : rules_(std::make_unique<LoadedRules const>()), path_(std::move(path)) {}

RuleHandle::Outcome RuleHandle::Reload() {
    if (path_.empty())
        return {Result::Failed,
                {LoadFailure::Kind::Other, "these rules come from a text, so there is no file"}};
    std::lock_guard<std::mutex> const guard(loading_);
    return Attempt(Replacing::Always,
                   [this](FileStamp& stamp) { return ReadRulesOfFile(path_, stamp); });
}

RuleHandle::Outcome RuleHandle::ReloadIfChanged() {
    if (path_.empty())
        return {Result::Unchanged, {}};
    if (!MayHaveChanged()) {
        MutexGuard const guard(mutex_);
        return {seen_.result == Result::Failed ? Result::Failed : Result::Unchanged, history_.last};
    }
    std::unique_lock<std::mutex> const lock(loading_, std::try_to_lock);
    if (!lock.owns_lock())
        return {Result::Unchanged, {}};
    return Attempt(Replacing::IfOther,
                   [this](FileStamp& stamp) { return ReadRulesOfFile(path_, stamp); });
}

/// A failed attempt is repeated only where another outcome is possible: a file that is malformed
/// stays so until it is another one.
bool RuleHandle::MayHaveChanged() {
    FileStamp const now = FileStamp::Of(path_);
    MutexGuard const guard(mutex_);
    if (!(now == seen_.stamp) || (!seen_.isSettled && IsOlderThanTick(now)))
        return true;
    return seen_.result == Result::Failed &&
           (now.error != 0 || history_.last.kind == LoadFailure::Kind::Memory);
}

RuleHandle::Outcome RuleHandle::Load(std::string_view text) {
    std::lock_guard<std::mutex> const guard(loading_);
    return Attempt(Replacing::Always, [text](FileStamp&) { return ReadRulesOfText(text); });
}

/// REQUIRES: loading_ is held.
template <typename Read>
RuleHandle::Outcome RuleHandle::Attempt(Replacing replacing, Read read) noexcept {
    Outcome outcome{Result::Failed, {}};
    Seen seen;
    std::unique_ptr<LoadedRules const> loaded;
    try {
        loaded = read(seen.stamp);
        if (seen.stamp.error == ENOENT)
            outcome.failure = {LoadFailure::Kind::Missing,
                               path_ + ": there is no such file, so there are no rules"};
    } catch (...) {
        loaded.reset();
        outcome.failure = FailureOf(std::current_exception(), path_);
    }
    seen.isSettled = IsOlderThanTick(seen.stamp);
    if (loaded) {
        bool const isOther = replacing == Replacing::Always || !Holds(*loaded);
        outcome.result = isOther ? Result::Loaded : Result::Unchanged;
        if (isOther)
            rules_.Replace(std::move(loaded));
    }
    seen.result = outcome.result;
    Remember(seen, outcome.failure);
    return outcome;
}

bool RuleHandle::Holds(LoadedRules const& loaded) {
    return Reader(rules_)->digest == loaded.digest;
}

void RuleHandle::Remember(Seen const& seen, LoadFailure const& failure) noexcept {
    LoadFailure last = Copy(failure);
    LoadFailure lastFailed = Copy(failure);
    MutexGuard const guard(mutex_);
    seen_ = seen;
    ++history_.loads;
    std::swap(history_.last, last);
    if (seen.result != Result::Failed)
        return;
    ++history_.failedLoads;
    history_.lastFailedTime = std::time(nullptr);
    std::swap(history_.lastFailed, lastFailed);
}

RuleHandle::History RuleHandle::LoadHistory() {
    MutexGuard const guard(mutex_);
    return history_;
}

std::size_t RuleHandle::CopyLastFailure(char* buffer, std::size_t size) {
    MutexGuard const guard(mutex_);
    CopyToBuffer(history_.last.text, buffer, size);
    return history_.last.text.size();
}

void CopyToBuffer(std::string_view text, char* buffer, std::size_t size) {
    if (size == 0)
        return;
    std::size_t const length = std::min(text.size(), size - 1);
    text.copy(buffer, length);
    buffer[length] = '\0';
}

} // namespace CallRecordingUtils
