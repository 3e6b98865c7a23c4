// An object that many threads read while one replaces it, without a lock that the readers share.

#ifndef C_PUBLISHED_H
#define C_PUBLISHED_H

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <utility>

#include <sched.h>

namespace CallRecordingUtils {

/// Readers count themselves in and out in a slot of the processor they run on, so that two of them
/// hardly ever write to the same cache line. Who replaces the object waits until nobody reads the
/// old one any more.
///
/// Why nobody reads what has been destroyed: a reader counts itself in before it loads the pointer,
/// and a replacement changes the pointer before it looks at the counts; all of these are
/// sequentially consistent. So a reader that has loaded the old pointer is counted when the counts
/// are looked at, and each of them is waited for until it has been 0. There are two counts a slot,
/// of which new readers use one: the other runs down to 0 however many readers come.
template <typename T>
class Published {
    static constexpr std::size_t kSlots = 32;
    static constexpr std::size_t kCounters = 4;
    static constexpr std::size_t kCacheLine = 64;

    struct alignas(kCacheLine) Slot {
        std::array<std::atomic<std::uint32_t>, 2> readers{};
        std::array<std::atomic<std::size_t>, kCounters> counters{};
    };

  public:
    explicit Published(std::unique_ptr<T const> object) : object_(object.release()) {}
    Published(Published const&) = delete;
    Published& operator=(Published const&) = delete;
    ~Published() { delete object_.load(); }

    /// Keeps the object from being destroyed for as long as it lives, which should be short.
    class Reader {
      public:
        explicit Reader(Published& published)
            : slot_(published.slots_[CurrentSlot()]),
              readers_(slot_.readers[published.current_.load()]) {
            readers_.fetch_add(1);
            object_ = published.object_.load();
        }
        ~Reader() { readers_.fetch_sub(1); }
        Reader(Reader const&) = delete;
        Reader& operator=(Reader const&) = delete;

        T const& operator*() const { return *object_; }
        T const* operator->() const { return object_; }

        /// Adds 1 to a counter of the published object, one of kCounters.
        void Count(std::size_t counter) const {
            slot_.counters[counter].fetch_add(1, std::memory_order_relaxed);
        }

      private:
        Slot& slot_;
        std::atomic<std::uint32_t>& readers_;
        T const* object_;
    };

    /// Puts object in place of the old one, and destroys that when nobody reads it any more.
    /// REQUIRES: one thread at a time, and none that holds a Reader.
    void Replace(std::unique_ptr<T const> object) noexcept {
        std::unique_ptr<T const> const old(object_.exchange(object.release()));
        for (int i = 0; i < 2; ++i) {
            unsigned const before = current_.load();
            current_.store(1 - before);
            for (Slot& slot : slots_)
                WaitForNone(slot.readers[before]);
        }
    }

    /// The sum of a counter.
    std::size_t Counted(std::size_t counter) const {
        std::size_t sum = 0;
        for (Slot const& slot : slots_)
            sum += slot.counters[counter].load(std::memory_order_relaxed);
        return sum;
    }

  private:
    static std::size_t CurrentSlot() {
        int const processor = sched_getcpu(); // -1 where the system cannot say; any slot is right.
        return static_cast<unsigned>(processor) % kSlots;
    }

    /// Sleeps rather than spins: the reader may have to run on this very processor.
    static void WaitForNone(std::atomic<std::uint32_t> const& readers) {
        constexpr timespec kPause{0, 20000};
        while (readers.load() != 0)
            nanosleep(&kPause, nullptr);
    }

    std::array<Slot, kSlots> slots_{};
    std::atomic<unsigned> current_{0}; // Which of the two counts new readers use.
    alignas(kCacheLine) std::atomic<T const*> object_;
};

} // namespace CallRecordingUtils

#endif
