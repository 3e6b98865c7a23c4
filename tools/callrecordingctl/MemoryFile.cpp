// Texts as files, and files as texts.

#include "MemoryFile.h"

#include <cerrno>
#include <cstring>
#include <system_error>

#include <sys/mman.h>
#include <unistd.h>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "Failure.h"
#include "database/RuleFile.h"

namespace callrecordingctl {

MemoryFile::MemoryFile(std::string_view text) : file_(memfd_create("rules", MFD_CLOEXEC)) {
    while (file_ >= 0 && !text.empty()) {
        ssize_t const count = write(file_, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            break;
        text.remove_prefix(count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    if (file_ >= 0 && text.empty())
        return;
    int const error = errno;
    if (file_ >= 0)
        close(file_);
    throw std::system_error(error, std::generic_category(), "a file in memory");
}

MemoryFile::~MemoryFile() {
    close(file_);
}

std::string MemoryFile::Path() const {
    return fmt::format("/proc/self/fd/{}", file_);
}

namespace {

std::string ReadStandardInput() {
    std::string text;
    char buffer[65536];
    for (;;) {
        ssize_t const count = read(STDIN_FILENO, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw Failure(kExitUnreadable, fmt::format("standard input: {}", std::strerror(errno)));
        if (count == 0)
            return text;
        text.append(buffer, static_cast<std::size_t>(count));
    }
}

} // namespace

std::string ReadInput(std::string const& path) {
    if (path == "-")
        return ReadStandardInput();
    if (access(path.c_str(), F_OK) != 0)
        throw Failure(kExitUnreadable, fmt::format("{}: {}", path, std::strerror(errno)));
    try {
        return HostPlatform::ReadFile(path).text;
    } catch (std::exception const& error) {
        throw Failure(kExitUnreadable, error.what());
    }
}

RuleList RulesOf(std::string const& text, std::string const& name) {
    MemoryFile const memory(text);
    try {
        return ReadRules(memory.Path());
    } catch (std::exception const& error) {
        std::string message = error.what();
        std::size_t const at = message.find(memory.Path());
        if (at != std::string::npos)
            message.replace(at, memory.Path().size(), name);
        throw Failure(kExitUnreadable, message);
    }
}

} // namespace callrecordingctl
