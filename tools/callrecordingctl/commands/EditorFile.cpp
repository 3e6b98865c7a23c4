// Runs the editor by a shell, as its name may have options.

#include "commands/EditorFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/wait.h>
#include <unistd.h>

#include <fmt/format.h>

#include "Failure.h"
#include "administration/inspection/ReadRules.h"
#include "output/ShellText.h"

namespace callrecordingctl {
namespace {

constexpr char kSuffix[] = ".rules";

/// The value of an environment variable; null also if it is empty.
char const* Variable(char const* name) {
    char const* const value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

/// The line for a shell that opens the file at path.
std::string EditorLine(std::string const& path) {
    for (char const* const name : {"VISUAL", "EDITOR"})
        if (char const* const editor = Variable(name))
            return fmt::format("{} {}", editor, ShellWord(path));
    return fmt::format("if command -v editor >/dev/null; then editor {0}; else vi {0}; fi",
                       ShellWord(path));
}

[[noreturn]] void Fail(std::string const& path, char const* what) {
    throw Failure(kExitUnsaved,
                  fmt::format("nothing was changed: {}: {}: {}", path, what, std::strerror(errno)));
}

} // namespace

EditorFile::EditorFile(std::string const& text) {
    char const* const directory = Variable("TMPDIR");
    path_ = fmt::format("{}/callrecordingctl-XXXXXX{}", directory != nullptr ? directory : "/tmp",
                        kSuffix);
    int const file = mkstemps(path_.data(), sizeof kSuffix - 1);
    if (file < 0)
        Fail(path_, "cannot be made");
    close(file);
    Write(text);
}

std::string EditorFile::Edit() const {
    std::fflush(stdout);
    int const status = std::system(EditorLine(path_).c_str()); // NOLINT(cert-env33-c)
    if (status == -1)
        Fail(path_, "no editor can be started");
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw Failure(kExitNo, fmt::format("nothing was changed, since the editor failed{}; it is "
                                           "what VISUAL or EDITOR names, else editor or vi",
                                           WIFEXITED(status)
                                               ? fmt::format(" with status {}", WEXITSTATUS(status))
                                               : ""));
    return ReadInput(path_);
}

void EditorFile::Write(std::string const& text) const {
    std::FILE* const file = std::fopen(path_.c_str(), "we");
    if (file == nullptr)
        Fail(path_, "cannot be written");
    bool const isWritten = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    if (std::fclose(file) != 0 || !isWritten)
        Fail(path_, "cannot be written");
}

void EditorFile::Remove() const {
    unlink(path_.c_str());
}

} // namespace callrecordingctl
