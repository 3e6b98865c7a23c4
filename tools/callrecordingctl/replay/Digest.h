// The digest by which a file is known to be the same again.

#ifndef CALLRECORDINGCTL_REPLAY_DIGEST_H
#define CALLRECORDINGCTL_REPLAY_DIGEST_H

#include <string>

namespace callrecordingctl {

/// SHA-256 of the file at path, in hexadecimal digits as sha256sum prints it; empty when the file
/// cannot be read.
std::string DigestOfFile(std::string const& path);

} // namespace callrecordingctl

#endif
