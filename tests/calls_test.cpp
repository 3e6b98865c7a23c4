// Parties: what is read out of an address, what rules compare, and which rule decides, compared
// with a plain reading of docs/calls.md.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "calls/Party.h"
#include "calls/PartyPatterns.h"
#include "calls/RuleFit.h"
#include "calls/RuleSet.h"
#include "common/Sha256.h"
#include "matching/PatternMatcher.h"
#include "model/BasicView.h"
#include "model/RuleSides.h"
#include "model/SipAddress.h"

namespace CallRecordingUtils {
namespace {

using namespace std::string_literals;

std::string TextOf(Party const& party) {
    return party.user + "|" + party.host + "|" + party.port;
}

TEST(Party, IsReadFromWhateverThereIs) {
    struct {
        char const *written, *party;
    } const rows[] = {
        // Nothing, numbers and names.
        {"", "||"},
        {" \t\r\n", "||"},
        {"anonymous", "anonymous||"},
        {" 201 ", "201||"},
        {"213-1", "213-1||"},
        {"(030) 12-34", "(030) 12-34||"},
        {"+49 (30) 12-34.5", "+493012345||"},
        {"*72", "*72||"},
        // What surrounds an address.
        {"\"Sales <1>\" <sip:201@pbx>;tag=9", "201|pbx|5060"},
        {"\"a \\\" <b>\"<sip:201@pbx>", "201|pbx|5060"},
        {"\"open <sip:201@pbx>", "201|pbx|5060"},
        {"Alice < 201 >;tag=x@y", "201||"},
        {"<>", "||"},
        {"a < b", "a < b||"},
        {"a > b", "a > b||"},
        // RFC 3261, 19.1.3.
        {"sip:alice@atlanta.com", "alice|atlanta.com|5060"},
        {"sip:alice:secretword@atlanta.com;transport=tcp", "alice|atlanta.com|5060"},
        {"sips:alice@atlanta.com?subject=project%20x&priority=urgent", "alice|atlanta.com|5060"},
        {"sip:+1-212-555-1212:1234@gateway.com;user=phone", "+12125551212|gateway.com|5060"},
        {"sips:1212@gateway.com", "1212|gateway.com|5060"},
        {"sip:alice@192.0.2.4", "alice|192.0.2.4|5060"},
        {"sip:atlanta.com", "atlanta.com||"},
        {"sip:alice;day=tuesday@atlanta.com", "alice;day=tuesday|atlanta.com|5060"},
        {"SIP:%61lice@AtLanTa.CoM;Transport=tcp", "alice|atlanta.com|5060"},
        {"sip:alice@atlanta.com:5061;lr", "alice|atlanta.com|5061"},
        // RFC 3966, and numbers in SIP URIs.
        {"tel:+1-201-555-0123", "+12015550123||"},
        {"tel:7042;phone-context=example.com", "7042||"},
        {"TEL:863-1234;phone-context=+1-914-555", "8631234||"},
        {"tel:+1;phone-context=a@b", "+1||"},
        {"sip:+1555;npdi;rn=+1666@gw;user=phone", "+1555|gw|5060"},
        {"sip:213-1@pbx", "213-1|pbx|5060"},
        {"sip:%2B49%2d30@gw", "+4930|gw|5060"},
        {"sip:201%3Bx@pbx", "201;x|pbx|5060"},
        // "@", ports, IPv6.
        {"a@b@c", "a@b|c|5060"},
        {"a;b@pbx?x=y", "a;b|pbx|5060"},
        {"@pbx", "|pbx|5060"},
        {"201@", "201||"},
        {"201@:5070", "201||"},
        {"201@pbx:", "201|pbx|5060"},
        {"201@PBX:05070", "201|pbx|05070"},
        {"201@pbx:abc", "201@pbx:abc||"},
        {"sip:a:b@pbx:abc;lr", "a:b@pbx:abc||"},
        {"sip:a@[2001:DB8::1]", "a|[2001:db8::1]|5060"},
        {"sip:a@[::1]:5070;lr", "a|[::1]|5070"},
        {"a@fe80::1", "a@fe80::1||"},
        // Escapes are decoded once, and never into control bytes.
        {"sip:a%2541@h", "a%41|h|5060"},
        {"sip:a%40b@h", "a@b|h|5060"},
        {"sip:a%00%0a%7F%c3%BC@h", "a%00%0a%7F\xc3\xbc|h|5060"},
        {"a%4", "a%4||"},
        {"a%zz%", "a%zz%||"},
        // Other schemes.
        {"urn:service:sos", "urn:service:sos||"},
        {"<mailto:a@b>", "mailto:a@b||"},
        {"h323:201@gw:1720", "h323:201@gw:1720||"},
        {"201:5@gw", "201:5|gw|5060"},
    };
    for (auto const& [written, party] : rows)
        EXPECT_EQ(TextOf(ReadParty(written)), party) << written;
}

TEST(Party, IsReadFromItsParts) {
    struct {
        char const *user, *host, *port, *party;
    } const rows[] = {
        {"", "", "", "||"},
        {" +1-555;npdi ", " GW ", " 5070 ", "+1555|gw|5070"},
        {"201", "", "5070", "201||"},
        {"201", "", "abc", "201||"},
        {"", "pbx", "", "|pbx|5060"},
        {"%2a72", "2001:DB8::1", "", "*72|[2001:db8::1]|5060"},
        {"a@b", "[::1]", "9", "a@b|[::1]|9"},
        {"201", "pbx", "abc", "201@pbx:abc||"},
    };
    for (auto const& [user, host, port, party] : rows)
        EXPECT_EQ(TextOf(ReadParty(user, host, port)), party) << user;
    std::string const text("12\0345", 5); // A NUL is a byte like others.
    EXPECT_EQ(ReadParty(text).user, text);
}

TEST(Party, TellsWhatWasLeftOut) {
    struct {
        char const *written, *words;
    } const rows[] = {
        {"201@pbx:5060", ""},
        {"a-b;c", ""},
        {" \"x\" <sip:+1-2:pw@h>", "blanks name brackets sip: parameters separators "},
        {"tel:12", "tel: "},
        {"+1;x", "parameters "},
        {"a@b;x", "parameters "},
    };
    for (auto const& [written, expected] : rows) {
        Cleanings cleanings;
        ReadParty(written, &cleanings);
        std::string words;
        for (std::size_t i = 0; i < cleanings.size(); ++i)
            words += cleanings[i] ? std::string(kCleaningWords[i]) + " " : "";
        EXPECT_EQ(words, expected) << written;
    }
}

/// What each type of rule side sees, as "number|sip|number2|any"; "-" for nothing.
std::string Seen(SideTexts const& side) {
    std::string seen;
    for (CallType const type : {CALL_TYPE_NUMBER, CALL_TYPE_SIP, CALL_TYPE_NUMBER2, CALL_TYPE_ANY})
        seen += std::string(seen.empty() ? "" : "|") + std::string(side.SeenBy(type).value_or("-"));
    return seen;
}

TEST(SideTexts, AreWhatRulesCompare) {
    EXPECT_EQ(Seen(SideTexts(Party{"213", "evil", "5060"})), "213|213@evil:5060|-|213");
    EXPECT_EQ(Seen(SideTexts(Party{"", "", ""})), "-|-|-|");
    EXPECT_EQ(Seen(SideTexts(Party{"*#+1", "", ""})), "##+1|-|-|##+1");
    EXPECT_EQ(Seen(SideTexts(Party{"a*?,-!:", "a-b*,", "1"})), "-|a#^,%::@a%b#,:1|-|a#^,%::");
    EXPECT_EQ(Seen(SideTexts(Party{"1,2", "", ""})), "-|-|-|1@2");
    EXPECT_EQ(Seen(SideTexts(Party{"^@%", "^%", "1"})), "-|\1\1\1@\1\1:1|-|\1\1\1");
    EXPECT_EQ(Seen(SideTexts("*1@h", CALL_TYPE_NUMBER)), "*1@h|-|-|*1@h");
    EXPECT_EQ(Seen(SideTexts("*1@h", CALL_TYPE_SIP)), "-|*1@h:*|-|*1");
    EXPECT_EQ(Seen(SideTexts("*1", CALL_TYPE_NUMBER2)), "-|-|*1|*1");
    EXPECT_EQ(SideTexts(Party{"a*", "b-c", "1"}).Shown(CALL_TYPE_SIP), "a*@b-c:1");
    EXPECT_EQ(SideTexts(Party{"a*", "b-c", "1"}).Shown(CALL_TYPE_ANY), "a*");
}

// --- Which rule decides ---

/// Whether a side of a rule takes a party, by the words of docs/calls.md.
bool PlainlyTakes(std::string pattern, CallType type, Party const& party) {
    auto const code = [&](std::string text, bool isUser) {
        for (char& c : text)
            switch (c) {
            case '*': c = '#'; break;
            case '?': c = '^'; break;
            case '-': c = '%'; break;
            case '!': c = ':'; break;
            case ',': c = isUser && party.host.empty() ? '@' : ','; break;
            case '^':
            case '@':
            case '%': c = '\x02'; break;
            default: break;
            }
        return text;
    };
    std::string const user = code(party.user, true);
    std::string address = user;
    if (pattern.empty() || type == CALL_TYPE_NUMBER2)
        return false;
    if (type == CALL_TYPE_NUMBER &&
        (user.empty() || party.user.find_first_not_of("0123456789+*#") != std::string::npos))
        return false;
    if (type == CALL_TYPE_SIP) {
        std::size_t const colon = pattern.rfind(':');
        if (party.host.empty() || pattern.substr(0, colon).find('@') == std::string::npos)
            return false;
        address += "@" + code(party.host, false) + ":" + party.port;
        pattern += colon == std::string::npos ? ":*" : colon + 1 == pattern.size() ? "*" : "";
    }
    return PatternMatcher(address, pattern).Matches();
}

class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::size_t Below(std::size_t bound) { return random_() % bound; }
    template <typename Things>
    auto Pick(Things const& things) {
        return things[Below(std::size(things))];
    }

