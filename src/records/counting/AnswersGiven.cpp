// Reads the answers line by line.

#include "records/counting/AnswersGiven.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "common/Error.h"
#include "text/Input.h"
#include "text/Lines.h"

namespace CallRecordingUtils {
namespace {

Answer AnswerOf(nlohmann::json const& line) {
    auto const recorded = line.find("recorded");
    if (recorded == line.end() || recorded->is_null())
        return Answer::Undecided;
    return recorded->get<bool>() ? Answer::Yes : Answer::No;
}

} // namespace

AnswersGiven::AnswersGiven(std::string const& path) {
    Input input(path);
    Lines lines(input);
    while (lines.Next()) {
        if (lines.Text().empty())
            continue;
        try {
            nlohmann::json const line = nlohmann::json::parse(lines.Text());
            std::string const id = line.at("id");
            if (!id.empty())
                byId_[id] = AnswerOf(line);
        } catch (nlohmann::json::exception const&) {
            throw Error(Error::Kind::Unreadable,
                        fmt::format("{}:{}: no answer as callrecordingd writes it with --answers",
                                    path, lines.Number()));
        }
    }
}

} // namespace CallRecordingUtils
