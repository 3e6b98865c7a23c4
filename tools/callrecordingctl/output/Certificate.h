// Certificates: what somebody needs to check proofs about the rules of a file without this program.
// examples/check_proof.py does.

#ifndef CALLRECORDINGCTL_OUTPUT_CERTIFICATE_H
#define CALLRECORDINGCTL_OUTPUT_CERTIFICATE_H

#include <string>

#include <nlohmann/json.hpp>

#include "Names.h"
#include "administration/check/FileFindings.h"
#include "analysis/RuleAnalysis.h"

namespace callrecordingctl {

/// A certificate without proofs, for the rule file with this SHA-256 digest.
nlohmann::ordered_json EmptyCertificate(std::string const& digest, CallKind calls);

/// A claim, as "prove --json" prints it, with its proof: the rules by their positions. What only
/// says the claim in other words is left out, so that all that a certificate says can be checked.
nlohmann::ordered_json ProofToJson(nlohmann::ordered_json claim, Proof const& proof);

/// The rules that never decide, of which findings says so, each with those that take its calls.
nlohmann::ordered_json HiddenToJson(std::vector<FileFinding> const& findings);

/// Writes a certificate to a new file. Throws a Failure, also when there is a file at path already.
void WriteCertificate(std::string const& path, nlohmann::ordered_json const& certificate);

} // namespace callrecordingctl

#endif