    std::string User() {
        static char const* const users[] = {"",    "1",   "12",  "13",  "+12", "*1",  "#1",
                                            "1-2", "a",   "ab",  "a-b", "a!",  "a,b", "1,2",
                                            "a^",  "a@b", "a%b", "a?",  "a b", "urn"};
        return Pick(users);
    }
    Party MakeParty() {
        static char const* const hosts[] = {"", "", "h", "g-h", "h*", "[::1]", "h%1"};
        Party party{User(), Pick(hosts), ""};
        if (!party.host.empty())
            party.port = Below(2) == 0 ? "5060" : std::to_string(1 + Below(3));
        return party;
    }
    std::string Pattern(CallType type) {
        static char const* const pieces[] = {
            "*",   "*",   "?",   "1",  "12", "1*", "[12]", "<1-13>", "#1", "^",      "%",  ":",
            "a%b", "a@b", "+1?", "?*", "a:", "",   "a",    "1@2",    "a*", "[!1,?]", "1}", "[1"};
        static char const* const hosts[] = {"@h",  "@*",       "@g%h",   "@h:5060", "@h#:*",
                                            "@h:", "@*:<1-2>", "@?::?]", "",        "@h?1"};
        return Pick(pieces) + std::string(type == CALL_TYPE_SIP ? Pick(hosts) : "");
    }
    CallRecordingRuleParams MakeRule() {
        CallRecordingRuleParams rule;
        rule.caller_call_type = static_cast<CallType>(Pick("0011333332"s) - '0');
        rule.called_call_type = static_cast<CallType>(Pick("0011333332"s) - '0');
        rule.caller_pattern = Pattern(rule.caller_call_type);
        rule.called_pattern = Pattern(rule.called_call_type);
        rule.recording_rule_state = Below(5) == 0 ? RULE_DISABLED : RULE_ENABLED;
        return rule;
    }

