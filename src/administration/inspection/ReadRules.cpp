// Reads rules through the file class, which reads files by their path.

#include "administration/inspection/ReadRules.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

#include <fmt/format.h>

#include <host/AtomicFile.h>

#include "administration/inspection/ReadFromText.h"
#include "common/Error.h"
#include "database/RuleFile.h"

namespace CallRecordingUtils {

RuleList ReadRules(std::string const& path) {
    RuleList rules;
    RuleFile file(path);
    while (file.Next())
        rules.push_back(file.ReadRule());
    return rules;
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
            throw Error(Error::Kind::Unreadable,
                        fmt::format("standard input: {}", std::strerror(errno)));
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
        throw Error(Error::Kind::Unreadable, fmt::format("{}: {}", path, std::strerror(errno)));
    try {
        return HostPlatform::ReadFile(path).text;
    } catch (std::exception const& error) {
        throw Error(Error::Kind::Unreadable, error.what());
    }
}

RuleList RulesOf(std::string const& text, std::string const& name) {
    return ReadFromText(text, name, ReadRules);
}

} // namespace CallRecordingUtils
