// Reads the rules aside, so that decisions go on meanwhile and a broken file takes nothing away.

#include "RuleHandle.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "common/MutexGuard.h"
#include "database/RuleFile.h"

namespace CallRecordingUtils {
namespace {

/// Why reading failed, with the path where the platform does not say it.
std::string Reason(std::exception const& exception, std::string const& path) noexcept {
    try {
        std::string const reason(exception.what());
        return reason.find(path) != std::string::npos ? reason : path + ": " + reason;
    } catch (std::bad_alloc const&) {
        return "out of memory"; // So short that it needs none.
    }
}

} // namespace

RuleSnapshot::RuleSnapshot(std::string const& path) {
    RuleFile file(path);
    while (file.Next())
        records_.push_back(file.ReadRule());
    for (CallRecordingRuleParams& record : records_)
        order_.push_back(&record);
    index_.Build(order_);
}

RuleHandle::RuleHandle(std::string path)
    : path_(std::move(path)), rules_(std::make_shared<RuleSnapshot>()) {}

bool RuleHandle::Reload() {
    MutexGuard const guard(reloading_);
    try {
        Replace(std::make_shared<RuleSnapshot>(path_), "");
        return true;
    } catch (std::bad_alloc const&) {
        Replace(Rules(), "out of memory");
    } catch (std::exception const& exception) {
        Replace(Rules(), Reason(exception, path_));
    }
    return false;
}

std::shared_ptr<RuleSnapshot const> RuleHandle::Rules() {
    MutexGuard const guard(mutex_);
    return rules_;
}

std::size_t RuleHandle::CopyLastFailure(char* buffer, std::size_t size) {
    MutexGuard const guard(mutex_);
    CopyToBuffer(lastFailure_, buffer, size);
    return lastFailure_.size();
}

// The old rules are destroyed behind the lock: many of them take their time.
void RuleHandle::Replace(std::shared_ptr<RuleSnapshot const> rules, std::string failure) noexcept {
    MutexGuard const guard(mutex_);
    rules_.swap(rules);
    lastFailure_.swap(failure);
}

void CopyToBuffer(std::string const& text, char* buffer, std::size_t size) {
    if (size == 0)
        return;
    std::size_t const length = std::min(text.size(), size - 1);
    text.copy(buffer, length);
    buffer[length] = '\0';
}

} // namespace CallRecordingUtils
