// What a service answered when calls were set up, from the file of its --answers.

#ifndef RECORDS_COUNTING_ANSWERSGIVEN_H
#define RECORDS_COUNTING_ANSWERSGIVEN_H

#include <functional>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>

#include "records/counting/Reconciliation.h"

namespace CallRecordingUtils {

/// Takes memory for each call that has an identifier: its bytes and some 45 more. Any number of
/// threads may ask at once.
class AnswersGiven {
  public:
    /// Throws an Error that names the file and the line.
    explicit AnswersGiven(std::string const& path);

    /// What was answered for the call with this identifier; the last time, if there were several.
    Answer To(std::string_view id) const {
        auto const found = byId_.find(id);
        return found == byId_.end() ? Answer::None : found->second;
    }

  private:
    void Take(std::string const& id, Answer answer);

    /// Quick and never failing, so that no map keeps what it returns.
    struct Hash {
        std::size_t operator()(std::string_view id) const noexcept {
            return std::hash<std::string_view>()(id);
        }
    };

    std::pmr::monotonic_buffer_resource ids_;
    std::pmr::unsynchronized_pool_resource nodes_;
    std::pmr::unordered_map<std::string_view, Answer, Hash> byId_{&nodes_};
};

} // namespace CallRecordingUtils

#endif
