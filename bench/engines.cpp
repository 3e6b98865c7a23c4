/// @file
/// Decides calls with the library, PCRE2, RE2, RE2::Set and fnmatch(3).

#include "engines.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>

#include <benchmark/benchmark.h>
#include <fmt/format.h>
#include <fnmatch.h>
#include <re2/set.h>

#include "matching/Decision.h"
#include "translation.h"

namespace bench {
namespace {

using namespace CallRecordingUtils;

class Library final : public Engine {
  public:
    explicit Library(CCallRecordingAssistant& assistant) : assistant_(assistant) {}

    bool IsAllowed(Call const& call) override {
        return assistant_.IsCallRecordingAllowed(call.caller, call.callerType, call.called,
                                                 call.calledType, nullptr);
    }

    int Decide(Call const& call) override {
        bool const isAllowed = assistant_.IsCallRecordingAllowed(
            call.caller, call.callerType, call.called, call.calledType, &rule_);
        return isAllowed ? rule_.callrecordingrule_id : -1;
    }

  private:
    CCallRecordingAssistant& assistant_;
    Rule rule_;
};

class Walk final : public Engine {
  public:
    explicit Walk(std::vector<Rule> const& rules) {
        for (Rule const& rule : rules) {
            records_.push_back(std::make_unique<Rule>(rule));
            list_.push_back(records_.back().get());
        }
    }

    int Decide(Call const& call) override {
        std::lock_guard const guard(mutex_);
        CallRecordingUtils::Call const asked(call.caller, call.callerType, call.called,
                                             call.calledType);
        auto const deciding = FirstTaking(list_, asked);
        return deciding == list_.end() ? -1 : (*deciding)->callrecordingrule_id;
    }

  private:
    std::vector<std::unique_ptr<Rule>> records_;
    std::list<Rule*> list_;
    std::mutex mutex_;
};

/// The texts of one side of a call that rules are matched with. They are built once for a call, in
/// memory that is kept.
class Addresses {
  public:
    void Take(CallParams const& params, CallType type) {
        user_ = &params.user;
        if (type != CALL_TYPE_SIP)
            return;
        sip_.assign(params.user).append("@").append(params.host).append(":");
        sip_.append(params.port.empty() ? "*" : params.port);
    }

    std::string const& For(CallType ruleType) const {
        return ruleType == CALL_TYPE_SIP ? sip_ : *user_;
    }

  private:
    std::string const* user_ = nullptr;
    std::string sip_;
};

template <typename Pattern>
class PatternWalk final : public Engine {
  public:
    explicit PatternWalk(std::vector<Rule> const& rules) {
        for (Rule const& rule : rules) {
            rules_.push_back({rule.recording_rule_state == RULE_ENABLED, rule.caller_call_type,
                              rule.called_call_type,
                              Pattern(SidePattern(rule.caller_pattern, rule.caller_call_type)),
                              Pattern(SidePattern(rule.called_pattern, rule.called_call_type))});
        }
    }

    int Decide(Call const& call) override {
        caller_.Take(call.caller, call.callerType);
        called_.Take(call.called, call.calledType);
        int place = 0;
        for (Compiled const& rule : rules_) {
            if (rule.isEnabled && Fits(rule.callerType, call.callerType) &&
                Fits(rule.calledType, call.calledType) &&
                rule.caller.Matches(caller_.For(rule.callerType)) &&
                rule.called.Matches(called_.For(rule.calledType)))
                return place;
            ++place;
        }
        return -1;
    }

  private:
    struct Compiled {
        bool isEnabled;
        CallType callerType;
        CallType calledType;
        Pattern caller;
        Pattern called;
    };

    static bool Fits(CallType ruleType, CallType callType) {
        return ruleType == callType || ruleType == CALL_TYPE_ANY;
    }

    std::vector<Compiled> rules_;
    Addresses caller_;
    Addresses called_;
};

/// What a side of a call contributes to the text that the set is matched with.
enum class SideText {
    User,    // The user, when rules look at nothing else.
    Address, // The whole address of a SIP call, when all rules look at that.
    Both     // Call type and user, then a mark, the address of a SIP call, and a mark.
};

SideText TextFor(std::vector<Rule> const& rules, CallType Rule::*type) {
    auto const all = [&](CallType one) {
        return std::all_of(rules.begin(), rules.end(),
                           [&](Rule const& rule) { return rule.*type == one; });
    };
    if (all(CALL_TYPE_ANY) || all(CALL_TYPE_NUMBER))
        return SideText::User;
    return all(CALL_TYPE_SIP) ? SideText::Address : SideText::Both;
}

class Re2Set final : public Engine {
  public:
    explicit Re2Set(std::vector<Rule> const& rules)
        : caller_(TextFor(rules, &Rule::caller_call_type)),
          called_(TextFor(rules, &Rule::called_call_type)), set_(SetOptions(), RE2::ANCHOR_BOTH) {
        for (std::size_t place = 0; place < rules.size(); ++place) {
            Rule const& rule = rules[place];
            if (rule.recording_rule_state != RULE_ENABLED)
                continue;
            std::string const regex =
                SideRegex(caller_, rule.caller_pattern, rule.caller_call_type) + "\\x03" +
                SideRegex(called_, rule.called_pattern, rule.called_call_type);
            if (set_.Add(regex, nullptr) < 0)
                throw std::runtime_error("RE2::Set does not take " + regex);
            places_.push_back(static_cast<int>(place));
        }
        if (!set_.Compile())
            throw std::runtime_error("RE2::Set does not compile");
    }

