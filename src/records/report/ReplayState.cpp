// Writes and reads states. Texts may hold any bytes, so they go through ToUtf8 and BytesOf.

#include "records/report/ReplayState.h"

#include <fmt/format.h>

#include "common/Error.h"
#include "text/Input.h"
#include "json/Bytes.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

/// Changes with everything that a state holds: one version does not read the states of another.
constexpr int kVersion = 1;

// Each Put has its Get, which takes what Put returns.

template <typename Number>
json PutOptional(std::optional<Number> const& number) {
    return number ? json(*number) : json();
}

std::optional<CallTime> GetTime(json const& state) {
    return state.is_null() ? std::nullopt : std::optional(state.get<CallTime>());
}

std::string GetText(json const& state) {
    return BytesOf(state.get<std::string>());
}

json Put(Tally const& tally) {
    if (tally.calls == 0)
        return nullptr;
    Example const& example = *tally.example;
    return {tally.calls,
            PutOptional(tally.first),
            PutOptional(tally.last),
            ToUtf8(example.from),
            ToUtf8(example.to),
            PutOptional(example.time),
            ToUtf8(example.file),
            example.line,
            example.place};
}

Tally GetTally(json const& state) {
    Tally tally;
    if (state.is_null())
        return tally;
    tally.calls = state.at(0);
    tally.first = GetTime(state.at(1));
    tally.last = GetTime(state.at(2));
    tally.example = {GetText(state.at(3)), GetText(state.at(4)), GetTime(state.at(5)),
                     GetText(state.at(6)), state.at(7),          state.at(8)};
    return tally;
}

json Put(ReplayReport::Problem const& problem) {
    return {ToUtf8(problem.file), problem.line, ToUtf8(problem.reason), problem.place};
}

ReplayReport::Problem GetProblem(json const& state) {
    return {GetText(state.at(0)), state.at(1), GetText(state.at(2)), state.at(3)};
}

json Put(LeadingDigits const& digits) {
    json state = json::object();
    for (auto const& [prefix, tally] : digits.Counts())
        state[prefix] = Put(tally);
    return state;
}

LeadingDigits GetDigits(json const& state) {
    LeadingDigits digits;
    for (auto const& [prefix, tally] : state.items())
        digits.Add(prefix, GetTally(tally));
    return digits;
}

json Put(Timeline const& timeline) {
    json stretches = json::array();
    for (auto const& [begin, counts] : timeline.Stretches())
        stretches.push_back({begin, json(counts)});
    return {{"width", timeline.Width()}, {"outside", timeline.Outside()}, {"stretches", stretches}};
}

Timeline GetTimeline(json const& state) {
    Timeline timeline;
    timeline.WidenToWidth(state.at("width"));
    timeline.AddOutside(state.at("outside"));
    for (json const& stretch : state.at("stretches"))
        timeline.AddStretch(stretch.at(0), stretch.at(1).get<Timeline::Counts>());
    return timeline;
}

json PutTexts(std::vector<std::string> const& texts) {
    json state = json::array();
    for (std::string const& text : texts)
        state.push_back(ToUtf8(text));
    return state;
}

json Put(CallReading const& reading) {
    return {reading.format,
            reading.title,
            reading.isGuessed,
            reading.isDocumented,
            PutTexts({reading.columns.begin(), reading.columns.end()}),
            PutTexts(reading.conditions),
            ToUtf8(reading.distinct),
            reading.leftOut,
            PutTexts(reading.notes)};
}

std::vector<std::string> GetTexts(json const& state) {
    std::vector<std::string> texts;
    for (json const& text : state)
        texts.push_back(GetText(text));
    return texts;
}

CallReading GetReading(json const& state) {
    CallReading reading;
    reading.format = state.at(0);
    reading.title = state.at(1);
    reading.isGuessed = state.at(2);
    reading.isDocumented = state.at(3);
    for (std::size_t i = 0; i < kColumnCount; ++i)
        reading.columns[i] = GetText(state.at(4).at(i));
    reading.conditions = GetTexts(state.at(5));
    reading.distinct = GetText(state.at(6));
    reading.leftOut = state.at(7);
    reading.notes = GetTexts(state.at(8));
    return reading;
}

