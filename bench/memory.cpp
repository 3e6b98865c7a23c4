/// @file
/// What a decision and a loaded rule take from the heap, and the size of the library.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include <fmt/format.h>
#include <malloc.h>

#include "benchmarks.h"
#include "engines.h"
#include "rules.h"

// The whole process allocates through these functions, and so does the shared library: the symbols
// of the executable come before those of the C library. NOLINTBEGIN(readability-identifier-naming):
// names of the C library.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;
};

thread_local Allocations allocations;
thread_local std::size_t liveBytes = 0; // With what the heap adds to each allocation.

void* Add(void* memory, std::size_t size) {
    ++allocations.count;
    allocations.bytes += size;
    liveBytes += malloc_usable_size(memory) + sizeof(std::size_t);
    return memory;
}

void Remove(void* memory) {
    if (memory != nullptr)
        liveBytes -= malloc_usable_size(memory) + sizeof(std::size_t);
}

} // namespace

extern "C" {
void* malloc(std::size_t size) {
    return Add(__libc_malloc(size), size);
}
void* calloc(std::size_t count, std::size_t size) {
    return Add(__libc_calloc(count, size), count * size);
}
void* realloc(void* old, std::size_t size) {
    Remove(old);
    return Add(__libc_realloc(old, size), size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return Add(__libc_memalign(alignment, size), size);
}
void free(void* memory) {
    Remove(memory);
    __libc_free(memory);
}
}

namespace bench {

std::size_t LiveBytes() {
    return liveBytes;
}

namespace {

/// Returns the most that one of the calls allocates. Each is decided twice, and the second decision
/// is counted: by then the texts of the caller's record have grown.
Allocations MostOfADecision(Engine& engine, std::vector<Call> const& calls) {
    Allocations most;
    for (Call const& call : calls) {
        (void)engine.Decide(call);
        Allocations const before = allocations;
        (void)engine.Decide(call);
        most.count = std::max(most.count, allocations.count - before.count);
        most.bytes = std::max(most.bytes, allocations.bytes - before.bytes);
    }
    return most;
}

struct Row {
    char const* name;
    Mix mix;
    CallType type;
};
constexpr Row kRows[] = {{"(a) numbers", Mix::Numbers, CALL_TYPE_NUMBER},
                         {"(b) SIP", Mix::Sip, CALL_TYPE_SIP},
                         {"(c) both sides, number calls", Mix::BothSides, CALL_TYPE_NUMBER},
                         {"(c) both sides, SIP calls", Mix::BothSides, CALL_TYPE_SIP}};

std::vector<Call> CallsOfType(RuleList const& list, CallType type) {
    std::vector<Call> calls = MakeRandomCalls(list, 400);
    calls.erase(std::remove_if(calls.begin(), calls.end(),
                               [type](Call const& call) { return call.callerType != type; }),
                calls.end());
    return calls;
}

} // namespace

void MeasureMemory(Bench const& bench) {
    std::string table = fmt::format("{:<29} {:>6} {:>11} {:>9} {:>14}\n", "rules", "",
                                    "allocations", "bytes", "bytes per rule");
    std::size_t numbers = 0;
    std::size_t perRule = 0;
    for (Row const& row : kRows) {
        std::size_t ofFew = 0;
        for (std::size_t size : {10, 10000}) {
            RuleList const list = MakeRules(row.mix, size, true);
            bench.Load({});
            std::size_t const before = LiveBytes();
            bench.Load(list.rules);
            std::size_t const bytes = (LiveBytes() - before) / size;
            Allocations const most =
                MostOfADecision(*MakeLibrary(bench.assistant), CallsOfType(list, row.type));
            // Of ten rules the bytes cannot be told from what the heap keeps in reserve.
            table += fmt::format("{:<29} {:>6} {:>11} {:>9} {:>14}\n", row.name, size, most.count,
                                 most.bytes, size == 10 ? "" : std::to_string(bytes));
            if (row.type == CALL_TYPE_NUMBER)
                numbers = std::max(numbers, most.count);
            else if (size != 10)
                perRule = std::max(perRule, most.count - std::min(most.count, ofFew));
            ofFew = most.count;
        }
    }
    auto const size = static_cast<double>(std::filesystem::file_size(STRIPPED_LIBRARY)) / 1024;
    bench.document.Add("memory", table + fmt::format("\nStripped library: {:.0f} KB\n", size));
    bench.targets.AtMost("allocations in a decision, number sides", 0, static_cast<double>(numbers),
                         "");
    bench.targets.AtMost("allocations that 9,990 more rules add, SIP sides", 0,
                         static_cast<double>(perRule), "");
    bench.targets.AtMost("stripped library", 165, size, " KB");
}

} // namespace bench
