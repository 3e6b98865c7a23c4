// Decides calls on several threads while another one edits and reloads the rules: decisions share a
// lock, and whatever changes the rules has it alone.
// Usage: reload_while_deciding DIRECTORY (which stays as it is: the edits are made to a copy)

#include <chrono>
#include <functional>
#include <future>
#include <iostream>
#include <mutex>
#include <shared_mutex>
#include <thread>

#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>

#include "SampleCopy.h"

using namespace CallRecordingUtils;

namespace {

std::shared_mutex rulesMutex;

/// Sets up calls until one is recorded. Returns whether one was.
bool CallUntilRecorded(CCallRecordingAssistant& assistant) {
    CallParams caller, called;
    caller.user = "500";
    called.user = "090055";
    bool isRecorded = false;
    for (int call = 0; call < 10000 && !isRecorded; ++call) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::shared_lock const lock(rulesMutex);
        isRecorded = assistant.IsCallRecordingAllowed(caller, CALL_TYPE_NUMBER, called,
                                                      CALL_TYPE_NUMBER, nullptr);
    }
    return isRecorded;
}

bool AddRuleAndReload(CCallRecordingDB& database) {
    CallRecordingRuleParams rule;
    rule.caller_pattern = "*";
    rule.called_pattern = "0900<00-99>";
    std::unique_lock const lock(rulesMutex);
    return database.AddRule(&rule) && database.Reload();
}

} // namespace

int main(int, char** argv) {
    SampleCopy const copy(argv[1]);
    // One a thread, so that decisions do not wait for each other; made before a reload can run.
    CCallRecordingAssistant first(false), second(false);
    auto one = std::async(std::launch::async, CallUntilRecorded, std::ref(first));
    auto two = std::async(std::launch::async, CallUntilRecorded, std::ref(second));
    bool const isAdded = AddRuleAndReload(*CCallRecordingDB::GetInstance(true, false));
    CCallRecordingDB::CloseInstance();
    bool const isRecorded = one.get() && two.get() && isAdded;
    std::cout << (isRecorded ? "recorded under the new rule\n" : "not recorded\n");
    return isRecorded ? 0 : 1;
}