    /// The party read back from one of the ways in which telephone systems have it.
    Party ReadBack(Party const& party) {
        std::string user;
        for (char const c : party.user)
            user +=
                Contains("%@ ,;?:<>\"", c) ? "%" + Hex(c >> 4) + Hex(c & 15) : std::string(1, c);
        if (Below(3) == 0)
            return ReadParty(user, party.host, party.port);
        return ReadParty(Below(2) == 0 || party.host.empty() ? Plain(user, party)
                                                             : Uri(user, party));
    }

  private:
    static std::string Hex(int digit) { return std::string(1, "0123456789abcdef"[digit]); }

    std::string Plain(std::string const& user, Party const& party) {
        std::string const text =
            user + (party.host.empty() ? "" : "@" + party.host + ":" + party.port);
        return Below(2) == 0 ? text : "\"Me <1>\" <" + text + ">;tag=a@b";
    }

    std::string Uri(std::string const& user, Party const& party) {
        std::string host = party.host;
        if (Below(2) == 0)
            host[0] = static_cast<char>(std::toupper(host[0]));
        if (party.port != "5060" || Below(2) == 0)
            host += ":" + party.port;
        static char const* const ends[] = {"", ";lr", "?x=y", ";a=b;c?d"};
        std::string const uri = user + (Below(2) == 0 ? ":secret@" : "@") + host + Pick(ends);
        static char const* const starts[] = {
            "sip:", "SIPS:", " <sip:", "Me<sips:", "\"a\\\"<\" <sip:"};
        std::string const start = Pick(starts);
        return start + uri + (Contains(start, '<') ? ">;tag=<1>" : " ");
    }

