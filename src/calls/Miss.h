// Where an address and a pattern part, for a person who asks why a side does not match.

#ifndef CALLS_MISS_H
#define CALLS_MISS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// How far the reading of a pattern comes in an address that it does not match.
struct Miss {
    std::size_t position;    ///< Where in the address no element that comes next fits.
    std::string_view wanted; ///< That element; empty when the pattern has ended. Into the pattern.
};

/// Returns the miss whose reading takes the most elements of the pattern, and of such readings the
/// one that comes farthest into the address.
/// REQUIRES: the whole of pattern, in the stored form, does not match address. The texts outlive
/// the result.
Miss FindMiss(std::string_view address, std::string_view pattern);

/// Describes the miss to a person who reads patterns in the entry form.
std::string MissText(std::string_view address, Miss const& miss);

} // namespace CallRecordingUtils

#endif
