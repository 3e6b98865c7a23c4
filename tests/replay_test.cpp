// Replaying call records: the addresses in them, the files, the counts and the page.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <sys/wait.h>

#include <nlohmann/json.hpp>

#include <callrecordingutils/callrecordingutils.h>

#include "administration/history/History.h"
#include "administration/inspection/ReadRules.h"
#include "calls/RuleSet.h"
#include "records/counting/LeadingDigits.h"
#include "records/counting/Timeline.h"
#include "records/reading/CallTime.h"
#include "support/TempDir.h"

namespace CallRecordingUtils {

using namespace CallRecordingUtils;
namespace {

TEST(Timeline, KeepsEveryCallInFewStretches) {
    std::mt19937 random(7);
    constexpr CallTime k1990 = 7305 * 86400;
    for (CallTime const span : {1, 4, 90, 400, 4000, 40000}) {
        Timeline timeline;
        std::map<CallTime, Timeline::Counts> expected;
        std::vector<std::pair<CallTime, std::size_t>> calls;
        for (int i = 0; i < 3000; ++i) {
            calls.emplace_back(static_cast<CallTime>(k1990 + random() % (span * 86400)) - 86400,
                               random() % 3);
            timeline.Count(calls.back().first, calls.back().second);
        }
        CallTime const width = timeline.Width();
        std::uint64_t outside = 0;
        for (auto const& [time, decidedBy] : calls)
            if (time < k1990 || time >= k1990 + 36525 * 86400LL)
                ++outside;
            else // Counted from a Monday.
                ++expected[time - (time - 4 * 86400) % width][decidedBy];
        EXPECT_EQ(timeline.Stretches(), expected) << span << " days";
        EXPECT_EQ(timeline.Outside(), outside);
        EXPECT_LE(timeline.Stretches().size(), 101U);
    }
}

TEST(LeadingDigits, GroupEveryNumberOnce) {
    std::mt19937 random(5);
    for (int round = 0; round < 200; ++round) {
        LeadingDigits digits;
        std::vector<std::string> numbers;
        for (std::size_t count = random() % 200 + 1; count > 0; --count) {
            std::string number;
            for (std::size_t size = random() % 7; size > 0; --size)
                number += "0000123+a"[random() % 9];
            numbers.push_back(number);
            digits.Count(number, std::nullopt, [&number] {
                return Example{"", number, {}, "", 0};
            });
        }
        Tally rest;
        std::vector<LeadingDigits::Group> const groups = digits.Groups(rest);
        std::map<std::string, std::set<std::string>> members; // By the longest group that fits.
        std::map<std::string, std::uint64_t> counts;
        for (std::string const& number : numbers) {
            std::string const key = number.substr(0, std::min<std::size_t>(number.find('a'), 4));
            std::string const* best = nullptr;
            for (LeadingDigits::Group const& group : groups)
                if (key.compare(0, group.digits.size(), group.digits) == 0 &&
                    (best == nullptr || group.digits.size() > best->size()))
                    best = &group.digits;
            if (best == nullptr)
                continue;
            members[*best].insert(key);
            ++counts[*best];
        }
        std::uint64_t sum = rest.calls;
        for (LeadingDigits::Group const& group : groups) {
            sum += group.tally.calls;
            EXPECT_TRUE(rest.calls > 0 || counts[group.digits] == group.tally.calls)
                << group.digits;
            EXPECT_TRUE(group.tally.calls <= numbers.size() / 10 || rest.calls > 0 ||
                        members[group.digits].size() == 1)
                << group.digits;
        }
        EXPECT_EQ(sum, numbers.size());
        EXPECT_TRUE(std::is_sorted(groups.begin(), groups.end(), [](auto const& a, auto const& b) {
            return a.tally.calls > b.tally.calls;
        }));
    }
}

/// The client as a process.
/// A line of --answers; said is 0 for no, 1 for yes, and 2 if the service had no rules.
std::string AnswerLine(std::string const& id, std::size_t said) {
    nlohmann::json line{{"id", id}, {"recorded", nullptr}};
    if (said < 2)
        line["recorded"] = said == 1;
    return line.dump() + "\n";
}

char const* OutcomeWord(bool wanted, bool was) {
    return wanted ? was ? "recorded" : "missing" : was ? "unexpected" : "not_recorded";
}

class ReplayCommand : public testing::Test {
  protected:
    struct Outcome {
        int code;
        std::string out, err;
    };
    Outcome Run(std::string const& command, std::string const& before = "") const {
        int const status = std::system(("export QUVA_PATH=" + dir.Path() + "/; { " + before +
                                        CALLRECORDINGCTL_PATH + " " + command + "; } >" +
                                        dir.Path("out") + " 2>" + dir.Path("err"))
                                           .c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, dir.Read("out"), dir.Read("err")};
    }
    nlohmann::json Json(std::string const& command) const {
        return nlohmann::json::parse(Run(command + " --json").out);
    }
    std::vector<nlohmann::json> Each(std::string const& command) const {
        std::istringstream lines(Run(command + " --each --json").out);
        std::vector<nlohmann::json> calls;
        for (std::string line; std::getline(lines, line);)
            calls.push_back(nlohmann::json::parse(line));
        return calls;
    }
    void SetUp() override {
        setenv("TZ", "UTC", 1);
        tzset();
        std::filesystem::copy(EXAMPLES_PATH "/sample/telephony", dir.Path("telephony"));
    }
    /// The sample rules with what is replaced, as the file "other" of a configuration beside.
    std::string Other(std::string const& from, std::string const& to) const {
        std::string rules = dir.ReadRules();
        for (std::size_t at = 0; (at = rules.find(from, at)) != std::string::npos; at += to.size())
            rules.replace(at, from.size(), to);
        dir.Write("other/telephony/callrecordingdb", rules);
        return dir.Path("other/telephony/callrecordingdb");
    }

