// Reads rules from JSON, with the line of every member.

#include <optional>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "administration/exchange/RuleRecord.h"

namespace CallRecordingUtils {
namespace {

using nlohmann::json;

/// The members of a rule and the values that they are; those of an empty name follow from others.
std::map<std::string, std::string> const kMembers{{"callrecordingrule_id", "id"},
                                                  {"caller_pattern", "from_stored"},
                                                  {"caller_pattern_entry", "from"},
                                                  {"caller_call_type", "from_type"},
                                                  {"caller_call_type_name", "from_type_name"},
                                                  {"called_pattern", "to_stored"},
                                                  {"called_pattern_entry", "to"},
                                                  {"called_call_type", "to_type"},
                                                  {"called_call_type_name", "to_type_name"},
                                                  {"call_recording_type", "recording_type"},
                                                  {"record_to", "record_to"},
                                                  {"recording_duration", "duration"},
                                                  {"description", "description"},
                                                  {"recording_rule_state", "state"},
                                                  {"recording_rule_state_name", "state_name"},
                                                  {"enabled", "enabled"},
                                                  {"position", ""},
                                                  {"caller_pattern_malformed", ""},
                                                  {"called_pattern_malformed", ""},
                                                  {"file_state", ""}};

/// Walks over text and counts the lines that it has come to.
class CountingIterator {
  public:
    // NOLINTBEGIN(readability-identifier-naming): the names that an iterator has.
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

/// Takes an array of objects, or one object, of plain values.
class RuleSax : public nlohmann::json_sax<json> {
  public:
    RuleSax(RuleRecords& result, std::size_t const& line) : result_(result), line_(line) {}

    bool start_array(std::size_t) override { return ++arrays_ == 1 && !isInRule_ ? true : Stray(); }
    bool end_array() override { return true; }
    bool start_object(std::size_t) override {
        if (isInRule_)
            return Stray();
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
        if (kMembers.count(name) == 0)
            result_.faults.push_back({line_, fmt::format("\"{}\" is no member of a rule", name)});
        return true;
    }
    bool null() override { return isInRule_ ? true : Stray(); }
    bool boolean(bool value) override { return Take(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return Take(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return Take(std::to_string(value)); }
    bool number_float(number_float_t, string_t const& text) override { return Take(text); }
    bool string(string_t& value) override { return Take(value); }
    bool binary(binary_t&) override { return Stray(); }

    bool parse_error(std::size_t, std::string const&, json::exception const& error) override {
        std::string const reason = error.what();
        std::size_t const at = reason.find("column ");
        result_.faults.push_back(
            {line_, "no JSON: " + (at != std::string::npos ? reason.substr(at) : reason)});
        return false;
    }

  private:
    bool Take(std::string const& text) {
        if (!isInRule_)
            return Stray();
        auto const member = kMembers.find(key_);
        if (member != kMembers.end() && !member->second.empty())
            result_.records.back().values[member->second] = {text, keyLine_, key_};
        return true;
    }

    bool Stray() {
        result_.faults.push_back(
            {line_, "expected an array of rules as \"list --json\" prints it: objects whose "
                    "members are texts, numbers, true or false"});
        return false;
    }

    RuleRecords& result_;
    std::size_t const& line_;
    std::string key_;
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

} // namespace CallRecordingUtils
