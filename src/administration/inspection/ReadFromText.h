// Reads a text by a function that reads files by their path.

#ifndef ADMINISTRATION_INSPECTION_READFROMTEXT_H
#define ADMINISTRATION_INSPECTION_READFROMTEXT_H

#include <string>
#include <system_error>

#include "common/Error.h"
#include "common/MemoryFile.h"

namespace CallRecordingUtils {

/// Returns read(path) for a file that holds text. What read throws becomes an Error that calls the
/// file name, but for a std::system_error.
template <typename Read>
auto ReadFromText(std::string const& text, std::string const& name, Read read) {
    MemoryFile const file(text);
    try {
        return read(file.Path());
    } catch (std::system_error const&) {
        throw; // The file in memory could not be read: that says nothing about the text.
    } catch (std::exception const& error) {
        std::string message = error.what();
        std::size_t const at = message.find(file.Path());
        if (at != std::string::npos)
            message.replace(at, file.Path().size(), name);
        throw Error(Error::Kind::Unreadable, message);
    }
}

} // namespace CallRecordingUtils

#endif
