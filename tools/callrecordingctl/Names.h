// The client names what the libraries below it have without their namespace.

#ifndef CALLRECORDINGCTL_NAMES_H
#define CALLRECORDINGCTL_NAMES_H

namespace CallRecordingUtils {}

namespace callrecordingctl {

using namespace CallRecordingUtils;

} // namespace callrecordingctl

#endif