json PutFiles(std::vector<ReplayReport::File> const& files) {
    json state = json::array();
    for (ReplayReport::File const& file : files)
        state.push_back({ToUtf8(file.path), file.calls, file.unreadable, Put(file.reading)});
    return state;
}

std::vector<ReplayReport::File> GetFiles(json const& state) {
    std::vector<ReplayReport::File> files;
    for (json const& file : state)
        files.push_back({GetText(file.at(0)), file.at(1), file.at(2), GetReading(file.at(3))});
    return files;
}

json Put(ReplayReport const& report) {
    json rules = json::array();
    for (std::size_t i = 0; i < report.byRule.size(); ++i)
        if (report.byRule[i].calls > 0)
            rules.push_back({i, Put(report.byRule[i])});
    json problems = json::array();
    for (ReplayReport::Problem const& problem : report.problems)
        problems.push_back(Put(problem));
    json differences = json::array();
    for (auto const& [pair, tally] : report.differences)
        differences.push_back({pair, Put(tally)});
    return {
        {"files", PutFiles(report.files)},
        {"all", Put(report.all)},
        {"rule_count", report.byRule.size()},
        {"rules", rules},
        {"no_rule", Put(report.noRule)},
        {"forbidden", Put(report.forbidden)},
        {"leading_digits", Put(report.noRuleByDigits)},
        {"timeline", Put(report.timeline)},
        {"asked", {report.asParties, report.asTyped, report.asBoth}},
        {"cleaned", report.cleaned},
        {"unreadable", report.unreadable},
        {"problems", problems},
        {"without_time", report.withoutTime},
        {"first_without_time", report.firstWithoutTime ? Put(*report.firstWithoutTime) : json()},
        {"different", Put(report.different)},
        {"differences", differences},
        {"more_differences", Put(report.moreDifferences)},
        {"interrupted", report.isInterrupted}};
}

ReplayReport GetReport(json const& state) {
    ReplayReport report;
    report.files = GetFiles(state.at("files"));
    report.all = GetTally(state.at("all"));
    report.byRule.resize(state.at("rule_count"));
    for (json const& rule : state.at("rules"))
        report.byRule.at(rule.at(0)) = GetTally(rule.at(1));
    report.noRule = GetTally(state.at("no_rule"));
    report.forbidden = GetTally(state.at("forbidden"));
    report.noRuleByDigits = GetDigits(state.at("leading_digits"));
    report.timeline = GetTimeline(state.at("timeline"));
    json const& asked = state.at("asked");
    report.asParties = asked.at(0);
    report.asTyped = asked.at(1);
    report.asBoth = asked.at(2);
    report.cleaned = state.at("cleaned");
    report.unreadable = state.at("unreadable");
    for (json const& problem : state.at("problems"))
        report.problems.push_back(GetProblem(problem));
    report.withoutTime = state.at("without_time");
    if (json const& first = state.at("first_without_time"); !first.is_null())
        report.firstWithoutTime = GetProblem(first);
    report.different = GetTally(state.at("different"));
    for (json const& difference : state.at("differences"))
        report.differences[difference.at(0)] = GetTally(difference.at(1));
    report.moreDifferences = GetTally(state.at("more_differences"));
    report.isInterrupted = state.at("interrupted");
    return report;
}

json Put(Rule const& rule) {
    return {rule.callrecordingrule_id,   ToUtf8(rule.caller_pattern),     rule.caller_call_type,
            ToUtf8(rule.called_pattern), rule.called_call_type,           rule.call_recording_type,
            ToUtf8(rule.record_to),      ToUtf8(rule.recording_duration), ToUtf8(rule.description),
            rule.recording_rule_state};
}

Rule GetRule(json const& state) {
    Rule rule;
    rule.callrecordingrule_id = state.at(0);
    rule.caller_pattern = GetText(state.at(1));
    rule.caller_call_type = state.at(2);
    rule.called_pattern = GetText(state.at(3));
    rule.called_call_type = state.at(4);
    rule.call_recording_type = state.at(5);
    rule.record_to = GetText(state.at(6));
    rule.recording_duration = GetText(state.at(7));
    rule.description = GetText(state.at(8));
    rule.recording_rule_state = state.at(9);
    return rule;
}