    TempDir dir;
    std::string const shipped = "replay " EXAMPLES_PATH "/calls/[gnp]*";
};

/// The numbers in the elements data of the page behind where.
std::uint64_t NumberIn(std::string const& page, std::string const& where) {
    std::size_t const at = page.find("<data value=\"", page.find(where));
    return at == std::string::npos ? 0 : std::stoull(page.substr(at + 13));
}

/// Asks decide about a call as --each prints it.
std::string DecideCommand(nlohmann::json const& call) {
    std::string command = "decide";
    for (char const* const side : {"from", "to"}) {
        command += std::string(" --") + side + " '" + std::string(call["read"][side]) + "'";
        if (call[side]["kind"] == "typed")
            command += std::string(" --") + side + "-type " + call[side]["call_type"].dump();
    }
    return command;
}

/// Random rules, some of which forbid, and random calls: typed, between parties, and mixed.
class RandomCalls {
  public:
    explicit RandomCalls(unsigned seed) : random_(seed) {}

    std::string Rules() {
        std::string text;
        for (std::size_t id = 0; id < 12; ++id)
            text += Rule(id, "");
        return text;
    }
    std::string Rule(std::size_t id, std::string const& description) {
        return "{\ncallrecordingrule_id=" + std::to_string(id) + Side("caller") + Side("called") +
               "\ncall_recording_type=0\nrecord_to=" + (Below(3) == 0 ? "never:" : "archive:") +
               "\nrecording_duration=\ndescription=" + description +
               "\nrecording_rule_state=" + (Below(6) == 0 ? "0" : "1") + "\n}\n";
    }
    nlohmann::json Call() {
        nlohmann::json call{{"from", Address()}, {"to", Address()}};
        for (char const* const type : {"from_type", "to_type"})
            if (Below(4) == 0)
                call[type] = Below(3);
        return call;
    }

