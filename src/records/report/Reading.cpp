// Describes what a reader did.

#include "records/report/Reading.h"

#include <map>

#include <fmt/format.h>

namespace CallRecordingUtils {
namespace {

using nlohmann::ordered_json;

constexpr char const* kColumnNames[kColumnCount] = {"from",    "to",   "from_type",
                                                    "to_type", "time", "date"};
constexpr char const* kColumnWords[kColumnCount] = {"from",       "to",   "type of from",
                                                    "type of to", "time", "date"};

std::string ColumnsText(CallReading const& reading) {
    std::string text;
    for (std::size_t i = 0; i < kColumnCount; ++i)
        if (!reading.columns[i].empty())
            text += fmt::format("{}{} {}", text.empty() ? "" : ", ", kColumnWords[i],
                                reading.columns[i]);
    return text;
}

ordered_json TextOrNull(std::string const& text) {
    return text.empty() ? ordered_json() : ordered_json(text);
}

/// Everything but how many records were left out.
std::string Describe(CallReading const& reading) {
    std::string text = reading.isGuessed ? "guessed to be " + reading.title : reading.title;
    if (reading.isDocumented)
        text += fmt::format(" (--format {}, written from documentation only)", reading.format);
    else if (reading.format != "columns")
        text += fmt::format(" (--format {})", reading.format);
    std::string const columns = ColumnsText(reading);
    if (!columns.empty())
        text += "; " + columns;
    for (std::string const& condition : reading.conditions)
        text += "; only " + condition;
    if (!reading.distinct.empty())
        text += "; the first record of each " + reading.distinct;
    for (std::string const& note : reading.notes)
        text += "; " + note;
    return text;
}

} // namespace

std::vector<std::string> ReadingSentences(std::vector<ReplayReport::File> const& files) {
    struct Group {
        std::string first;
        std::size_t count = 0;
        std::uint64_t leftOut = 0;
    };
    std::vector<std::string> order;
    std::map<std::string, Group> groups;
    for (ReplayReport::File const& file : files) {
        if (file.reading.title.empty())
            continue; // There was nothing in it.
        auto const [entry, isNew] = groups.try_emplace(Describe(file.reading));
        if (isNew) {
            order.push_back(entry->first);
            entry->second.first = file.path == "-" ? "standard input" : file.path;
        }
        ++entry->second.count;
        entry->second.leftOut += file.reading.leftOut;
    }
    std::vector<std::string> sentences;
    for (std::string const& description : order) {
        Group const& group = groups[description];
        std::string const more = group.count == 1 ? ""
                                 : group.count == 2
                                     ? " and 1 more file"
                                     : fmt::format(" and {} more files", group.count - 1);
        std::string const leftOut = group.leftOut == 0 ? ""
                                    : group.leftOut == 1
                                        ? "; 1 record left out"
                                        : fmt::format("; {} records left out", group.leftOut);
        sentences.push_back(group.first + more + ": " + description + leftOut);
    }
    return sentences;
}

ordered_json ToJson(CallReading const& reading) {
    auto columns = ordered_json::object();
    for (std::size_t i = 0; i < kColumnCount; ++i)
        columns[kColumnNames[i]] = TextOrNull(reading.columns[i]);
    return {{"format", reading.format},
            {"guessed", reading.isGuessed},
            {"from_documentation", reading.isDocumented},
            {"columns", columns},
            {"where", reading.conditions},
            {"distinct", TextOrNull(reading.distinct)},
            {"left_out", reading.leftOut},
            {"notes", reading.notes}};
}

} // namespace CallRecordingUtils