    std::mt19937 random_;
};

TEST(RuleSet, DecidesPartiesAsAPlainReadingDoes) {
    Generator make(7);
    std::size_t takers = 0;
    for (int round = 0; round < 400; ++round) {
        std::vector<CallRecordingRuleParams> rules(make.Below(round % 4 == 0 ? 120 : 12));
        for (CallRecordingRuleParams& rule : rules)
            rule = make.MakeRule();
        RuleSet const set(rules);
        for (int call = 0; call < 50; ++call) {
            Party const caller = make.MakeParty();
            Party const called = make.MakeParty();
            std::size_t plain = 0;
            while (plain < rules.size() && (rules[plain].recording_rule_state != RULE_ENABLED ||
                                            !PlainlyTakes(rules[plain].caller_pattern,
                                                          rules[plain].caller_call_type, caller) ||
                                            !PlainlyTakes(rules[plain].called_pattern,
                                                          rules[plain].called_call_type, called)))
                ++plain;
            takers += plain < rules.size() ? 1 : 0;
            if (plain < rules.size()) {
                ASSERT_EQ(
                    WhyNoPartyMatches(rules[plain].called_pattern, rules[plain].called_call_type),
                    nullptr)
                    << rules[plain].called_pattern;
            }
            PartyCall const asked{SideTexts(make.ReadBack(caller)),
                                  SideTexts(make.ReadBack(called))};
            auto const* const rule = set.Deciding(asked);
            ASSERT_EQ(rule == nullptr ? rules.size() : set.PlaceOf(*rule), plain)
                << TextOf(caller) << " to " << TextOf(called);
            if (rules.empty())
                continue;
            CallRecordingRuleParams const& any = rules[make.Below(rules.size())];
            RuleFit const fit = FitOf(any, asked);
            ASSERT_EQ(fit.Takes(), Takes(any, asked));
            ASSERT_EQ(fit.Reason().empty(), fit.Takes());
            ASSERT_EQ(fit.caller.Matches(),
                      PlainlyTakes(any.caller_pattern, any.caller_call_type, caller));
        }
    }
    EXPECT_GT(takers, 2000U);
}

TEST(RuleSet, DecidesTypedCallsAsTheLibraryDoes) {
    Generator make(8);
    for (int round = 0; round < 200; ++round) {
        std::vector<CallRecordingRuleParams> rules(make.Below(30));
        for (CallRecordingRuleParams& rule : rules)
            rule = make.MakeRule();
        RuleSet const set(rules);
        for (int call = 0; call < 30; ++call) {
            auto const callerType = static_cast<CallType>(make.Below(3));
            auto const calledType = static_cast<CallType>(make.Below(3));
            std::string const caller = std::string(make.User()) + (make.Below(2) == 0 ? "@h" : "");
            std::string const called =
                std::string(make.User()) + (make.Below(2) == 0 ? "@g:5060" : "");
            CallParty const from = ReadCallParty(caller, callerType);
            CallParty const to = ReadCallParty(called, calledType);
            ASSERT_EQ(set.Deciding(
                          PartyCall{SideTexts(caller, callerType), SideTexts(called, calledType)}),
                      set.Deciding(Call(from.params, from.type, to.params, to.type)))
                << caller << " to " << called;
        }
    }
}

TEST(RuleFit, SaysWhatIsInTheWay) {
    CallRecordingRuleParams rule;
    rule.caller_call_type = CALL_TYPE_NUMBER;
    rule.caller_pattern = "2<1-3>#";
    rule.called_call_type = CALL_TYPE_SIP;
    rule.called_pattern = "a%b@pbx";
    auto const reason = [&rule](char const* caller, char const* called) {
        return FitOf(rule, {SideTexts(ReadParty(caller)), SideTexts(ReadParty(called))}).Reason();
    };
    EXPECT_EQ(reason("24", "a-b@pbx:1"),
              "caller does not match 2{1-3}\\*: character 2: \"4\" does not "
              "begin with a run of {1-3}");
    EXPECT_EQ(reason("22", "a-b@pb"),
              "caller does not match 2{1-3}\\*: ends where \\* is still to "
              "come; called does not match a\\-b@pbx: character 7: \":\" is "
              "not x");
    EXPECT_EQ(reason("ann", "1"), "caller is no number; called has no host");
    EXPECT_EQ(reason("22*", "a-b@pbx"), "");
    rule.recording_rule_state = RULE_DISABLED;
    EXPECT_EQ(reason("22*", "a-b@pbx"), "disabled; it would match if it were enabled");
    rule.called_pattern = "x";
    EXPECT_EQ(reason("22*", "b*@pbx"), "disabled; called does not match x");
    rule.called_call_type = CALL_TYPE_NUMBER2;
    EXPECT_EQ(reason("22*", "1"), "disabled; called is never of type number2");
    rule.called_call_type = CALL_TYPE_ANY;
    rule.called_pattern = "";
    EXPECT_EQ(reason("22*", "1"), "disabled; called does not match an empty pattern");
}

TEST(PartyPatterns, NameWhatNoPartyHas) {
    struct {
        char const* pattern;
        CallType type;
        char const* reason; // The start of it; null for none.
    } const rows[] = {
        {"", CALL_TYPE_ANY, "is empty"},
        {"*", CALL_TYPE_ANY, nullptr},
        {"A%b", CALL_TYPE_ANY, nullptr},
        {"*", CALL_TYPE_NUMBER2, "is of type number2"},
        {"+49[a,1]#<1-3>*", CALL_TYPE_NUMBER, nullptr},
        {"213%1", CALL_TYPE_NUMBER, "asks for"},
        {"*a", CALL_TYPE_NUMBER, "asks for"},
        {"1]a", CALL_TYPE_NUMBER, nullptr}, // The matcher stops before the letter.
        {"201", CALL_TYPE_SIP, "has no"},
        {"A@pbx[A]:*", CALL_TYPE_SIP, nullptr},
        {"*@Pbx", CALL_TYPE_SIP, "has a capital"},
        {"1]@Pbx", CALL_TYPE_SIP, nullptr},
    };
    for (auto const& [pattern, type, reason] : rows) {
        char const* const found = WhyNoPartyMatches(pattern, type);
        ASSERT_EQ(found == nullptr, reason == nullptr) << pattern;
        EXPECT_TRUE(found == nullptr || std::string(found).rfind(reason, 0) == 0) << found;
    }
}

TEST(RuleFit, FindsTheNearestMiss) {
    std::vector<CallRecordingRuleParams> rules(4);
    char const* const patterns[] = {"1", "*", "124", "9"};
    for (std::size_t i = 0; i < rules.size(); ++i) {
        rules[i].caller_pattern = "*";
        rules[i].called_pattern = patterns[i];
    }
    PartyCall const call{SideTexts(Party{}), SideTexts(Party{"123", "", ""})};
    EXPECT_EQ(PlaceOfNearestMiss(RuleSet(rules), call), 2U);
    rules[1].recording_rule_state = RULE_DISABLED;
    EXPECT_EQ(PlaceOfNearestMiss(RuleSet(rules), call), 1U);
    EXPECT_EQ(PlaceOfNearestMiss(RuleSet(), call), 0U);
}

TEST(ForbidsRecording, IsExact) {
    CallRecordingRuleParams rule;
    for (char const* text : {"", "never", "Never:", "never: ", "never:x", " never:"}) {
        rule.record_to = text;
        EXPECT_FALSE(ForbidsRecording(rule)) << text;
    }
    rule.record_to = "never:";
    EXPECT_TRUE(ForbidsRecording(rule));
}

TEST(BasicView, TellsWhichBansItDoesNotEnforce) {
    CallRecordingRuleParams ban;
    ban.caller_pattern = "*";
    ban.called_pattern = "12";
    ban.called_call_type = CALL_TYPE_NUMBER;
    ban.record_to = kNeverRecord;
    CallRecordingRuleParams const twin = Mirrored(ban);
    CallRecordingRuleParams other = twin;
    other.record_to = "archive";
    CallRecordingRuleParams sip = ban;
    sip.called_call_type = CALL_TYPE_SIP;
    CallRecordingRuleParams disabled = ban;
    disabled.recording_rule_state = RULE_DISABLED;
    using Places = std::vector<std::size_t>;
    EXPECT_EQ(BansMissingFromBasicView({}), Places{});
    EXPECT_EQ(BansMissingFromBasicView({ban, twin}), Places{});
    EXPECT_EQ(BansMissingFromBasicView({ban}), Places{0});
    EXPECT_EQ(BansMissingFromBasicView({ban, other}), Places{0});
    EXPECT_EQ(BansMissingFromBasicView({other, ban}), Places{1});
    EXPECT_EQ(BansMissingFromBasicView({sip, ban, twin}), Places{0});
    EXPECT_EQ(BansMissingFromBasicView({disabled, Mirrored(disabled)}), Places{});
    EXPECT_EQ(BansMissingFromBasicView({ban, twin, other}), (Places{0, 1}));
}

TEST(Sha256, MatchesTheStandardsExamples) {
    auto const digest = [](std::string const& text, std::size_t piece) {
        Sha256 sha;
        for (std::size_t at = 0; at < text.size(); at += piece)
            sha.Add(std::string_view(text).substr(at, piece));
        return sha.Digits();
    };
    EXPECT_EQ(digest("", 1), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(digest("abc", 9), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(digest("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", 7),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(digest(std::string(1000000, 'a'), 999),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

} // namespace
} // namespace CallRecordingUtils
