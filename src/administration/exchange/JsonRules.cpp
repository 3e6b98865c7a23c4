// Reads rules from JSON and keeps the line of every member.

#include <optional>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "administration/exchange/RuleRecord.h"
#include "json/Bytes.h"
#include "json/RuleJson.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

/// Whether member says something about a rule itself. The others follow from these, or are about
/// the file that the rule was in.
bool IsGiven(RuleMember member) {
    return member != RuleMember::Position && member != RuleMember::FileState &&
           member != RuleMember::FileDigest && member != RuleMember::CallerMalformed &&
           member != RuleMember::CalledMalformed;
}

/// Iterates over text and counts lines.
class CountingIterator {
  public:
    // NOLINTBEGIN(readability-identifier-naming): iterators have these names.
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = char const*;
    using reference = char const&;
    // NOLINTEND(readability-identifier-naming)

    CountingIterator(char const* at, std::size_t& line) : at_(at), line_(&line) {}
    reference operator*() const { return *at_; }
    CountingIterator& operator++() {
        *line_ += *at_ == '\n' ? 1 : 0;
        ++at_;
        return *this;
    }
    bool operator==(CountingIterator const& other) const { return at_ == other.at_; }
    bool operator!=(CountingIterator const& other) const { return at_ != other.at_; }

  private:
    char const* at_;
    std::size_t* line_;
};

/// Accepts an array of objects, or one object, whose members are plain values.
class RuleSax : public nlohmann::json_sax<json> {
  public:
    RuleSax(RuleRecords& result, std::size_t const& line) : result_(result), line_(line) {}

    bool start_array(std::size_t) override {
        return ++arrays_ == 1 && !isInRule_ ? true : Unexpected();
    }
    bool end_array() override { return true; }
    bool start_object(std::size_t) override {
        if (isInRule_)
            return Unexpected();
        isInRule_ = true;
        result_.records.emplace_back().line = line_;
        return true;
    }
    bool end_object() override {
        isInRule_ = false;
        return true;
    }
    bool key(string_t& name) override {
        key_ = name;
        keyLine_ = line_;
        member_ = RuleMemberOf(name);
        if (!member_)
            result_.faults.push_back({line_, fmt::format("\"{}\" is no member of a rule", name)});
        return true;
    }
    bool null() override { return isInRule_ ? true : Unexpected(); }
    bool boolean(bool value) override { return Take(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return Take(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return Take(std::to_string(value)); }
    bool number_float(number_float_t, string_t const& text) override { return Take(text); }
    bool string(string_t& value) override { return Take(value); }
    bool binary(binary_t&) override { return Unexpected(); }

    bool parse_error(std::size_t, std::string const&, json::exception const& error) override {
        std::string const reason = error.what();
        std::size_t const at = reason.find("column ");
        result_.faults.push_back(
            {line_, "is not JSON: " + (at != std::string::npos ? reason.substr(at) : reason)});
        return false;
    }

  private:
    bool Take(std::string const& text) {
        if (!isInRule_)
            return Unexpected();
        if (member_ && IsGiven(*member_))
            result_.records.back().values[*member_] = {BytesOf(text), keyLine_, key_};
        return true;
    }

    bool Unexpected() {
        result_.faults.push_back(
            {line_, "expected an array of rules as \"list --json\" prints it: objects whose "
                    "members are texts, numbers, true or false"});
        return false;
    }

    RuleRecords& result_;
    std::size_t const& line_;
    std::string key_;
    std::optional<RuleMember> member_; // With that name.
    std::size_t keyLine_ = 0;
    int arrays_ = 0;
    bool isInRule_ = false;
};

} // namespace

RuleRecords ReadJsonRules(std::string const& text) {
    RuleRecords result;
    std::size_t line = 1;
    RuleSax sax(result, line);
    json::sax_parse(CountingIterator(text.data(), line),
                    CountingIterator(text.data() + text.size(), line), &sax);
    return result;
}

RuleRecord JsonRecordOf(Rule const& rule) {
    RuleRecord record;
    nlohmann::ordered_json const written = ToJson(rule, 0);
    for (auto const& [name, value] : written.items()) {
        RuleMember const member = *RuleMemberOf(name);
        if (IsGiven(member))
            record.values[member] = {value.is_string() ? BytesOf(value.get<std::string>())
                                                       : value.dump()};
    }
    return record;
}

} // namespace CallRecordingUtils
