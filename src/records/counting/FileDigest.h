// The digest of a file, whatever its size.

#ifndef RECORDS_COUNTING_FILEDIGEST_H
#define RECORDS_COUNTING_FILEDIGEST_H

#include <string>

namespace CallRecordingUtils {

/// The SHA-256 digest of the file at path, as 64 hexadecimal digits; empty for what is no regular
/// file, cannot be read, or changes meanwhile.
std::string DigestOfFile(std::string const& path);

} // namespace CallRecordingUtils

#endif
