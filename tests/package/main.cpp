// Uses something of every public header, as a program that was built against the installed package.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include <MultiSectionFile.h>
#include <callrecordingutils/CCallRecordingAssistant.h>
#include <callrecordingutils/CCallRecordingDB.h>
#include <callrecordingutils/CCallRecordingLogger.h>
#include <callrecordingutils/NumberToString.h>
#include <callrecordingutils/PatternValidation.h>
#include <callrecordingutils/tokensArray.h>

using namespace CallRecordingUtils;

namespace {

int surprises = 0;

template <typename Value, typename Expected>
void Expect(char const* what, Value const& value, Expected const& expected) {
    if (value != expected) {
        std::cerr << what << " is " << value << ", expected " << expected << "\n";
        ++surprises;
    }
}

std::string RuleFor(std::string const& number) {
    return std::string("{\n") + tokensArray[KEY_CALLRECORDINGRULE_ID] + "=6\n" +
           tokensArray[KEY_CALLER_PATTERN] + "=*\n" + tokensArray[KEY_CALLER_CALL_TYPE] + "=3\n" +
           tokensArray[KEY_CALLED_PATTERN] + "=" + number + "\n" +
           tokensArray[KEY_CALLED_CALL_TYPE] + "=0\n" + tokensArray[KEY_RECORDING_RULE_STATE] +
           "=1\n}\n";
}

/// The identifier of the rule under which a call to number is recorded; -1 for none.
std::int32_t Decide(CCallRecordingAssistant& assistant, std::string const& number) {
    CallParams caller;
    caller.user = "201";
    caller.host = "pbx";
    CallParams called;
    called.user = number;
    CallRecordingRuleParams rule;
    assistant.IsCallRecordingAllowed(caller, CALL_TYPE_SIP, called, CALL_TYPE_NUMBER, &rule);
    return rule.callrecordingrule_id;
}

void UseRules(std::string const& path) {
    CCallRecordingAssistant assistant(true);
    assistant.GetLogger()->TRACE(3, true, "tried %s\n", path.c_str());
    Expect("the decision", Decide(assistant, "150"), 6);
    Expect("the decision without a rule", Decide(assistant, "250"), -1);

    CCallRecordingDB* const database = CCallRecordingDB::GetInstance(true, false);
    CallRecordingRuleParams rule;
    rule.caller_pattern = "*";
    rule.called_pattern = "2*";
    Expect("adding", database->AddRule(&rule), true);
    Expect("the new identifier", NumberToString<long>(rule.callrecordingrule_id), "7");
    Expect("reloading", assistant.ReloadCallRecordingRules(), true);
    Expect("the decision by the new rule", Decide(assistant, "250"), 7);

    Configuration::MultiSectionFile file(path.c_str(), true, false, false, nullptr, "{\n", "}\n",
                                         "=", "#", nullptr);
    Expect("the next identifier", database->GenerateRuleID(&file), 8);
    CCallRecordingDB::CloseInstance();
}

void ValidatePatterns() {
    std::string pattern = "\\*1{10-20}";
    Expect("the verdict on a pattern", IsPatternIncorrect(pattern), false);
    Expect("its stored form", pattern, "#1{10-20}");
    auto const rejection = ExplainPattern("12[");
    Expect("a rejection", rejection && rejection->fault == PatternFault::UnclosedGroup, true);
}

} // namespace

int main() {
    std::string directory = (std::filesystem::temp_directory_path() / "client.XXXXXX").string();
    if (mkdtemp(directory.data()) == nullptr) {
        std::cerr << directory << " cannot be made\n";
        return 1;
    }
    setenv("QUVA_PATH", (directory + "/").c_str(), 1);
    setenv("QUVA_LOG_PATH", (directory + "/").c_str(), 1);
    std::filesystem::create_directory(directory + "/telephony");
    std::string const path = directory + "/telephony/callrecordingdb";
    std::ofstream(path) << RuleFor("1<00-99>");

    UseRules(path);
    ValidatePatterns();
    std::filesystem::remove_all(directory);
    return surprises == 0 ? 0 : 1;
}
