// Classes and functions of a host program that happen to have the names of the platform's. They
// have another layout and do nothing useful, so the library must not use them.

#include "own_classes.h"

#include <cstring>
#include <string>
#include <utility>

namespace {
int calls = 0;
}

class ThreadMutex {
  public:
    ThreadMutex() {
        std::memset(queue_, 1, sizeof queue_);
        ++calls;
    }
    void Lock();
    void Unlock();

  private:
    char queue_[4096]; // Does not fit into the library's own ThreadMutex.
};
void ThreadMutex::Lock() {
    ++calls;
}
void ThreadMutex::Unlock() {
    ++calls;
}

class SmartBuffer {
  public:
    SmartBuffer();
    char* GetData();
};
SmartBuffer::SmartBuffer() {
    ++calls;
}
char* SmartBuffer::GetData() {
    ++calls;
    return nullptr;
}

namespace Configuration {
class MultiSectionFile {
  public:
    int GotoNextSection();
};
int MultiSectionFile::GotoNextSection() {
    return ++calls;
}
} // namespace Configuration

namespace StringUtils {
bool IsNumeric(std::string const& text, bool, bool);
bool IsNumeric(std::string const& text, bool, bool) {
    ++calls;
    return text.empty();
}
} // namespace StringUtils

void GetLogLevel(bool* isEnabled, bool*);
void GetLogLevel(bool* isEnabled, bool*) {
    ++calls;
    *isEnabled = false;
}

int CountCallsOfOwnClasses() {
    bool isEnabled = true;
    GetLogLevel(&isEnabled, nullptr);
    ThreadMutex mutex;
    mutex.Lock();
    SmartBuffer buffer;
    Configuration::MultiSectionFile file;
    if (!isEnabled && buffer.GetData() == nullptr && file.GotoNextSection() > 0 &&
        StringUtils::IsNumeric("", false, false))
        mutex.Unlock();
    return std::exchange(calls, 0);
}