  private:
    std::size_t Below(std::size_t bound) { return random_() % bound; }
    std::string Side(std::string const& name) {
        static char const* const patterns[] = {"*",    "#72",  "21?", "<210-214>",
                                               "ann*", "+49*", "?*"};
        static char const* const hosts[] = {"", "@pbx", "@*:5060", "@PBX"};
        std::size_t const type = Below(4);
        return "\n" + name + "_pattern=" + patterns[Below(7)] + (type == 1 ? hosts[Below(4)] : "") +
               "\n" + name + "_call_type=" + std::to_string(type);
    }
    std::string Address() {
        static char const* const addresses[] = {"213",
                                                "",
                                                "*72",
                                                "#72",
                                                " 211 ",
                                                "213@pbx",
                                                "sip:213@PBX;user=phone",
                                                "\"Ann\" <sip:ann:secret@pbx:5061>;tag=1",
                                                "tel:+49-30-12",
                                                "+49 (30) 12",
                                                "urn:service:sos",
                                                "sip:%2a72@[::1]",
                                                "anonymous",
                                                "ann@pbx:abc"};
        return addresses[Below(14)];
    }

    std::mt19937 random_;
};

/// What the library says: "1 recorded", "0 forbidden" or "none".
std::string AnswerOf(RuleSet const& rules, nlohmann::json const& call) {
    auto const side = [&call](std::string const& name) {
        std::string const address = call[name];
        if (!call.contains(name + "_type"))
            return SideTexts(ReadParty(address));
        return SideTexts(address, static_cast<CallType>(int{call[name + "_type"]}));
    };
    Rule const* const rule = rules.Deciding(PartyCall{side("from"), side("to")});
    return rule == nullptr ? "none"
                           : std::to_string(rules.PlaceOf(*rule)) +
                                 (ForbidsRecording(*rule) ? " forbidden" : " recorded");
}

/// The last word of an answer.
std::string Word(std::string const& answer) {
    return answer.substr(answer.rfind(' ') + 1);
}

std::string AnswerOf(nlohmann::json const& printed) {
    if (printed["rule"].is_null())
        return printed["recorded"] == false ? "none" : "recorded without a rule";
    return std::to_string(int{printed["rule"]["position"]} - 1) +
           (printed["recorded"] == true ? " recorded" : " forbidden");
}

/// What the interface in C says about parties.
std::string AnswerInC(std::string const& text, nlohmann::json const& call) {
    callrecording_rules* const rules = callrecording_open_text(text.data(), text.size());
    callrecording_party from = CALLRECORDING_PARTY_INIT, to = CALLRECORDING_PARTY_INIT;
    std::string const caller = call["from"], called = call["to"];
    from.text = caller.c_str();
    to.text = called.c_str();
    callrecording_rule const* rule = nullptr;
    auto const answer = callrecording_decide_parties(rules, &from, &to, &rule);
    std::string const said =
        rule == nullptr
            ? "none"
            : std::to_string(rule->id) + (answer == CALLRECORDING_YES ? " recorded" : " forbidden");
    callrecording_rule_free(rule);
    callrecording_close(rules);
    return said;
}

TEST_F(ReplayCommand, GivesTheAnswerOfTheLibraryAndOfDecide) {
    RandomCalls random(3);
    for (int round = 0; round < 12; ++round) {
        std::string const text = random.Rules();
        dir.WriteRules(text);
        RuleSet const rules(RulesOf(text, "rules"));
        std::vector<nlohmann::json> calls(200);
        std::string file;
        for (nlohmann::json& call : calls)
            file += (call = random.Call()).dump() + "\n";
        dir.Write("calls", file);
        std::string const command = "replay " + dir.Path("calls");
        std::vector<nlohmann::json> const each = Each(command);
        ASSERT_EQ(each.size(), calls.size());
        std::map<std::string, int> counts;
        for (std::size_t i = 0; i < calls.size(); ++i) {
            std::string const answer = AnswerOf(rules, calls[i]);
            ++counts[answer == "none" ? answer : answer.substr(answer.find(' ') + 1)];
            ASSERT_EQ(AnswerOf(each[i]), answer) << calls[i] << text;
            bool const isTyped = calls[i].contains("from_type") || calls[i].contains("to_type");
            ASSERT_EQ(isTyped ? answer : AnswerInC(text, calls[i]), answer) << calls[i] << text;
        }
        for (std::size_t i = 0; i < 8; ++i)
            ASSERT_EQ(AnswerOf(Json(DecideCommand(each[i]))), AnswerOf(each[i])) << calls[i];
        nlohmann::json const report = Json(command + " --html " + dir.Path("page"));
        EXPECT_EQ(report["recorded"], counts["recorded"]);
        EXPECT_EQ(report["forbidden"], counts["forbidden"]);
        EXPECT_EQ(report["not_recorded"]["calls"], counts["none"]);
        EXPECT_EQ(NumberIn(dir.Read("page"), "id=\"forbidden\""), counts["forbidden"]);
    }
}

TEST_F(ReplayCommand, ComparesWithOtherRulesByWhatBecomesOfTheCall) {
    std::string const other = Other("archive:/sales", "archive:/vault");
    Other(",!41", "");
    std::string rules = dir.Read("other/telephony/callrecordingdb");
    rules.replace(rules.find("archive:/sales"), 14, "archive:/vault");
    rules.replace(rules.find("recording_duration=1800"), 23, "recording_duration=");
    for (std::size_t at = 0; (at = rules.find("callrecordingrule_id=", at)) != std::string::npos;)
        rules.insert(at += 21, "7"); // Other identifiers are no difference.
    dir.Write("other/telephony/callrecordingdb", rules);
    auto const outcome = [](nlohmann::json const& rule) {
        return rule.is_null() ? "none"
                              : rule["record_to"].dump() + rule["recording_duration"].dump() +
                                    rule["call_recording_type"].dump();
    };
    std::vector<nlohmann::json> const here = Each(shipped);
    std::vector<nlohmann::json> const there = Each(shipped + " --config-dir " + dir.Path("other"));
    std::map<std::string, std::uint64_t> expected;
    std::map<std::string, std::uint64_t> groups;
    for (std::size_t i = 0; i < here.size(); ++i)
        if (outcome(here[i]["rule"]) != outcome(there[i]["rule"]))
            ++expected[outcome(here[i]["rule"]) + outcome(there[i]["rule"])];
    nlohmann::json const differences = Json(shipped + " --against " + other)["differences"];
    for (nlohmann::json const& group : differences["groups"])
        groups[outcome(group["here"]) + outcome(group["there"])] += std::uint64_t{group["calls"]};
    EXPECT_EQ(groups, expected);
    EXPECT_EQ(groups.size(), 3U);
    EXPECT_EQ(differences["calls"], 6);
    EXPECT_EQ(Json(shipped + " --against " +
                   dir.Path("telephony/callrecordingdb"))["differences"]["calls"],
              0);
}

TEST_F(ReplayCommand, TellsWhatItCountedUntilItWasInterrupted) {
    Outcome const outcome =
        Run("replay - --json", "{ echo from,to; yes 1,112 | head -200000; sleep 2; } | timeout "
                               "--foreground --preserve-status -s INT 1 ");
    EXPECT_EQ(outcome.code, 130) << outcome.err;
    nlohmann::json const report = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(report["interrupted"], true);
    EXPECT_GT(report["calls"], 100000);
    EXPECT_EQ(report["rules"][0]["calls"], report["calls"]);
}

/// However files are cut into parts, and parts merged with others first, the report is the one of a
/// run over all of them, and so is that of several threads.
TEST_F(ReplayCommand, AddsPartsToTheReportOfOneRun) {
    setenv("SOURCE_DATE_EPOCH", "1795600000", 1); // When the pages are made.
    std::mt19937 random(11);
    RandomCalls calls(17);
    std::string const against = " --against " + Other("archive:/sales", "never:");
    for (int round = 0; round < 12; ++round) {
        dir.WriteRules(calls.Rules());
        std::vector<std::string> paths;
        for (std::size_t file = 1 + random() % 9; file > 0; --file) {
            std::string content;
            for (std::size_t count = random() % 1000; count > 0; --count) {
                nlohmann::json call = calls.Call();
                call["time"] = TimeText(
                    static_cast<CallTime>(1790000000 + random() % 1000 * 3600 +
                                          (random() % 50 == 0 ? random() % 4000000000 : 0)));
                content += content.empty()      ? call.dump() + "\n"
                           : random() % 40 == 0 ? std::string("broken \xFF\n")
                           : random() % 40 == 0 ? "{\"from\":\"1\",\"to\":2,\"time\":\"x\"}\n"
                                                : call.dump() + "\n";
            }
            paths.push_back(dir.Path("calls" + std::to_string(paths.size())));
            dir.Write("calls" + std::to_string(paths.size() - 1), content);
        }
        std::string all, parts, group;
        std::size_t made = 0;
        for (std::size_t i = 0; i < paths.size(); ++i) {
            all += " " + paths[i];
            group += " " + paths[i];
            if (i + 1 < paths.size() && random() % 2 == 0)
                continue;
            std::string const part = dir.Path("part" + std::to_string(made++));
            ASSERT_EQ(Run("replay --partial" + group + against + " >" + part).code, 0);
            group = "";
            parts += " " + part;
            if (random() % 3 == 0) { // Those so far become one.
                ASSERT_EQ(Run("replay --partial --merge" + parts + " >" + dir.Path("sum")).code, 0);
                std::filesystem::rename(dir.Path("sum"), part);
                parts = " " + part;
            }
        }
        for (std::string const format : {"", " --json"}) {
            std::string const page = " --html " + dir.Path("page");
            Outcome const one = Run("replay --jobs 1" + format + against + page + all);
            std::string const onePage = dir.Read("page");
            Outcome const merged = Run("replay" + format + page + " --merge" + parts);
            EXPECT_EQ(merged.out, one.out);
            EXPECT_EQ(dir.Read("page"), onePage);
            EXPECT_EQ(Run("replay --jobs 3" + format + against + page + all).out, one.out);
            EXPECT_EQ(dir.Read("page"), onePage);
        }
    }
    unsetenv("SOURCE_DATE_EPOCH");
}

/// A month with edits: each call is decided by the rules that were in the file at its time, in one
/// run and in parts; and by those of one time. Rules are told with the time in which they were in
/// force, also in states without calls, which lie between the calls of the parts.
TEST_F(ReplayCommand, DecidesByTheRulesOfTheTime) {
    setenv("SOURCE_DATE_EPOCH", "1795600000", 1);
    std::mt19937 random(23);
    RandomCalls calls(29);
    std::vector<std::vector<std::string>> states; // By identifiers: which edit made the rule.
    std::vector<std::string> texts;
    std::map<std::pair<std::size_t, std::string>, std::string> rules;
    for (std::size_t edit = 0; edit <= 6; ++edit) {
        states.push_back(edit == 0   ? std::vector<std::string>(12)
                         : edit == 5 ? states[1]
                                     : states.back());
        texts.emplace_back();
        for (std::size_t id = 0; id < 12; ++id) {
            std::string& madeBy = states.back()[id];
            if (edit != 5 && random() % 3 == 0)
                madeBy = std::to_string(edit);
            texts.back() += rules.try_emplace({id, madeBy}, calls.Rule(id, madeBy)).first->second;
        }
        std::optional<HistoryWriter> writer;
        if (edit != 0 && edit != 4) // From outside, and found by the next edit.
            writer.emplace(dir.Path("telephony/callrecordingdb"))
                .Begin({"ann", "edit", "", "", 0}, dir.ReadRules(), texts.back());
        dir.WriteRules(texts.back());
        if (writer)
            writer->Finish();
    }
    constexpr std::int64_t kStart = 1790000000, kDay = 86400;
    Database(dir.Path("telephony/callrecordingdb.history"), Database::Access::Write)
        .Run("UPDATE edits SET seconds = " + std::to_string(kStart) + " + number * " +
             std::to_string(5 * kDay));
    std::string file, other, answers;
    std::map<std::string, int> counts, asOf, outcomes{{"not_told", 1}};
    for (int i = 0; i < 600; ++i) {
        nlohmann::json call = calls.Call();
        std::int64_t const time = kStart + static_cast<std::int64_t>(random() % (30 * kDay));
        auto const era = static_cast<std::size_t>((time - kStart) / (5 * kDay));
        if (era == 2 || era == 3)
            continue;
        call["time"] = TimeText(time);
        std::size_t const said = random() % 4;
        bool const was = random() % 2 == 0;
        call["id"] = "i" + std::to_string(i);
        call["recorded"] = was;
        if (said < 3)
            answers += AnswerLine(call["id"], said);
        (era < 2 ? file : other) += call.dump() + "\n";
        std::string const decided =
            era == 0 ? "before" : Word(AnswerOf(RuleSet(RulesOf(texts[era], "")), call));
        ++counts[decided];
        ++outcomes[era == 0 && said >= 2
                       ? "undecided"
                       : OutcomeWord(said < 2 ? said == 1 : decided == "recorded", was)];
        ++asOf[Word(AnswerOf(RuleSet(RulesOf(texts[3], "")), call))];
    }
    dir.Write("a", file + "{\"from\":1,\"to\":2,\"id\":3}\n");
    dir.Write("b", other);
    dir.Write("answers", answers);
    std::string const known = " --id-column id --answers " + dir.Path("answers") + " ";
    std::string const both = known + dir.Path("a") + " " + dir.Path("b");
    auto const expect = [](nlohmann::json const& report, std::map<std::string, int>& expected) {
        EXPECT_EQ(report["recorded"], expected["recorded"]);
        EXPECT_EQ(report["forbidden"], expected["forbidden"]);
        EXPECT_EQ(report["not_recorded"]["calls"], expected["none"]);
        int all = 0;
        for (nlohmann::json const& rule : report["rules"])
            all += int{rule["calls"]};
        EXPECT_EQ(all, expected["recorded"] + expected["forbidden"]);
    };
    nlohmann::json const report = Json("replay --as-of history " + both);
    expect(report, counts);
    EXPECT_EQ(report["without_rules"]["before_history"]["calls"], counts["before"]);
    EXPECT_EQ(report["without_rules"]["without_time"]["calls"], 1);
    EXPECT_EQ(report["edits"].size(), 5U);
    for (auto const& [outcome, count] : outcomes)
        EXPECT_EQ(report["reconciliation"][outcome], count) << outcome;
    std::map<std::pair<std::size_t, std::string>, nlohmann::json> spans;
    for (std::size_t era = 1; era < 6; ++era)
        for (std::size_t id = 0; id < 12; ++id) {
            auto const at = [](std::size_t edit) {
                return TimeText(kStart + static_cast<CallTime>(edit) * 5 * kDay);
            };
            nlohmann::json& span = spans[{id, states[era][id]}];
            if (span.is_null())
                span = {{"since", at(era)}, {"breaks", nlohmann::json::array()}};
            else if (span["until"] != at(era))
                span["breaks"].push_back({{"since", span["until"]}, {"until", at(era)}});
            span["until"] = at(era + 1);
            span["isThere"] = states[5][id] == states[era][id];
        }
    EXPECT_EQ(report["rules"].size(), spans.size());
    for (nlohmann::json const& rule : report["rules"])
        EXPECT_EQ(nlohmann::json({{"since", rule["since"]},
                                  {"until", rule["until"]},
                                  {"breaks", rule["breaks"]},
                                  {"isThere", !rule["position"].is_null()}}),
                  (spans[{rule["callrecordingrule_id"], rule["description"]}]))
            << rule;
    for (std::string const part : {"a", "b"})
        ASSERT_EQ(Run("replay --as-of history --partial" + known + dir.Path(part) + " >" +
                      dir.Path("part-" + part))
                      .code,
                  0);
    for (std::string const format : {"", " --json"}) {
        std::string const page = format + " --html " + dir.Path("page");
        std::string const one = Run("replay --as-of history " + both + page).out;
        std::string const onePage = dir.Read("page");
        EXPECT_EQ(Run("replay --merge " + dir.Path("part-a") + " " + dir.Path("part-b") + page).out,
                  one);
        EXPECT_EQ(dir.Read("page"), onePage);
    }
    unsetenv("SOURCE_DATE_EPOCH");
    asOf["none"] +=
        Word(AnswerOf(RuleSet(RulesOf(texts[3], "")), {{"from", "1"}, {"to", "2"}})) == "none";
    expect(Json("replay --as-of '" + TimeText(kStart + 16 * kDay) + "' " + both), asOf);
}

/// Four counts, however it is known which calls were recorded: also by metadata, if the recording
/// that it names is there.
TEST_F(ReplayCommand, ComparesWithWhatWasRecorded) {
    std::mt19937 random(31);
    RandomCalls calls(37);
    std::string const text = calls.Rules();
    dir.WriteRules(text);
    RuleSet const rules(RulesOf(text, "rules"));
    std::string file, answers;
    std::map<std::string, std::uint64_t> byColumn, byFolder, byAnswer;
    std::uint64_t lost = 0; // Metadata without a recording.
    dir.Write("recordings/2026/empty-call-0-x.wav", "");
    for (std::size_t i = 0; i < 300; ++i) {
        nlohmann::json call = calls.Call();
        bool const should = Word(AnswerOf(rules, call)) == "recorded";
        std::string const id = "call-" + std::to_string(i) + "@host";
        char const* const values[] = {"", "0", "No", "false", "1", "yes", "a.wav", "/x/y.wav"};
        std::size_t const value = random() % 8;
        bool const isThere = i != 0 && random() % 2 == 0;
        call["id"] = id;
        call["Recording_File"] = values[value];
        std::string const encoded = "call-" + std::to_string(i) + "%40host-0a";
        if (i % 3 == 0) {
            dir.Write("recordings/metadata/rtpengine-meta-" + encoded + ".txt",
                      "/gone/pcaps/" + encoded + ".pcap\n\n\nSDP mode: offer\n");
            dir.Write("recordings/pcaps/" + encoded + ".pcap", std::string(isThere ? 25 : 24, 'x'));
            lost += isThere ? 0 : 1;
        } else if (isThere)
            dir.Write("recordings/2026/" + (i % 2 == 0 ? encoded : id + "-0a") + ".wav", "x");
        std::size_t const said = random() % 4;
        if (said < 3)
            answers += AnswerLine(id, said);
        ++byColumn[OutcomeWord(should, value >= 4)];
        ++byFolder[OutcomeWord(should, isThere)];
        ++byAnswer[OutcomeWord(said < 2 ? said == 1 : should, isThere)];
        file += call.dump() + "\n";
    }
    dir.Write("calls", file);
    dir.Write("answers", answers);
    std::string const folder = " --recordings " + dir.Path("recordings") + " --id-column id";
    for (auto const& [options, expected] :
         {std::pair(std::string(), byColumn),
          std::pair(std::string(" --recorded-column recordingfile"), byColumn),
          std::pair(folder, byFolder),
          std::pair(folder + " --answers " + dir.Path("answers"), byAnswer)}) {
        nlohmann::json const found =
            Json("replay " + dir.Path("calls") + options)["reconciliation"];
        EXPECT_EQ(found["lost"]["calls"], options.rfind(folder, 0) == 0 ? lost : 0);
        for (auto const& [outcome, count] : expected) {
            EXPECT_EQ(found[outcome], count) << outcome << options;
            std::uint64_t sum = 0;
            for (nlohmann::json const& example : found["examples"][outcome])
                sum += std::uint64_t{example["calls"]};
            EXPECT_EQ(sum, count) << outcome << options;
        }
    }
    EXPECT_EQ(Run("replay " + dir.Path("calls") + folder + " --strict-recordings").code, 1);
    Run("replay --partial " + dir.Path("calls") + folder + " >" + dir.Path("part"));
    EXPECT_EQ(Json("replay --merge " + dir.Path("part")),
              Json("replay " + dir.Path("calls") + folder));
}

TEST_F(ReplayCommand, RefusesPartsThatDoNotBelongTogether) {
    std::string const part = dir.Path("part"), other = dir.Path("other-part");
    Run(shipped + " --partial >" + part);
    Run(shipped + " --partial --config-dir " + dir.Path("other") + " >" + other,
        "mkdir -p " + dir.Path("other/telephony") + ";");
    for (auto const& [parts, reason] : std::map<std::string, std::string>{
             {part + " " + other, "other-part: counted by the rules of"},
             {EXAMPLES_PATH "/calls/november.csv", "november.csv:1: no state that"},
             {"/dev/null", "/dev/null: there is no state"}}) {
        Outcome const outcome = Run("replay --merge " + parts);
        EXPECT_EQ(outcome.code, 3) << parts;
        EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
    }
}

/// Without waiting for more: it is killed while it does.
TEST_F(ReplayCommand, PrintsEachCallAsSoonAsItIsRead) {
    Outcome const outcome =
        Run("replay - --each", "{ printf 'from,to\\n1,112\\n2\\n'; sleep 2; } | "
                               "timeout -s KILL 1 ");
    EXPECT_EQ(outcome.out, "\\N\t1\t112\t0\tarchive:/emergency\n\\N\t\\N\t\\N\t\\N\tunreadable: "
                           "it has 1 fields, and to-column is number 2\n");
}

TEST_F(ReplayCommand, WritesAPageThatSaysTheSameAndNothingOfItsOwn) {
    Other("description=Hotline", "description=<script>alert(1)</script>\xE2\x80\xAE\xFF");
    dir.Write("<b>.csv", "from,to,time\n\"<img src=x onerror=alert(1)>\",2,2026-11-04\n\"\n");
    std::string const command =
        shipped + " '" + dir.Path("<b>.csv") + "' --config-dir " + dir.Path("other") +
        " --against " + dir.Path("telephony/callrecordingdb") + " --html " + dir.Path("page.html");
    nlohmann::json const report = Json(command);
    std::string const page = dir.Read("page.html");
    for (nlohmann::json const& rule : report["rules"])
        EXPECT_EQ(NumberIn(page, "id=\"rule-" + rule["position"].dump() + "\""), rule["calls"]);
    EXPECT_EQ(NumberIn(page, "id=\"rule-none\""), report["not_recorded"]["calls"]);
    EXPECT_EQ(NumberIn(page, "id=\"calls\""), report["calls"]);
    EXPECT_EQ(NumberIn(page, "id=\"recorded\""), report["recorded"]);
    EXPECT_EQ(NumberIn(page, "id=\"unreadable\""), 1U);
    std::size_t at = page.find("id=\"digits\"");
    for (nlohmann::json const& group : report["not_recorded"]["by_leading_digits"]) {
        at = page.find("<data ", at + 1);
        EXPECT_EQ(NumberIn(page.substr(at), ""), group["calls"]);
    }
    std::uint64_t drawn = 0; // Each call has a time, and so a place in the chart.
    for (std::size_t end = 0; (end = page.find(" calls</title>", end + 1)) != std::string::npos;)
        drawn += std::stoull(page.substr(page.rfind(' ', end - 1) + 1));
    EXPECT_EQ(drawn, report["calls"]);
    for (char const* const part :
         {"&lt;script&gt;alert(1)&lt;/script&gt;\xEF\xBF\xBD\xEF\xBF\xBD", "&lt;b&gt;.csv:2",
          "&lt;img src=x", "it is disabled", "callrecordingctl 1.", "gateway.csv</td>"})
        EXPECT_NE(page.find(part), std::string::npos) << part;
    std::vector<nlohmann::json> files = report["files"];
    files.push_back(report["rule_file"]);
    for (nlohmann::json const& file : files) {
        std::string const digest = file["sha256"], path = file["path"];
        EXPECT_NE(page.find(digest), std::string::npos) << path;
        EXPECT_EQ(
            std::system(("echo '" + digest + "  " + path + "' | sha256sum -c --quiet").c_str()), 0);
    }
    for (char const* const bad : {"<script", "<img", "http", "\xE2\x80\xAE", "\xFF"})
        EXPECT_EQ(page.find(bad), std::string::npos) << bad;
}

} // namespace
} // namespace CallRecordingUtils
