/// @file
/// Generates rule lists and calls.

#include "rules.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <stdexcept>

#include <fmt/format.h>

namespace bench {
namespace {

/// A pattern and an address that it matches.
struct Sample {
    std::string pattern;
    std::string address;
};

/// A side of a rule, and of a call that it matches.
struct Side {
    std::string pattern;
    CallType ruleType;
    CallParams params;
    CallType callType;
};

class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::size_t Below(std::size_t bound) { return random_() % bound; }

    std::string Digits(std::size_t length) {
        std::string digits;
        while (digits.size() < length)
            digits += static_cast<char>('0' + Below(10));
        return digits;
    }

    /// Most numbers on an exchange are extensions, some are of the public network.
    std::string Number() { return Below(3) == 0 ? "00" + Digits(8 + Below(5)) : Extension(); }

    Side NumberSide(bool withRanges) {
        Sample const sample = NumberSample(withRanges);
        return {sample.pattern, CALL_TYPE_NUMBER, Params(sample.address), CALL_TYPE_NUMBER};
    }

    Side SipSide() {
        std::string const user = Below(2) == 0 ? Extension() : Name();
        std::string const host = Host();
        std::string const port = Below(2) == 0 ? std::string("5060") : "50" + Digits(2);
        std::string pattern = user + "@" + host;
        if (Below(10) == 0)
            pattern = user.substr(0, user.size() - 1) + "*@" + host;
        if (Below(2) == 0)
            return {pattern + ":" + port, CALL_TYPE_SIP, {user, {}, host, port}, CALL_TYPE_SIP};
        return {pattern, CALL_TYPE_SIP, {user, {}, host, Below(2) == 0 ? port : ""}, CALL_TYPE_SIP};
    }

    /// The called side in a mix of only one kind.
    Side SideOf(Mix mix) {
        std::string const digits = Digits(6 + Below(4));
        Sample sample{digits, digits};
        switch (mix) {
        case Mix::Prefix: sample = {"498912" + digits, "498912" + digits}; break;
        case Mix::Domain: return DomainSide();
        case Mix::Tails: sample = {"*" + digits, Digits(3 + Below(4)) + digits}; break;
        case Mix::SetsFirst: sample = Together(SomeSets(2), {digits, digits}); break;
        case Mix::SetsOnly: sample = SomeSets(8 + Below(3)); break;
        case Mix::Middle:
            sample = {"*" + digits + "*", Digits(1 + Below(4)) + digits + Digits(1 + Below(4))};
            break;
        default: break;
        }
        return {sample.pattern, CALL_TYPE_NUMBER, Params(sample.address), CALL_TYPE_NUMBER};
    }

    Side AnyNumber() { return {"*", CALL_TYPE_ANY, Params(Number()), CALL_TYPE_NUMBER}; }

    Side AnySip() {
        Side side = SipSide();
        side.pattern = "*";
        side.ruleType = CALL_TYPE_ANY;
        return side;
    }

  private:
    static CallParams Params(std::string const& number) { return {number, {}, "", ""}; }

    std::string Extension() { return static_cast<char>('1' + Below(9)) + Digits(3 + Below(3)); }

    std::string Name() {
        static char const* const names[] = {"anna", "boris", "carmen", "dora", "emil", "frida"};
        return names[Below(std::size(names))] + Digits(4);
    }

    std::string Host() {
        static char const* const hosts[] = {"pbx", "gateway", "trunk", "branch"};
        return fmt::format("{}{}.example.com", hosts[Below(std::size(hosts))], Below(4));
    }

    Side DomainSide() {
        std::string const user = Name();
        return {user + "@example.com", CALL_TYPE_SIP, {user, {}, "example.com", ""}, CALL_TYPE_SIP};
    }

    static Sample Together(Sample const& a, Sample const& b) {
        return {a.pattern + b.pattern, a.address + b.address};
    }

    /// Sets of two to four digits.
    Sample SomeSets(std::size_t count) {
        Sample sets;
        while (count-- > 0) {
            std::size_t const low = Below(7);
            std::size_t const more = 1 + Below(3);
            sets = Together(sets, {Below(2) == 0 ? fmt::format("[{}-{}]", low, low + more)
                                                 : fmt::format("[{},{}]", low, low + more),
                                   std::to_string(low)});
        }
        return sets;
    }

