// Reading call records: formats, columns, compressed files, times, and lines that are none.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include <sys/stat.h>

#include "common/Error.h"
#include "records/reading/CallFiles.h"
#include "records/reading/CallReader.h"
#include "records/reading/CallTime.h"
#include "records/reading/KnownFormats.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {
namespace {

/// What is read from a file with content: each call as "line from>to" or, with its types and time,
/// "line from>to|type,type,time", and each other line as "line !reason".
std::vector<std::string> Read(std::string const& content, CallFormat const& format = {}) {
    TempDir const dir;
    dir.Write("calls", content);
    std::vector<std::string> read;
    try {
        CallReader reader(dir.Path("calls"), format);
        for (CallRecord record; reader.Next(record);) {
            auto const& [from, to, fromType, toType, time, date] = record.values;
            std::string const more = fromType + "," + toType + "," + time;
            std::string const call =
                record.from.address + ">" + record.to.address + (more == ",," ? "" : "|" + more);
            read.push_back(std::to_string(record.line) + " " +
                           (record.problem.empty() ? call : "!" + record.problem));
        }
    } catch (Error const& error) {
        read.push_back(error.what());
    }
    return read;
}

/// Of what is expected behind a "!" or "*", a part is enough.
void ExpectRead(std::vector<std::string> const& read, std::vector<std::string> const& expected,
                std::string const& content) {
    ASSERT_EQ(read.size(), expected.size()) << content.substr(0, 200) << "\n"
                                            << testing::PrintToString(read);
    for (std::size_t i = 0; i < read.size(); ++i) {
        std::size_t const mark = expected[i].find_first_of("!*");
        std::size_t const whole = mark == std::string::npos ? read[i].size() + 1 : mark;
        EXPECT_EQ(read[i].substr(0, whole), expected[i].substr(0, whole)) << content.substr(0, 200);
        EXPECT_TRUE(whole == read[i].size() + 1 ||
                    read[i].find(expected[i].substr(mark + 1)) != std::string::npos)
            << content.substr(0, 200) << "\nread: " << read[i] << "\nnot:  " << expected[i];
    }
}

std::string const kLong(1 << 20, 'x');

TEST(CallReader, ReadsEachFormatAndGoesOnBehindWhatIsNone) {
    struct {
        std::string content;
        std::vector<std::string> read;
    } const rows[] = {
        {"", {}},
        {"\n\n", {}},
        {"src,dst\n", {}},
        {"src,dst\n1,2", {"2 1>2"}},
        {"\xEF\xBB\xBF"
         "src,dst\r\n\r\n1,2\r\n",
         {"3 1>2"}},
        {"a;Caller ID-Number;Destination_Number;b\n;1,5;2;\n", {"2 1,5>2"}},
        {"clid\tdst\tsrc\n9\t2\t1\n", {"2 1>2"}},
        {"calldate,from,to,to_type,fromType\nnow,1,2,sip,0\nnow,1,2,sip,3\n",
         {"2 1>2|0,sip,now", "3 !\"3\" is not the type"}},
        {"from,to,x\n1,2,\"a,\"\"b\"\"\r\nc\"\n3,4,\n", {"2 1>2", "4 3>4"}},
        {"from,to\n 1 , \"2\" \n", {"2 1>2"}},
        // What cannot be read costs its own line only.
        {"from,to\n1\n3,4\n", {"2 !it has 1 fields, and to-column is number 2", "3 3>4"}},
        {"from,to\n1,\"2\n3,4\n5,6", {"2 !a quote is never closed", "3 3>4", "4 5>6"}},
        {"from,to\n1,\"2\n3,\"4\n5,6\n", {"2 !neither at an end", "3 !never closed", "4 5>6"}},
        {"from,to\n1,2\"3\n5,6\n", {"2 !a quote is neither", "3 5>6"}},
        {"from,to\n" + kLong + ",2\n3,4\n", {"2 !it is longer than 256 KiB", "3 3>4"}},
        {"from,to\n" + kLong, {"2 !it is longer than 256 KiB"}},
        {"from,to\n1,\"" + kLong + "\"\n3,4\n", {"2 !longer than 256 KiB", "3 3>4"}},
        {"from,to\n1,\"a\n" + kLong + "\n3,4\n", {"2 !longer than", "3 !longer than", "4 3>4"}},
        {std::string("from,to\n1,2\0\n3,4\n", 17), {"2 !byte of value 0", "3 3>4"}},
        {std::string("from,to\n1,\"2\n\0\n3,4\n", 18), {"2 !byte of", "3 !byte of", "4 3>4"}},
        // What has no columns is no file of calls.
        {"a,b\n1,2\n", {"*:1: no column \"from\" among: a, b\n"}},
        {"from,b\n1,2\n", {"*--to-column (a number will do); --no-header"}},
        {"from,to\"\n", {"*:1: no row of column names: a quote"}},
        // Addresses as no telephone system hands them over.
        {"from,to\n\"Doe, John (201)\",%2B4930\n201 (Doe),sip%3A5%40pbx\n+49 (30) 12,x (y)\nA (B) "
         "(7),8\n",
         {"2 201>+4930", "3 201>sip:5@pbx", "4 +49 (30) 12>x (y)", "5 7>8"}},
        // A second file on the same stream, also with other columns.
        {"src,dst,n\n1,2,\nsrc,dst,n\n3,4,\n\xEF\xBB\xBF"
         "caller,callee,x\n\xEF\xBB\xBF"
         "dst,n,src\n6,7,5",
         {"2 1>2", "4 3>4", "7 5>6"}},
        // Line ends: a CR alone is one.
        {"from,to\r1,2\r\r3,4", {"2 1>2", "4 3>4"}},
        {"from,to\r\n1,2\r3,4\n", {"2 1>2", "3 3>4"}},
        // A quote that is left open, and closed far behind.
        {"from,to\n\"a\nc\",2\n3,4\n", {"2 !from would have a line break", "3 !a quote", "4 3>4"}},
        {"x,from,to\n\"y,1,2\n,3,4\n,5,6\nz\",7,8\n",
         {"2 !rows of their own", "3 3>4", "4 5>6", "5 !a quote"}},
        {"from,to\r\"a\rc\",2\r3,4\r", {"2 !from would have a line break", "3 !a quote", "4 3>4"}},
        {"{\"from\":\"1\\n2\",\"to\":3}", {"1 !an address has a line break"}},
        // Values between tabs have no quotes, but escapes, unless the names have quotes.
        {"clid\tsrc\tdst\n\"A\" <1>\t1\t2\n\"\t3\ta\\tb\\\\\n\\N\t\\N\t4\n",
         {"2 1>2", "3 3>a\tb\\", "4 >4"}},
        {"src\tdst\n\"\"\"A\"\" <1>\"\t\"2\"\n3\t\"a\tb\"\n\"4\t5\n\"\"6\"\t7\n",
         {"2 \"A\" <1>>2", "3 !as if a tab", "4 \"4>5", "5 \"\"6\">7"}},
        {"\"src\"\t\"dst\"\n\"1\"\t\"\"\"2\"\"\"\n", {"2 1>\"2\""}},
        // A column of types that has none.
        {"from,to,from_type\n1,2,internal\n3,4,0\n", {"2 1>2|internal,,", "3 3>4|0,,"}},
        {"[{\"from\":1}]\n", {"1 !no value \"to\""}},
        {"[{\"from\":1,\"to\":2},{\"from\":3,\"to\":4}\n,\n{\"from\":5,\"to\":6}\n]\n",
         {"1 1>2", "1 3>4", "3 5>6"}},
        {"{\n\"from\":1,\n\"to\":\"{\"\n}{\"from\":3,\"to\":4}\n{\"from\":5,\n{\n\"from\":7,\"to\":"
         "8\n}",
         {"1 1>{", "4 3>4", "5 !not JSON", "6 7>8"}},
        // JSON.
        {"{\"from\":\"1\",\"to\":2}\n\n {\"dst\":\"b\\u00e4\",\"src\":null,\"time\":1.5}",
         {"1 1>2", "3 >b\xC3\xA4|,,1.5"}},
        {"{\"clid\":\"x\",\"src\":1,\"callerid\":\"y\",\"to\":true}\n", {"1 1>true"}},
        {"{\"from\":{\"number\":1,\"uri\":2},\"list\":[{\"to\":5},[6]],\"to\":3}\n", {"1 1>3"}},
        {"{\"from\":1,\"to\":2}\n{\"from\":1,\n{\"from\":1}\n{\"to\":2}\n7\n{\"from\":1,\"to\":2}"
         "x\n"
         "{\"from\":3,\"to\":4}",
         {"1 1>2", "2 !not JSON: column 11", "3 !no value \"to\"", "4 !no value \"from\"",
          "5 !no value", "6 !not JSON", "7 3>4"}},
        {"{\"from\":\"" + kLong + "\",\"to\":2}\n{\"from\":3,\"to\":4}",
         {"1 !longer than 256 KiB", "2 3>4"}},
        {std::string(200000, '[') + "\n", {"1 !not JSON"}},
        {"{\"a\":" + std::string(200000, '[') + "\n{\"from\":3,\"to\":4}",
         {"1 !not JSON", "2 3>4"}},
    };
    for (auto const& [content, read] : rows)
        ExpectRead(Read(content), read, content);
}

TEST(CallReader, TakesTheColumnsThatAreNamed) {
    CallFormat named;
    named.names.Name(kColumnFrom, "A Side");
    named.names.Name(kColumnTo, "3");
    ExpectRead(Read("a_side,from,x\n1,2,3\n", named), {"2 1>3"}, "by name and number");
    ExpectRead(Read("{\"a.side\":1,\"3\":2,\"to\":4}\n{\"from\":1,\"3\":1}", named),
               {"1 1>2", "2 !no value \"A Side\""}, "JSON");
    named.names.Name(kColumnTime, "when");
    ExpectRead(Read("a_side,from,x\n1,2,3\n", named), {"*no column \"when\""}, "no such name");
    CallFormat bare;
    bare.hasHeader = false;
    ExpectRead(Read("1,2\n", bare), {"*--from-column takes the number of a column"}, "no number");
    bare.names.Name(kColumnFrom, "2");
    bare.names.Name(kColumnTo, "1");
    ExpectRead(Read("1;2\n3;4\n", bare), {"1 2>1", "2 4>3"}, "no header");
    ExpectRead(Read("1;\"2\n3;4\n", bare), {"1 !never closed", "2 4>3"}, "no first call");
}

/// Random fields, quoted where they must be, are read as they were written, and no line is lost
/// however bytes of the file are changed. Only the fields between the addresses have line breaks.
TEST(CallReader, ReadsBackRandomRows) {
    std::mt19937 random(13);
    auto const pick = [&random](std::size_t count) { return random() % count; };
    for (int round = 0; round < 150; ++round) {
        char const separator = ",;"[pick(2)];
        std::string const many(8, separator); // More than a field has.
        std::string content =
            std::string("from") + separator + "x" + separator + "to" + many + "\n";
        std::vector<std::string> expected;
        std::size_t line = 2;
        for (std::size_t rows = pick(40); rows > 0; --rows) {
            std::string row;
            std::string call = std::to_string(line) + " ";
            for (std::size_t place = 0; place < 3; ++place) {
                std::string field;
                for (std::size_t size = pick(6); size > 0; --size)
                    field += "\na\",;\t<"[pick(6) + (place == 1 ? 0 : 1)];
                bool const isBare = field.find_first_of("\"\n,;\t") == std::string::npos;
                call += place == 0 ? field : place == 1 ? ">" : field;
                for (std::size_t at = 0; (at = field.find('"', at)) != std::string::npos; at += 2)
                    field.insert(at, 1, '"');
                row += (place > 0 ? std::string(1, separator) : "") +
                       (!isBare || pick(2) == 0 ? "\"" + field + "\"" : field);
            }
            row += many + (pick(2) != 0 ? "\n" : "\r\n");
            line += static_cast<std::size_t>(std::count(row.begin(), row.end(), '\n'));
            content += row;
            expected.push_back(call);
        }
        ASSERT_EQ(Read(content), expected) << content;
        std::size_t const begin = content.find('\n') + 1;
        if (begin < content.size())
            content[begin + pick(content.size() - begin)] = "\"\n,\r"[pick(4)];
        content += "\nend" + std::string(2, separator) + "end" + many + "\n";
        std::vector<std::string> const damaged = Read(content);
        ASSERT_FALSE(damaged.empty());
        EXPECT_NE(damaged.back().find(" end>end"), std::string::npos) << content;
    }
}

/// The samples hold the same calls, and are recognised.
TEST(CallReader, ReadsWhatEachSystemWrites) {
    setenv("TZ", "UTC", 1);
    tzset();
    std::vector<std::string> const calls{
        "2026-11-02 08:02:11 201>0044123456", "2026-11-02 08:15:40 213>0041123456",
        "2026-11-03 07:58:33 0170555123>112", "2026-11-03 09:30:00 450>0301234567"};
    struct {
        char const *files, *format;
    } const rows[] = {
        {"asterisk-Master.csv", "asterisk"},
        {"asterisk-custom.csv", "asterisk-custom"},
        {"freeswitch-cdr.csv", "freeswitch"},
        {"freeswitch-json", "freeswitch-json"},
        {"cucm.csv", "cucm"},
        {"teams.csv", "teams"},
        {"acc.tsv", "acc"},
        {"voipmonitor.csv", "voipmonitor"},
        {"radius-detail", "radius"},
    };
    std::size_t compared = 0;
    for (auto const& [files, name] : rows)
        for (bool const isNamed : {false, true}) {
            CallFormat format;
            format.known = isNamed ? FormatNamed(name) : nullptr;
            std::vector<std::string> read;
            for (std::string const& path :
                 CallFilesIn({std::string(EXAMPLES_PATH "/calls/") + files})) {
                CallReader reader(path, format);
                for (CallRecord record; reader.Next(record);)
                    read.push_back(record.problem + (record.time ? TimeText(*record.time) : "") +
                                   " " + record.from.address + ">" + record.to.address);
                EXPECT_EQ(reader.Reading().format, name);
                EXPECT_EQ(reader.Reading().isGuessed, !isNamed);
            }
            EXPECT_EQ(read, calls) << files;
            ++compared;
        }
    EXPECT_EQ(compared, 18U);
}

TEST(CallFiles, AreThoseOfEachFolderOnceAlsoThroughLinks) {
    namespace fs = std::filesystem;
    TempDir const dir, other;
    for (char const* const name : {"b", "in/a", ".hidden/c", "in/.d"})
        dir.Write(name, "");
    other.Write("e", "");
    ASSERT_EQ(mkfifo(dir.Path("pipe").c_str(), 0600), 0);
    fs::create_directory_symlink(other.Path(), dir.Path("link"));
    fs::create_directory_symlink(dir.Path(), dir.Path("in/around"));
    fs::create_directory_symlink(dir.Path("in"), other.Path("back"));
    EXPECT_EQ(CallFilesIn({dir.Path()}),
              (std::vector<std::string>{dir.Path("b"), dir.Path("in/a"), dir.Path("link/e")}));
}

std::string Packed(std::string const& tool, std::string const& text) {
    TempDir const dir;
    dir.Write("plain", text);
    std::string const command = tool + " <" + dir.Path("plain") + " >" + dir.Path("packed");
    return std::system(command.c_str()) == 0 ? dir.Read("packed") : "";
}

/// Pieces packed in turn by each tool are one file, plain text at its end included; cut anywhere,
/// it gives the calls before the cut and then, at the latest, says that it ends early.
TEST(CallReader, ReadsPackedFilesAndTellsWhereOneEndsEarly) {
    std::mt19937 random(3);
    char const* const tools[] = {"gzip -c", "xz -c", "zstd -c", "cat"};
    std::string text, bytes;
    for (std::size_t piece = 0; piece < 7; ++piece) {
        std::string part = piece == 0 ? "from,to\n" : "";
        for (int i = 0; i < 3000; ++i)
            part += std::to_string(random() % 100000) + "," + std::to_string(i) + "\n";
        text += part;
        bytes += Packed(tools[piece < 6 ? piece % 3 : 3], part);
    }
    std::vector<std::string> const all = Read(text);
    ASSERT_EQ(all.size(), 21000U);
    ASSERT_EQ(Read(bytes), all);
    for (int cut = 0; cut < 25; ++cut) {
        std::vector<std::string> read = Read(bytes.substr(0, 20 + random() % (bytes.size() - 20)));
        bool const isEarly =
            read.back().find("compressed data: unexpected end") != std::string::npos;
        read.pop_back(); // That, or a line that is cut, too.
        ASSERT_LE(read.size(), all.size());
        EXPECT_TRUE(std::equal(read.begin(), read.end(), all.begin())) << cut;
        EXPECT_TRUE(isEarly || read.size() % 3000 >= 2999 || read.size() >= 18000) << read.size();
    }
    ExpectRead(Read(bytes.substr(0, 8)), {"*cannot be read: compressed data"}, "gzip header only");
    std::string const utf16 = "\xFF\xFE" + [&text] {
        std::string wide;
        for (char const c : text)
            wide += {c, '\0'};
        return wide;
    }();
    EXPECT_EQ(Read(utf16), all);
    EXPECT_EQ(Read(utf16.substr(0, utf16.size() / 2 | 1)).back().find("UTF-16") ==
                  std::string::npos,
              false);
    EXPECT_THROW(CallReader("/nowhere/none", {}), Error);
    EXPECT_THROW(CallReader("/", {}), Error);
}

TEST(CallReader, LeavesOutWhatIsNotAskedFor) {
    CallFormat format;
    format.where = {ReadCondition("m=I"), ReadCondition("c!=9")};
    format.distinct = "id";
    format.wanted = {{{"none", "N"}, "--key"}};
    format.timeFormat = "%d/%m/%y %H:%M";
    std::string const text =
        "n,m,c,id,from,to,time,date\nk,I,1,a,1,2,8:02,25/11/26\nk,I,1,a,3,4,,\n"
        "k,B,1,b,5,6,,\nk,I,9,c,7,8,,\nk,I,1,,1,1,,\nk,I,1,,1,1,,\nk,I\n";
    ExpectRead(Read(text, format),
               {"2 1>2|,,25/11/26 8:02", "6 1>1", "7 1>1", "8 !it has 2 fields"}, "rows");
    TempDir const dir;
    dir.Write("calls", text);
    CallReader reader(dir.Path("calls"), format);
    CallRecord record;
    ASSERT_TRUE(reader.Next(record));
    EXPECT_EQ(record.wanted[0], "k");
    EXPECT_EQ(record.time ? TimeText(*record.time) : "none", "2026-11-25 08:02:00");
    while (reader.Next(record))
        continue;
    EXPECT_EQ(reader.Reading().leftOut, 3U);
    CallFormat keyed;
    keyed.wanted = {{{"k"}, "--key"}};
    ExpectRead(Read("k,from,to\n1,2,3\nto,from\n4,5\nto,k,from\n6,7,8\n", keyed),
               {"2 2>3", "3 !no column \"k\"", "4 !no column \"k\"", "6 8>6"}, "names without one");
    format.wanted = {{{"x"}, "--key"}};
    ExpectRead(Read(text, format), {"*--key: no column \"x\" among: n, m"}, "no such column");
    EXPECT_THROW(ReadCondition("m"), std::invalid_argument);
}

TEST(CallTime, IsReadInEachFormat) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    tzset();
    struct {
        char const *written, *time; // None: not read.
    } const rows[] = {
        {"2026-11-25 03:08:16", "2026-11-25 03:08:16"},
        {"2026-11-25T03:08:16.123", "2026-11-25 03:08:16"},
        {"2026-07-25T03:08:16Z", "2026-07-25 05:08:16"},
        {"2026-11-25 23:08:16,5 -0230", "2026-11-26 02:38:16"},
        {"2026-11-25 03:08:16 UTC", "2026-11-25 04:08:16"},
        {"2026/11/25 03:08", "2026-11-25 03:08:00"},
        {"25.11.2026 03:08:16", "2026-11-25 03:08:16"},
        {"20261125030816", "2026-11-25 03:08:16"},
        {"2026-11-25", "2026-11-25 00:00:00"},
        {"2026-11-25 12:08:16 AM", "2026-11-25 00:08:16"},
        {"25.11.2026 3:08 pm", "2026-11-25 15:08:00"},
        {"2026-02-28 23:59:59", "2026-02-28 23:59:59"},
        {"2024-02-29 00:00:00", "2024-02-29 00:00:00"},
        {"2000-03-01 00:00:00", "2000-03-01 00:00:00"},
        {"25/11/26 03:08:16", nullptr},
        {"25.11.26 03:08:16", nullptr},
        {"2026-11-25 13:08:16 PM", nullptr},
        {"dddd-dd-dd dd:dd:dd", nullptr},
        {"1785000000", "2026-07-25 19:20:00"},
        {"1785000000.75", "2026-07-25 19:20:00"},
        {"1785000000999", "2026-07-25 19:20:00"},
        {"1785000000999999", "2026-07-25 19:20:00"},
        {"1969-12-31 23:59:59", "1969-12-31 23:59:59"},
        {"", nullptr},
        {"12345", nullptr},
        {"1785000000x", nullptr},
        {"2026-02-30 00:00:00", nullptr},
        {"2026-11-25 25:00:00", nullptr},
        {"2026-11-25 03:08:16 x", nullptr},
        {"11/25/26 03:08", nullptr},
    };
    for (auto const& [written, time] : rows) {
        auto const read = ReadCallTime(written);
        EXPECT_EQ(read ? TimeText(read->shown) : "none", time != nullptr ? time : "none")
            << written;
    }
}

} // namespace
} // namespace CallRecordingUtils