    int Decide(Call const& call) override {
        text_.clear();
        AddSide(caller_, call.caller, call.callerType);
        text_ += '\x03';
        AddSide(called_, call.called, call.calledType);
        if (!set_.Match(text_, &matches_))
            return -1;
        return places_[static_cast<std::size_t>(
            *std::min_element(matches_.begin(), matches_.end()))];
    }

  private:
    static RE2::Options SetOptions() {
        RE2::Options options(RE2::Latin1);
        options.set_dot_nl(true);
        options.set_never_capture(true);
        options.set_max_mem(std::int64_t{1} << 32); // Else long lists do not compile.
        return options;
    }

    static std::string SideRegex(SideText text, std::string const& pattern, CallType type) {
        std::string const regex =
            ToRegex(SidePattern(pattern, type), Exclusion::Split, "[^\\x02\\x03]");
        if (text != SideText::Both)
            return regex;
        if (type == CALL_TYPE_ANY)
            return "[0-9]" + regex + "(?:\\x02[^\\x03]*)?";
        return fmt::format("{}{}{}", static_cast<int>(type),
                           type == CALL_TYPE_SIP ? "[^\\x02]*\\x02" : "", regex);
    }

    void AddSide(SideText text, CallParams const& params, CallType type) {
        if (text == SideText::Both)
            text_ += static_cast<char>('0' + type);
        if (text != SideText::Address)
            text_ += params.user;
        if (text == SideText::User || type != CALL_TYPE_SIP)
            return;
        if (text == SideText::Both)
            text_ += '\x02';
        text_.append(params.user).append("@").append(params.host).append(":");
        text_ += params.port.empty() ? "*" : params.port;
    }

    SideText const caller_;
    SideText const called_;
    RE2::Set set_;
    std::vector<int> places_; // For each rule of the set its place in the list.
    std::string text_;
    std::vector<int> matches_;
};

} // namespace

std::unique_ptr<Engine> MakeRe2Set(std::vector<Rule> const& rules) {
    return std::make_unique<Re2Set>(rules);
}

std::unique_ptr<Engine> MakeLibrary(CCallRecordingAssistant& assistant) {
    return std::make_unique<Library>(assistant);
}

std::unique_ptr<Engine> MakeWalk(std::vector<Rule> const& rules) {
    return std::make_unique<Walk>(rules);
}

std::unique_ptr<Engine> MakePcre2(std::vector<Rule> const& rules) {
    return std::make_unique<PatternWalk<Pcre2Pattern>>(rules);
}

std::unique_ptr<Engine> MakeRe2(std::vector<Rule> const& rules) {
    return std::make_unique<PatternWalk<Re2Pattern>>(rules);
}

std::unique_ptr<Engine> MakeFnmatch(std::vector<Rule> const& rules) {
    return std::make_unique<PatternWalk<FnmatchPattern>>(rules);
}

Pcre2Pattern::Pcre2Pattern(std::string const& pattern) {
    std::string const regex = ToRegex(pattern, Exclusion::Lookahead);
    int error = 0;
    PCRE2_SIZE offset = 0;
    code_.reset(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(regex.data()), regex.size(),
                              PCRE2_ANCHORED | PCRE2_ENDANCHORED | PCRE2_DOTALL, &error, &offset,
                              nullptr));
    if (!code_ || pcre2_jit_compile(code_.get(), PCRE2_JIT_COMPLETE) != 0)
        throw std::runtime_error("PCRE2 does not take " + regex);
}

int Pcre2Pattern::Run(std::string const& address) const {
    static pcre2_match_data* const data = pcre2_match_data_create(1, nullptr);
    return pcre2_jit_match(code_.get(), reinterpret_cast<PCRE2_SPTR>(address.data()),
                           address.size(), 0, 0, data, nullptr);
}

Re2Pattern::Re2Pattern(std::string const& pattern) {
    RE2::Options options(RE2::Latin1);
    options.set_dot_nl(true);
    options.set_never_capture(true);
    regex_ = std::make_unique<RE2>(ToRegex(pattern, Exclusion::Split), options);
    if (!regex_->ok())
        throw std::runtime_error("RE2 does not take " + regex_->pattern());
}

FnmatchPattern::FnmatchPattern(std::string const& pattern) : glob_(ToGlob(pattern)) {}

bool FnmatchPattern::Matches(std::string const& address) const {
    return fnmatch(glob_.c_str(), address.c_str(), 0) == 0;
}

} // namespace bench
