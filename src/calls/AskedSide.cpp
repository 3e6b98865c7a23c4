// Reads and describes one side of a question about a call.

#include "calls/AskedSide.h"

#include "model/CallTypeNames.h"

namespace CallRecordingUtils {

AskedSide ReadAskedSide(std::string_view address, std::optional<CallType> type) {
    if (type)
        return {std::string(address), type, {}, SideTexts(address, *type)};
    Cleanings cleanings;
    SideTexts texts(ReadParty(address, &cleanings));
    return {std::string(address), std::nullopt, cleanings, std::move(texts)};
}

std::string Description(AskedSide const& side) {
    Party const* const party = side.texts.AsParty();
    if (party == nullptr)
        return std::string(CallTypeName(*side.type)) + " " + side.address + " (typed)";
    std::string text = party->user.empty() ? "a party without a user" : "a party with user ";
    text += party->user;
    if (!party->host.empty())
        text += ", host " + party->host + ", port " + party->port;
    if (side.cleanings.any())
        text += " (left out: " + Words(side.cleanings) + ")";
    return text;
}

std::string Words(Cleanings cleanings) {
    std::string words;
    for (std::size_t i = 0; i < cleanings.size(); ++i)
        if (cleanings[i])
            words += (words.empty() ? "" : ", ") + std::string(kCleaningWords[i]);
    return words;
}

} // namespace CallRecordingUtils
