// How deciding through one handle of the C interface scales with threads: one and two threads, in
// turns, and the medians. Usage: callrecording_threads DIRECTORY CALLER CALLED

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <callrecordingutils/callrecordingutils.h>

namespace {

struct Question {
    callrecording_rules* rules;
    char const* caller;
    char const* called;
    bool isTyped;
};

void Ask(Question const& question) {
    callrecording_rule const* rule = nullptr;
    if (question.isTyped) {
        callrecording_decide(question.rules, question.caller, CALLRECORDING_NUMBER, question.called,
                             CALLRECORDING_NUMBER, &rule);
    } else {
        callrecording_party caller = CALLRECORDING_PARTY_INIT;
        callrecording_party called = CALLRECORDING_PARTY_INIT;
        caller.text = question.caller;
        called.text = question.called;
        callrecording_decide_parties(question.rules, &caller, &called, &rule);
    }
    callrecording_rule_free(rule);
}

/// Millions of decisions a second that all threads make together.
double Rate(Question const& question, std::size_t threadCount) {
    constexpr auto kTime = std::chrono::milliseconds(200);
    std::atomic<bool> isDone{false};
    std::atomic<std::size_t> decisions{0};
    std::vector<std::thread> threads;
    auto const start = std::chrono::steady_clock::now();
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back([&] {
            std::size_t own = 0;
            for (; !isDone; own += 64)
                for (int n = 0; n < 64; ++n)
                    Ask(question);
            decisions += own;
        });
    std::this_thread::sleep_for(kTime);
    isDone = true;
    for (std::thread& thread : threads)
        thread.join();
    std::chrono::duration<double, std::micro> const taken =
        std::chrono::steady_clock::now() - start;
    return static_cast<double>(decisions) / taken.count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Compare(char const* name, Question const& question) {
    std::vector<double> one, two;
    for (int turn = 0; turn < 15; ++turn) {
        one.push_back(Rate(question, 1));
        two.push_back(Rate(question, 2));
    }
    std::printf("%s: %.2f million a second on one thread, %.2f on two: %.2f times as many\n", name,
                Median(one), Median(two), Median(two) / Median(one));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("Usage: callrecording_threads DIRECTORY CALLER CALLED\n", stderr);
        return 2;
    }
    callrecording_rules* const rules = callrecording_open(argv[1]);
    Compare("typed", {rules, argv[2], argv[3], true});
    Compare("parties", {rules, argv[2], argv[3], false});
    callrecording_close(rules);
    return 0;
}
