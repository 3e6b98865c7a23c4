// The address of one side of a call as people and call records write it, and what is taken off it.

#ifndef INSPECTION_CALLADDRESS_H
#define INSPECTION_CALLADDRESS_H

#include <array>
#include <bitset>
#include <string>
#include <string_view>

namespace CallRecordingUtils {

/// What can stand around or in an address that a telephony process would hand over without it.
enum Cleaning : std::size_t {
    kCleaningBlanks,     // Before or behind it.
    kCleaningName,       // "Alice" before <...>.
    kCleaningBrackets,   // The < and > themselves.
    kCleaningSip,        // sip: or sips:
    kCleaningTel,        // tel:
    kCleaningParameters, // ;user=phone and ?subject=x behind a host or a tel: number, ;tag=1 behind
                         // >.
    kCleaningSeparators, // Blanks, "-", "(" and ")" in a number; behind tel: also "."
    kCleaningCount
};

/// One word for each, the same wherever it is told.
constexpr std::array<char const*, kCleaningCount> kCleaningWords{
    "blanks", "name", "brackets", "sip:", "tel:", "parameters", "separators"};

using Cleanings = std::bitset<kCleaningCount>;

/// An address as ReadCallParty takes it.
struct CallAddress {
    std::string text;
    Cleanings cleanings; // What was taken off to get there.
};

/// Takes off what stands around the address in written: 201, 201@pbx:5060, sip:201@pbx;user=phone,
/// "Alice" <sip:201@pbx>;tag=1, Alice <201>, tel:+49-30-1234, (030) 12 34. What is none of these
/// stays as it is.
CallAddress CleanCallAddress(std::string_view written);

/// The words for cleanings, separated by commas; empty when there are none.
std::string Words(Cleanings cleanings);

} // namespace CallRecordingUtils

#endif