    Sample NumberSample(bool withRanges) {
        std::size_t const kind = Below(20);
        if (kind < 8)
            return Literal();
        if (kind < 12)
            return Prefix();
        if (kind < 14)
            return Suffix();
        return kind < 17 && withRanges ? Range() : Set();
    }

    Sample Literal() {
        std::string const number = Extension();
        return {number, number};
    }

    Sample Prefix() {
        std::string const start = "00" + Digits(4 + Below(4));
        return {start + "*", start + Digits(4 + Below(4))};
    }

    Sample Suffix() {
        std::string const end = Digits(5 + Below(3));
        return {"*" + end, Digits(2 + Below(4)) + end};
    }

    Sample Set() {
        std::string const start = Extension();
        std::size_t const low = Below(5);
        std::string const address = start + std::to_string(low);
        switch (Below(3)) {
        case 0: return {fmt::format("{}[{}-{}]", start, low, low + 4), address};
        case 1: return {fmt::format("{}[{},{},{}]", start, low, low + 2, low + 5), address};
        default: return {fmt::format("{}[0-9,!{}]?", start, low + 1), address + Digits(1)};
        }
    }

    Sample Range() {
        std::string const start = static_cast<char>('1' + Below(9)) + Digits(2);
        std::size_t const low = 100 * (1 + Below(8)) + Below(50);
        std::size_t const width = 10 + Below(150);
        std::size_t const excluded = low + 1 + Below(width - 1);
        std::size_t const kind = Below(4);
        if (kind == 0)
            return {fmt::format("{}<{}-9><00-99>", start, low % 9 + 1),
                    start + std::to_string(low % 9 + 1) + Digits(2)};
        if (kind == 1)
            return {fmt::format("{}<00-{},!{:02}>", start, 10 + Below(90), Below(10)),
                    start + "10"};
        return {fmt::format("{}<{}-{},!{}>", start, low, low + width, excluded),
                start + std::to_string(low)};
    }

    std::mt19937 random_;
};

struct Sides {
    Side caller;
    Side called;
};

Sides MakeSides(Mix mix, bool withRanges, Generator& generator) {
    switch (mix) {
    case Mix::Numbers: return {generator.AnyNumber(), generator.NumberSide(withRanges)};
    case Mix::Sip: {
        Sides const sides{generator.AnySip(), generator.SipSide()};
        return generator.Below(2) == 0 ? sides : Sides{sides.called, sides.caller};
    }
    case Mix::Domain: return {generator.AnySip(), generator.SideOf(mix)};
    case Mix::BothSides: break;
    default: return {generator.AnyNumber(), generator.SideOf(mix)};
    }
    if (generator.Below(4) == 0)
        return {generator.SipSide(), generator.SipSide()};
    return {generator.NumberSide(withRanges), generator.NumberSide(withRanges)};
}

/// The first three rules of ten, else the first tenth.
std::size_t Margin(RuleList const& list) {
    return std::max<std::size_t>(3, list.rules.size() / 10);
}

/// Calls that were made for another list of the same mix: they match only by chance.
std::vector<Call> ForeignCalls(RuleList const& list) {
    std::vector<Call> calls = MakeRules(list.mix, 1000, list.hasRanges, 2).examples;
    if (list.mix != Mix::BothSides)
        return calls;
    for (std::size_t i = 0; i < calls.size(); i += 2) { // Often one side is known to the list.
        Call const& known = list.examples[i % list.examples.size()];
        if (known.callerType == calls[i].callerType)
            calls[i].caller = known.caller;
    }
    return calls;
}

/// A number that would match but for the exclusion in the pattern.
std::string ExcludedNumber(std::string const& pattern) {
    std::size_t const excluded = pattern.find('!') + 1;
    std::size_t const close = pattern.find_first_of("]>", excluded);
    std::string const behind = pattern.back() == '?' ? "0" : "";
    return pattern.substr(0, pattern.find_first_of("[<")) +
           pattern.substr(excluded, close - excluded) + behind;
}

} // namespace

bool MixHasRanges(Mix mix) {
    return mix == Mix::Numbers || mix == Mix::BothSides;
}

