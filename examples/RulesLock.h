/// @file
/// A lock for decisions on many threads, beside which a reload does not wait for a pause.

#ifndef EXAMPLES_RULESLOCK_H
#define EXAMPLES_RULESLOCK_H

#include <atomic>
#include <mutex>
#include <shared_mutex>

/// Decisions share it (std::shared_lock), and whatever changes the rules has it alone
/// (std::unique_lock). A plain std::shared_mutex would do but for one thing: most systems let new
/// readers in while a writer waits, so that threads which decide without pause can hold off a
/// reload for minutes. Here, once a reload waits, new decisions stand behind it; it waits for those
/// that run and no longer. A thread must not take the lock a second time while it has it.
class RulesLock {
  public:
    void lock_shared() {
        // The queue costs something, so decisions pass it by while there is none.
        if (waiting_.load(std::memory_order_relaxed) > 0)
            std::lock_guard const queue(queue_);
        rules_.lock_shared();
    }
    void unlock_shared() { rules_.unlock_shared(); }

    void lock() {
        ++waiting_;
        std::lock_guard const queue(queue_);
        rules_.lock();
        --waiting_;
    }
    void unlock() { rules_.unlock(); }

  private:
    std::atomic<int> waiting_{0}; // Threads that want to change the rules.
    std::mutex queue_;            // Held by the first of them, until the decisions have ended.
    std::shared_mutex rules_;
};

#endif
