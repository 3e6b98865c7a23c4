// What replay --each prints: a line for each call, and for each line that cannot be read.

#ifndef RECORDS_REPORT_EACHCALL_H
#define RECORDS_REPORT_EACHCALL_H

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "records/counting/CallCounter.h"
#include "records/report/ReportJson.h"

namespace CallRecordingUtils {

class EachCall {
  public:
    /// key is the place of the key among the values that are wanted of a record, if there is one.
    /// facts are borrowed.
    EachCall(ReplayFacts const& facts, std::optional<std::size_t> key) : facts_(facts), key_(key) {}

    /// Fields with tabs between them, as databases load them: the key, the time, from, to, the
    /// identifier of the rule, and the destination, "forbidden", "not recorded" or "unreadable: "
    /// and why; with rules to compare with also the rule and what becomes of the call by these.
    std::string Text(DecidedCall const& call) const;
    std::string Text(CallRecord const& unreadable) const;

    nlohmann::ordered_json Json(DecidedCall const& call) const;
    nlohmann::ordered_json Json(CallRecord const& unreadable, std::string const& file) const;

  private:
    std::string Begin(CallRecord const& record) const;
    void AddKey(nlohmann::ordered_json& json, CallRecord const& record) const;

    ReplayFacts const& facts_;
    std::optional<std::size_t> key_;
};

} // namespace CallRecordingUtils

#endif
