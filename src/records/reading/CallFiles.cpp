// Lists the files of folders.

#include "records/reading/CallFiles.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;

bool IsHidden(fs::path const& path) {
    return path.filename().string().rfind('.', 0) == 0;
}

std::vector<std::string> FilesIn(std::string const& folder) {
    std::vector<std::string> files;
    VisitFolder(folder, false, [&files](fs::directory_entry const& entry) {
        if (!entry.is_other()) // A pipe or socket would never end.
            files.push_back(entry.path().string());
    });
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

void VisitFolder(std::string const& folder, bool withHidden, VisitFile const& visit) {
    std::set<fs::path> seen;            // So that a link to a folder around it leads no further.
    std::set<fs::path> folders{folder}; // The one asked for, and those that links lead to.
    while (!folders.empty()) {
        fs::path const root = *folders.begin();
        folders.erase(folders.begin());
        if (!seen.insert(fs::canonical(root)).second)
            continue;
        for (fs::recursive_directory_iterator at(root), end; at != end; ++at) {
            bool const isLeftOut = !withHidden && IsHidden(at->path());
            if (!at->is_directory()) {
                if (!isLeftOut)
                    visit(*at);
            } else if (isLeftOut) {
                at.disable_recursion_pending();
            } else if (at->is_symlink()) {
                folders.insert(at->path());
            } else if (!seen.insert(fs::canonical(at->path())).second) {
                at.disable_recursion_pending();
            }
        }
    }
}

std::vector<std::string> CallFilesIn(std::vector<std::string> const& paths) {
    std::vector<std::string> files;
    for (std::string const& path : paths) {
        std::error_code error;
        if (!fs::is_directory(path, error)) {
            files.push_back(path);
            continue;
        }
        try {
            std::vector<std::string> const within = FilesIn(path);
            if (within.empty())
                throw Error(Error::Kind::Unreadable, path + ": there is no file in this folder");
            files.insert(files.end(), within.begin(), within.end());
        } catch (fs::filesystem_error const& failure) {
            throw Error(Error::Kind::Unreadable,
                        path + ": cannot be read: " + failure.code().message());
        }
    }
    return files;
}

} // namespace CallRecordingUtils
