// The assistant: the recording decision, and the matching operations it exports.

#include <callrecordingutils/CCallRecordingAssistant.h>

#include <memory>
#include <utility>

#include <callrecordingutils/CCallRecordingDB.h>

#include "common/MutexGuard.h"
#include "matching/CallSide.h"
#include "matching/ItemList.h"
#include "matching/PatternMatcher.h"
#include "matching/SymbolClass.h"

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
    CallSide const callerSide(caller, callerType);
    CallSide const calledSide(called, calledType);
    for (CallRecordingRuleParams const* listed : mpCallRecordingDB->GetCallRecordingRules()) {
        if (listed == nullptr)
            continue;
        CallRecordingRuleParams const& r = *listed;
        // The cheap tests of both sides before the search of either; and last of them the state,
        // which lies in a part of the record that need not be fetched for most rules.
        std::size_t const callerLiterals =
            callerSide.FittingLiterals(r.caller_pattern, r.caller_call_type);
        if (callerLiterals == kDiffers)
            continue;
        std::size_t const calledLiterals =
            calledSide.FittingLiterals(r.called_pattern, r.called_call_type);
        if (calledLiterals == kDiffers || r.recording_rule_state != RULE_ENABLED ||
            !callerSide.Satisfies(r.caller_pattern, r.caller_call_type, callerLiterals) ||
            !calledSide.Satisfies(r.called_pattern, r.called_call_type, calledLiterals))
            continue;
        if (rule != nullptr)
            *rule = r;
        return true;
    }
    return false;
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
    CallSide const side(params, callType);
    return side.Satisfies(pattern, ruleType, side.FittingLiterals(pattern, ruleType));
}

// An output may be the input, so nothing is assigned before everything is copied.
bool CCallRecordingAssistant::ParseSIPAddress(std::string const& address, std::string& user,
                                              std::string& host) const {
    SipAddress parts;
    if (!SplitSipAddress(address, parts))
        return false;
    std::string userCopy(parts.user);
    std::string hostCopy(parts.host);
    user = std::move(userCopy);
    host = std::move(hostCopy);
    return true;
}

bool CCallRecordingAssistant::ParseSIPAddress(std::string const& address, std::string& user,
                                              std::string& host, std::string& port) const {
    std::string_view portPart;
    std::string const rest(SplitPort(address, portPart));
    std::string portCopy(portPart);
    port = std::move(portCopy);
    return ParseSIPAddress(rest, user, host);
}

bool CCallRecordingAssistant::IsMatching(std::string const& address, std::string const& pattern,
                                         wild_card_counts& counts) const {
    std::size_t const literals = SharedLiterals(pattern, address);
    if (literals == kDiffers)
        return false;
    PatternMatcher matcher(address, pattern, literals);
    if (!matcher.Matches())
        return false;
    matcher.AddCounts(counts);
    return true;
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
