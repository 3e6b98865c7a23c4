// Adds the options, and looks calls up in columns, folders and answers.

#include "commands/ReplayTruth.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace callrecordingctl {
namespace {

/// Whether the value of a column says that the call was recorded.
bool SaysYes(std::string const& value) {
    std::string plain;
    for (char const c : value)
        if (c != ' ')
            plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    constexpr std::string_view kNo[] = {"", "0", "n", "no", "f", "false", "null", "\\n"};
    return std::find(std::begin(kNo), std::end(kNo), plain) == std::end(kNo);
}

bool Lacks(CallRecord const& record, std::size_t wanted) {
    return (record.lacks >> wanted & 1U) != 0 || wanted >= record.wanted.size();
}

} // namespace

void AddTruth(CLI::App& replay, TruthOptions& options) {
    CLI::Option* const column =
        replay
            .add_option(
                "--recorded-column", options.recordedColumn,
                "Column that tells whether the call was recorded:\nnot if it is empty, 0, n, no, "
                "f, false, null or \\N (default:\nrecordingfile, recording_file, recording_path, "
                "record or "
                "recorded, "
                "if there\nis one)")
            ->type_name("NAME");
    CLI::Option* const folder = replay
                                    .add_option("--recordings", options.folder,
                                                "Folder of recordings, or of rtpengine's metadata: "
                                                "a call was\nrecorded if a file that is not empty "
                                                "has its identifier in\nthe name, and metadata its "
                                                "recording")
                                    ->type_name("DIR")
                                    ->excludes(column);
    CLI::Option* const id =
        replay
            .add_option("--id-column", options.idColumn, "Column with the identifier of the call")
            ->type_name("NAME");
    folder->needs(id);
    replay
        .add_option("--answers", options.answers,
                    "What callrecordingd --answers wrote: compare what was\nrecorded with what was "
                    "answered")
        ->type_name("FILE")
        ->needs(id);
    replay.add_flag("--strict-recordings", options.isStrict,
                    "Exit with 1 when a recording is missing");
}

ReplayTruth::ReplayTruth(TruthOptions const& options, Replay::Options& how) {
    std::vector<WantedColumn>& wanted = how.format.wanted;
    std::size_t const id = wanted.size();
    if (!options.idColumn.empty())
        wanted.push_back({{options.idColumn}, "--id-column"});
    if (!options.folder.empty()) {
        folder_.emplace(options.folder);
        how.wasRecorded = [this, id](CallRecord const& record) -> std::optional<WasRecorded> {
            if (Lacks(record, id) || record.wanted[id].empty())
                return WasRecorded::Unknown;
            return folder_->WasCallRecorded(record.wanted[id]);
        };
    } else {
        std::size_t const column = wanted.size();
        bool const isNamed = !options.recordedColumn.empty();
        if (isNamed)
            wanted.push_back({{options.recordedColumn}, "--recorded-column"});
        else
            wanted.push_back({{"recordingfile", "recording_path", "record", "recorded"}, ""});
        how.wasRecorded = [column,
                           isNamed](CallRecord const& record) -> std::optional<WasRecorded> {
            if (Lacks(record, column) && !isNamed)
                return std::nullopt;
            return !Lacks(record, column) && SaysYes(record.wanted[column]) ? WasRecorded::Yes
                                                                            : WasRecorded::No;
        };
    }
    if (!options.answers.empty()) {
        answers_.emplace(options.answers);
        how.answerTo = [this, id](CallRecord const& record) {
            return Lacks(record, id) ? Answer::None : answers_->To(record.wanted[id]);
        };
    }
}

} // namespace callrecordingctl
