/// @file
/// The files in memory and the counting of calls: one state for the process, behind one lock.

#include "Memory.h"

#include <map>
#include <mutex>

namespace MemoryPlatform {
namespace {

struct State {
    std::mutex mutex;
    std::map<std::string, std::string> files;
    std::vector<std::string> saves;
    int callsToGo = 0; // Until the one that fails; 0 and below: none does.
    bool wasHit = false;
    std::uint32_t bufferCapacity = 64 * 1024;
};

State state;

using Lock = std::lock_guard<std::mutex>;

} // namespace

void SetFile(std::string const& path, std::string const& text) {
    Lock const lock(state.mutex);
    state.files[path] = text;
    state.saves.push_back(text);
}

std::optional<std::string> GetFile(std::string const& path) {
    Lock const lock(state.mutex);
    auto const file = state.files.find(path);
    return file != state.files.end() ? std::optional(file->second) : std::nullopt;
}

void AppendToFile(std::string const& path, std::string const& text) {
    Lock const lock(state.mutex);
    state.files[path] += text;
}

void RemoveFiles(std::string const& start) {
    Lock const lock(state.mutex);
    auto file = state.files.lower_bound(start);
    while (file != state.files.end() && file->first.compare(0, start.size(), start) == 0)
        file = state.files.erase(file);
}

void FailCall(int occurrence) {
    Lock const lock(state.mutex);
    state.callsToGo = occurrence;
    state.wasHit = false;
    state.saves.clear();
}

bool WasHit() {
    Lock const lock(state.mutex);
    return state.wasHit;
}

std::vector<std::string> Saves() {
    Lock const lock(state.mutex);
    return state.saves;
}

void SetBufferCapacity(std::uint32_t capacity) {
    Lock const lock(state.mutex);
    state.bufferCapacity = capacity;
}

std::uint32_t BufferCapacity() {
    Lock const lock(state.mutex);
    return state.bufferCapacity;
}

void CountCall() {
    Lock const lock(state.mutex);
    if (state.callsToGo > 0 && --state.callsToGo == 0) {
        state.wasHit = true;
        throw Fault{};
    }
}

} // namespace MemoryPlatform
