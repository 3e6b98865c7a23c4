// Writes certificates.

#include "output/Certificate.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "Failure.h"
#include "output/CallText.h"

namespace callrecordingctl {
namespace {

nlohmann::ordered_json PositionsOf(std::vector<std::size_t> const& places) {
    auto positions = nlohmann::ordered_json::array();
    for (std::size_t const place : places)
        positions.push_back(place + 1);
    return positions;
}

} // namespace

nlohmann::ordered_json EmptyCertificate(std::string const& digest, CallKind calls) {
    return {{"sha256", digest}, {"calls", CallsName(calls)}};
}

nlohmann::ordered_json ProofToJson(nlohmann::ordered_json claim, Proof const& proof) {
    claim.erase("text");
    for (char const* const side : {"from", "to"}) {
        claim[side].erase("pattern");
        for (nlohmann::ordered_json& exception : claim[std::string("except_") + side])
            exception.erase("pattern");
    }
    auto others = nlohmann::ordered_json::array();
    for (Proof::Other const& other : proof.others)
        others.push_back({{"rule", other.rule + 1}, {"covering", PositionsOf(other.covering)}});
    return {{"claim", std::move(claim)},
            {"proof", {{"covering", PositionsOf(proof.covering)}, {"others", std::move(others)}}}};
}

nlohmann::ordered_json HiddenToJson(std::vector<FileFinding> const& findings) {
    auto json = nlohmann::ordered_json::array();
    for (FileFinding const& finding : findings)
        if (finding.neverDecides)
            json.push_back(
                {{"rule", finding.position}, {"covering", PositionsOf(finding.takenBy)}});
    return json;
}

void WriteCertificate(std::string const& path, nlohmann::ordered_json const& certificate) {
    if (std::filesystem::exists(path))
        throw Failure(kExitUnsaved, path + ": exists already, and is not overwritten");
    std::ofstream file(path);
    file << certificate.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
         << '\n';
    file.close();
    if (!file)
        throw Failure(kExitUnsaved, path + ": the certificate cannot be written");
}

} // namespace callrecordingctl
