// Lists the files of folders.

#include "records/reading/CallFiles.h"

#include <algorithm>
#include <filesystem>

#include "common/Error.h"

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> FilesIn(std::string const& folder) {
    std::vector<std::string> files;
    for (auto entry = fs::recursive_directory_iterator(folder);
         entry != fs::recursive_directory_iterator(); ++entry)
        if (entry->path().filename().string().rfind('.', 0) == 0) {
            if (entry->is_directory())
                entry.disable_recursion_pending();
        } else if (!entry->is_directory()) {
            files.push_back(entry->path().string());
        }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

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
