// Reads the answers line by line.

#include "records/counting/AnswersGiven.h"

#include <algorithm>

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

void AnswersGiven::Take(std::string const& id, Answer answer) {
    if (id.empty())
        return;
    auto const known = byId_.find(id);
    if (known != byId_.end()) {
        known->second = answer;
        return;
    }
    char* const kept = static_cast<char*>(ids_.allocate(id.size(), 1));
    std::copy(id.begin(), id.end(), kept);
    byId_.emplace(std::string_view(kept, id.size()), answer);
}

AnswersGiven::AnswersGiven(std::string const& path) {
    Input input(path);
    Lines lines(input);
    while (lines.Next()) {
        if (lines.Text().empty())
            continue;
        try {
            nlohmann::json const line = nlohmann::json::parse(lines.Text());
            Take(line.at("id").get_ref<std::string const&>(), AnswerOf(line));
        } catch (nlohmann::json::exception const&) {
            throw Error(Error::Kind::Unreadable,
                        fmt::format("{}:{}: no answer as callrecordingd writes it with --answers",
                                    path, lines.Number()));
        }
    }
}

} // namespace CallRecordingUtils
