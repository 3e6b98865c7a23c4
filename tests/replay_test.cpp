// Replaying call records: the addresses in them, the files, the counts and the page.

#include <gtest/gtest.h>

#include "inspection/CallAddress.h"

namespace callrecordingctl {

using namespace CallRecordingUtils;
namespace {

TEST(CallAddress, IsCleanedOfWhatStandsAround) {
    struct {
        char const *written, *address, *words;
    } const rows[] = {
        {"201", "201", ""},
        {"", "", ""},
        {" 201\t", "201", "blanks"},
        {" ", "", "blanks"},
        {"a-b;c", "a-b;c", ""},
        {"*-", "*-", ""},
        {"alice@pbx:5060", "alice@pbx:5060", ""},
        {"alice@pbx;transport=udp", "alice@pbx", "parameters"},
        {"a;b@pbx?x=y@z", "a;b@pbx", "parameters"},
        {"sip:alice@[::1]:5060;lr", "alice@[::1]:5060", "sip:, parameters"},
        {"SIPS:201;user=phone", "201", "sip:, parameters"},
        {"\"Sales <1>\" <sip:201@pbx>;tag=9", "201@pbx", "name, brackets, sip:, parameters"},
        {"Alice < 201 >", "201", "blanks, name, brackets"},
        {"a < b", "a < b", ""},
        {"a > b", "a > b", ""},
        {"tel:+49-30.12;ext=7", "+493012", "tel:, parameters, separators"},
        {"tel:sip:1", "sip:1", "tel:"},
        {"(030) 12-34", "0301234", "separators"},
        {"10.0.0.1", "10.0.0.1", ""},
        {"+49 30 x", "+49 30 x", ""},
    };
    for (auto const& [written, address, words] : rows) {
        CallAddress const cleaned = CleanCallAddress(written);
        EXPECT_EQ(cleaned.text, address) << written;
        EXPECT_EQ(Words(cleaned.cleanings), words) << written;
    }
}

} // namespace
} // namespace callrecordingctl
