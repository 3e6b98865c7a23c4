// Decides calls on four threads, without pause, while another one edits and reloads the rules:
// decisions share a lock, and whatever changes the rules has it alone and is not kept waiting.
// Usage: reload_while_deciding DIRECTORY (which stays as it is: the edits are made to a copy)

#include <chrono>
#include <functional>
#include <future>
#include <iostream>
#include <list>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "RulesLock.h"
#include "SampleCopy.h"

using namespace CallRecordingUtils;

namespace {

RulesLock rulesLock;

/// Sets up calls until one is recorded, for a minute at most. Returns whether one was.
bool CallUntilRecorded(CCallRecordingAssistant& assistant) {
    CallParams caller, called;
    caller.user = "500";
    called.user = "090055";
    auto const end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    bool isRecorded = false;
    while (!isRecorded && std::chrono::steady_clock::now() < end) {
        std::shared_lock const lock(rulesLock);
        isRecorded = assistant.IsCallRecordingAllowed(caller, CALL_TYPE_NUMBER, called,
                                                      CALL_TYPE_NUMBER, nullptr);
    }
    return isRecorded;
}

bool AddRuleAndReload(CCallRecordingDB& database) {
    CallRecordingRuleParams rule;
    rule.caller_pattern = "*";
    rule.called_pattern = "0900<00-99>";
    std::unique_lock const lock(rulesLock);
    return database.AddRule(&rule) && database.Reload();
}

} // namespace

int main(int, char** argv) {
    SampleCopy const copy(argv[1]);
    // One a thread, so that decisions do not wait for each other; made before a reload can run.
    std::list<CCallRecordingAssistant> assistants;
    std::vector<std::future<bool>> threads;
    for (int thread = 0; thread < 4; ++thread)
        threads.push_back(std::async(std::launch::async, CallUntilRecorded,
                                     std::ref(assistants.emplace_back(false))));
    bool isRecorded = AddRuleAndReload(*CCallRecordingDB::GetInstance(true, false));
    CCallRecordingDB::CloseInstance();
    for (std::future<bool>& thread : threads)
        isRecorded = thread.get() && isRecorded;
    std::cout << (isRecorded ? "recorded under the new rule\n" : "not recorded\n");
    return isRecorded ? 0 : 1;
}
