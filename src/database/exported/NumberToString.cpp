// Writes numbers in decimal.

#include <callrecordingutils/NumberToString.h>

#include <locale>
#include <sstream>

template <typename T>
std::string NumberToString(T const& value) {
    std::ostringstream text;
    text.imbue(std::locale::classic()); // The locale of the process may group digits.
    text << value;
    return text.str();
}

template std::string NumberToString<long>(long const&);
template std::string NumberToString<int>(int const&);
template std::string NumberToString<CallRecordingUtils::CallRecordingTypes>(
    CallRecordingUtils::CallRecordingTypes const&);
