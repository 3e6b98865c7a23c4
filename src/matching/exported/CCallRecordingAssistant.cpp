// The assistant: the recording decision, and the matching operations it exports.

#include <callrecordingutils/CCallRecordingAssistant.h>

#include <memory>
#include <utility>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/MutexGuard.h"
#include "language/Characters.h"
#include "matching/Decision.h"
#include "matching/ItemList.h"
#include "matching/PatternCounts.h"
#include "matching/PatternMatcher.h"
#include "matching/RuleIndex.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {

CCallRecordingAssistant::CCallRecordingAssistant(bool withLogger)
    : mpCallRecordingDB(nullptr), mpMutex(nullptr) {
    auto mutex = std::make_unique<ThreadMutex>();
    mpCallRecordingDB = CCallRecordingDB::GetInstance(true, withLogger);
    mpMutex = mutex.release();
}

CCallRecordingAssistant::~CCallRecordingAssistant() {
    CCallRecordingDB::CloseInstance();
    delete mpMutex;
}

bool CCallRecordingAssistant::IsCallRecordingAllowed(CallParams const& caller,
                                                     CallType const& callerType,
                                                     CallParams const& called,
                                                     CallType const& calledType,
                                                     CallRecordingRuleParams* rule) {
    MutexGuard const guard(*mpMutex);
    CallRecordingRuleParams const* const deciding =
        DecidingRecord(mpCallRecordingDB->mCallRecordList, *mpCallRecordingDB->mpIndex,
                       Call(caller, callerType, called, calledType));
    if (deciding == nullptr)
        return false;
    if (rule != nullptr)
        *rule = *deciding;
    return true;
}

bool CCallRecordingAssistant::ReloadCallRecordingRules() {
    MutexGuard const guard(*mpMutex);
    return mpCallRecordingDB->Reload();
}

CCallRecordingLogger* CCallRecordingAssistant::GetLogger() {
    return CCallRecordingDB::mpLogger;
}

bool CCallRecordingAssistant::IsSideMatched(CallParams const& params, CallType const& callType,
                                            std::string const& pattern,
                                            CallType const& ruleType) const {
    return CallSide(params, callType).Satisfies(pattern, ruleType);
}

// An output may be the input, so nothing is assigned before everything is copied.
bool CCallRecordingAssistant::ParseSIPAddress(std::string const& address, std::string& user,
                                              std::string& host) const {
    auto const parts = SplitUserAndHost(address);
    if (!parts)
        return false;
    std::string userCopy(parts->user);
    std::string hostCopy(parts->host);
    user = std::move(userCopy);
    host = std::move(hostCopy);
    return true;
}

bool CCallRecordingAssistant::ParseSIPAddress(std::string const& address, std::string& user,
                                              std::string& host, std::string& port) const {
    std::optional<std::string_view> portPart;
    std::string const rest(SplitPort(address, portPart));
    if (!portPart) {
        port.clear();
        return ParseSIPAddress(address, user, host);
    }
    std::string portCopy(*portPart);
    bool const isSplit = ParseSIPAddress(rest, user, host);
    port = std::move(portCopy);
    return isSplit;
}

bool CCallRecordingAssistant::IsMatching(std::string const& address, std::string const& pattern,
                                         wild_card_counts& counts) const {
    return PatternMatcher(address, pattern).MatchesWithCounts(counts);
}

bool CCallRecordingAssistant::IsInRange(std::string const& itemList, std::string const& candidate,
                                        wild_card_counts& counts, bool const& grouped) const {
    Consumed consumed;
    if (!AcceptsCandidate(itemList, candidate, consumed))
        return false;
    std::int32_t& symbols = grouped ? counts.grouped_symbol_count : counts.symbol_count;
    std::int32_t& questions = grouped ? counts.grouped_question_count : counts.question_count;
    symbols += static_cast<std::int32_t>(consumed.symbols);
    questions += static_cast<std::int32_t>(consumed.questions);
    return true;
}

bool CCallRecordingAssistant::Exclude(std::string const& itemList,
                                      std::string const& candidate) const {
    return !ExcludesCandidate(itemList, candidate);
}

bool CCallRecordingAssistant::IsAvailableSymbol(char const& c) const {
    return IsLiteral(c);
}

bool CCallRecordingAssistant::IsCharacter(std::string const& text) const {
    return text.size() == 1 && IsLetter(text.front());
}

void CCallRecordingAssistant::GetCountOfWildCard(std::string const& pattern,
                                                 wild_card_counts& counts) const {
    CountConstructs(pattern, counts);
}

} // namespace CallRecordingUtils