char const* NameOf(Mix mix) {
    static char const* const names[] = {
        "(a) numbers", "(b) SIP",   "(c) both sides", "(d) prefix",    "(e) exact",
        "(f) domain",  "(g) tails", "(h) sets first", "(i) sets only", "(j) middle"};
    return names[static_cast<std::size_t>(mix)];
}

RuleList MakeRules(Mix mix, std::size_t size, bool withRanges, unsigned seed) {
    Generator generator(seed);
    RuleList list{mix, withRanges && MixHasRanges(mix), {}, {}};
    for (std::size_t place = 0; place < size; ++place) {
        Sides const sides = MakeSides(mix, withRanges, generator);
        Rule rule;
        rule.callrecordingrule_id = static_cast<std::int32_t>(place);
        rule.caller_pattern = sides.caller.pattern;
        rule.caller_call_type = sides.caller.ruleType;
        rule.called_pattern = sides.called.pattern;
        rule.called_call_type = sides.called.ruleType;
        rule.call_recording_type = CallRecordingUtils::CALL_RECORDING_TYPE_0;
        rule.record_to = "/media/recordings";
        rule.recording_duration = "3600";
        rule.description = fmt::format("rule {} of the exchange", place);
        rule.recording_rule_state =
            place % 50 == 25 ? CallRecordingUtils::RULE_DISABLED : CallRecordingUtils::RULE_ENABLED;
        list.rules.push_back(rule);
        list.examples.push_back({sides.caller.params, sides.caller.callType, sides.called.params,
                                 sides.called.callType});
    }
    return list;
}

std::string RuleFileText(std::vector<Rule> const& rules) {
    std::string text;
    for (Rule const& rule : rules)
        text += fmt::format(
            "{{\ncallrecordingrule_id={}\ncaller_pattern={}\ncaller_call_type={}\n"
            "called_pattern={}\ncalled_call_type={}\ncall_recording_type={}\nrecord_to={}\n"
            "recording_duration={}\ndescription={}\nrecording_rule_state={}\n}}\n",
            rule.callrecordingrule_id, rule.caller_pattern, static_cast<int>(rule.caller_call_type),
            rule.called_pattern, static_cast<int>(rule.called_call_type),
            static_cast<int>(rule.call_recording_type), rule.record_to, rule.recording_duration,
            rule.description,
            rule.recording_rule_state == CallRecordingUtils::RULE_ENABLED ? 1 : 0);
    return text;
}

std::vector<CallGroup> MakeCalls(RuleList const& list,
                                 std::function<int(Call const&)> const& decide) {
    int const size = static_cast<int>(list.rules.size());
    int const margin = static_cast<int>(Margin(list));
    auto const gather = [&](char const* name, std::vector<Call> const& from, int first, int last) {
        CallGroup group{name, {}};
        // A step that comes to every call, in no particular order.
        for (std::size_t i = 0; group.calls.size() < std::size_t{kCallsInGroup}; ++i) {
            if (i == 8 * from.size() + 1000)
                throw std::runtime_error(fmt::format("too few calls match {}", name));
            Call call = from[i * 7919 % from.size()];
            call.decidedBy = decide(call);
            if (first <= call.decidedBy && call.decidedBy <= last)
                group.calls.push_back(call);
        }
        return group;
    };
    auto const begin = list.examples.begin();
    return {gather("early", {begin, begin + margin}, 0, margin - 1),
            gather("late", {list.examples.end() - margin, list.examples.end()}, size - margin,
                   size - 1),
            gather("never", ForeignCalls(list), -1, -1)};
}

std::vector<Call> MakeRandomCalls(RuleList const& list, std::size_t count) {
    Generator generator(3);
    std::vector<Call> const foreign = ForeignCalls(list);
    std::vector<Call> calls;
    while (calls.size() < count) {
        std::size_t const place = generator.Below(list.examples.size());
        std::string const& pattern = list.rules[place].called_pattern;
        Call call = list.examples[place];
        switch (generator.Below(4)) {
        case 0: call = foreign[generator.Below(foreign.size())]; break;
        case 1: call.called.user.back() = generator.Digits(1).front(); break;
        case 2:
            if (pattern.find('!') != std::string::npos)
                call.called.user = ExcludedNumber(pattern);
            break;
        default: break;
        }
        calls.push_back(call);
    }
    return calls;
}

} // namespace bench
