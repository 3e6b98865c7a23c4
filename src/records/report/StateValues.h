// Pieces of a state as JSON. Texts may hold any bytes, so they go through ToUtf8 and BytesOf. Each
// Put has its Get, which takes what Put returns.

#ifndef RECORDS_REPORT_STATEVALUES_H
#define RECORDS_REPORT_STATEVALUES_H

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "records/counting/ReplayReport.h"
#include "json/Bytes.h"

namespace CallRecordingUtils {

template <typename Number>
nlohmann::json PutOptional(std::optional<Number> const& number) {
    return number ? nlohmann::json(*number) : nlohmann::json();
}

inline std::optional<CallTime> GetTime(nlohmann::json const& state) {
    return state.is_null() ? std::nullopt : std::optional(state.get<CallTime>());
}

inline std::string GetText(nlohmann::json const& state) {
    return BytesOf(state.get<std::string>());
}

inline nlohmann::json PutTexts(std::vector<std::string> const& texts) {
    nlohmann::json state = nlohmann::json::array();
    for (std::string const& text : texts)
        state.push_back(ToUtf8(text));
    return state;
}

inline std::vector<std::string> GetTexts(nlohmann::json const& state) {
    std::vector<std::string> texts;
    for (nlohmann::json const& text : state)
        texts.push_back(GetText(text));
    return texts;
}

nlohmann::json Put(ReplayReport const& report);
ReplayReport GetReport(nlohmann::json const& state);

} // namespace CallRecordingUtils

#endif
