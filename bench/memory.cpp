/// @file
/// Table 4: what a decision and a loaded rule take from the heap, and the size of the library.

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include <fmt/format.h>
#include <malloc.h>

#include "benchmarks.h"
#include "engines.h"
#include "rules.h"

// The whole process allocates through these: the executable's symbols come before those of the C
// library, for the shared library under test as well.
// NOLINTBEGIN(readability-identifier-naming): names of the C library.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}
// NOLINTEND(readability-identifier-naming)

namespace {

struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;

    void Add(std::size_t size) {
        ++count;
        bytes += size;
    }
};

thread_local Allocations allocations;

} // namespace

// NOLINTBEGIN(readability-identifier-naming): names of the C library.
extern "C" {
void* malloc(std::size_t size) {
    allocations.Add(size);
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    allocations.Add(count * size);
    return __libc_calloc(count, size);
}
void* realloc(void* old, std::size_t size) {
    allocations.Add(size);
    return __libc_realloc(old, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
    allocations.Add(size);
    return __libc_memalign(alignment, size);
}
}

namespace bench {
namespace {

/// The most that one of the calls allocates. Each is decided twice, so that the caller's record has
/// grown when the second decision is counted.
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
    fmt::print(
        "\n4. Memory: heap allocations and bytes of a decision (the most of 400), heap bytes for\n"
        "each loaded rule.\n\n{:<29} {:>6} {:>11} {:>9} {:>14}\n",
        "rules", "", "allocations", "bytes", "bytes per rule");
    std::size_t numbers = 0;
    std::size_t perRule = 0;
    for (Row const& row : kRows) {
        std::size_t ofFew = 0;
        for (std::size_t size : {10, 10000}) {
            RuleList const list = MakeRules(row.mix, size, true);
            bench.Load({});
            std::size_t const before = mallinfo2().uordblks;
            bench.Load(list.rules);
            std::size_t const bytes = (mallinfo2().uordblks - before) / size;
            Allocations const most =
                MostOfADecision(*MakeLibrary(bench.assistant), CallsOfType(list, row.type));
            // Ten rules are too few to tell their bytes from what the heap keeps at hand anyway.
            fmt::print("{:<29} {:>6} {:>11} {:>9} {:>14}\n", row.name, size, most.count, most.bytes,
                       size == 10 ? "" : std::to_string(bytes));
            if (row.type == CALL_TYPE_NUMBER)
                numbers = std::max(numbers, most.count);
            else if (size != 10)
                perRule = std::max(perRule, most.count - std::min(most.count, ofFew));
            ofFew = most.count;
        }
    }
    auto const size = static_cast<double>(std::filesystem::file_size(STRIPPED_LIBRARY)) / 1024;
    fmt::print("\nStripped library: {:.0f} KB\n", size);
    bench.targets.AtMost("allocations in a decision, number sides", 0, static_cast<double>(numbers),
                         "");
    bench.targets.AtMost("allocations that 9,990 more rules add, SIP sides", 0,
                         static_cast<double>(perRule), "");
    bench.targets.AtMost("stripped library", 150, size, " KB");
}

} // namespace bench