json Put(RuleFileFacts const& file) {
    json rules = json::array();
    for (Rule const& rule : file.rules)
        rules.push_back(Put(rule));
    return {{"path", ToUtf8(file.path)}, {"sha256", file.digest}, {"rules", rules}};
}

RuleFileFacts GetRuleFile(json const& state) {
    RuleFileFacts file{GetText(state.at("path")), state.at("sha256"), {}};
    for (json const& rule : state.at("rules"))
        file.rules.push_back(GetRule(rule));
    return file;
}

/// Whether all decisions are about rules that there are.
bool IsWhole(ReplayState const& state) {
    std::size_t const rules = state.facts.here.rules.size();
    std::size_t const others = state.facts.there ? state.facts.there->rules.size() : 0;
    auto const isAbout = [](Decision decision, std::size_t count) {
        return decision == kNoRule || decision < count;
    };
    for (auto const& entry : state.report.timeline.Totals())
        if (!isAbout(entry.first, rules))
            return false;
    for (auto const& entry : state.report.differences)
        if (!isAbout(entry.first.first, rules) || !isAbout(entry.first.second, others))
            return false;
    return state.report.byRule.size() == rules;
}

ReplayState GetState(json const& state) {
    if (state.at("callrecording_replay_state") != kVersion)
        throw std::runtime_error("it was written by another version of this program");
    ReplayState read{{GetRuleFile(state.at("rule_file")), std::nullopt},
                     GetReport(state.at("report"))};
    if (json const& there = state.at("against"); !there.is_null())
        read.facts.there = GetRuleFile(there);
    if (!IsWhole(read))
        throw std::runtime_error("it counts calls of rules that it does not have");
    return read;
}

std::string RulesOf(RuleFileFacts const& file) {
    return fmt::format("{} (SHA-256 {})", file.path, file.digest.empty() ? "none" : file.digest);
}

} // namespace

std::string StateLine(ReplayState const& state) {
    json const line{{"callrecording_replay_state", kVersion},
                    {"rule_file", Put(state.facts.here)},
                    {"against", state.facts.there ? Put(*state.facts.there) : json()},
                    {"report", Put(state.report)}};
    return line.dump();
}

std::vector<ReplayState> ReadStates(std::string const& path) {
    Input input(path);
    std::string text;
    constexpr std::size_t kBlock = std::size_t{1} << 16;
    for (std::size_t size = 0, count = 1; count > 0; size += count) {
        text.resize(size + kBlock);
        count = input.Read(text.data() + size, kBlock);
        text.resize(size + count);
    }
    std::vector<ReplayState> states;
    std::size_t number = 0;
    for (std::size_t at = 0, end = 0; at < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        ++number;
        try {
            if (end > at)
                states.push_back(
                    GetState(json::parse(text.begin() + static_cast<std::ptrdiff_t>(at),
                                         text.begin() + static_cast<std::ptrdiff_t>(end))));
        } catch (std::exception const& error) {
            throw Error(Error::Kind::Unreadable,
                        fmt::format("{}:{}: no state that \"replay --partial\" printed: {}", path,
                                    number, error.what()));
        }
    }
    if (states.empty())
        throw Error(Error::Kind::Unreadable, path + ": there is no state of a replay in it");
    return states;
}

void AddState(ReplayState& to, ReplayState&& state, std::string const& name) {
    auto const require = [&name](std::string const& first, std::string const& other) {
        if (first != other)
            throw Error(Error::Kind::Unreadable,
                        fmt::format("{}: counted by the rules of {}, and the parts before it by "
                                    "those of {}",
                                    name, other, first));
    };
    require(RulesOf(to.facts.here), RulesOf(state.facts.here));
    require(to.facts.there ? RulesOf(*to.facts.there) : "no other file to compare with",
            state.facts.there ? RulesOf(*state.facts.there) : "no other file to compare with");
    state.report.MoveBehind(to.report.files.size());
    to.report.Add(state.report);
}

} // namespace CallRecordingUtils
