// Walks an automaton from its start: every way to a state that accepts is a pattern.

#include "analysis/PatternWriter.h"

#include <algorithm>
#include <utility>

namespace CallRecordingUtils {
namespace {

class Writer {
  public:
    Writer(TextLanguage const& language, bool isWholeSip, std::size_t most)
        : language_(language), isWholeSip_(isWholeSip), most_(most),
          isOpen_(language.next.size(), false) {}

    /// Returns false when the form of patterns does not do, or they are too many.
    bool Run() { return Walk(0); }

    std::vector<std::string> patterns;

  private:
    using Symbols = std::vector<Symbol>;

    bool Walk(std::uint32_t state) {
        if (language_.IsNone(state))
            return true;
        if (language_.IsEvery(state))
            return Add(prefix_ + Everything());
        if (isOpen_[state]) // A loop: only "*" could say it, and it would say too much.
            return false;
        if (language_.isAccepting[state] && (prefix_.empty() || !Add(prefix_)))
            return false;
        isOpen_[state] = true;
        bool isWritten = true;
        for (auto const& [to, symbols] : Steps(state))
            isWritten = isWritten && WalkStep(to, symbols);
        isOpen_[state] = false;
        return isWritten;
    }

    bool WalkStep(std::uint32_t to, Symbols const& symbols) {
        if (language_.IsNone(to))
            return true;
        auto const step = StepOf(symbols);
        if (!step || (isWholeSip_ && hasAt_ && LeavesOutAt(*step)))
            return false;
        std::size_t const size = prefix_.size();
        bool const hadAt = hasAt_;
        bool const hadColon = hasColon_;
        hasAt_ = hasAt_ || *step == "@";
        hasColon_ = hasColon_ || (hadAt && *step == ":");
        prefix_ += *step;
        bool const isWritten = Walk(to);
        prefix_.resize(size);
        hasAt_ = hadAt;
        hasColon_ = hadColon;
        return isWritten;
    }

    /// Whether step is a set with an "@". The last "@" divides an address, so its host has none.
    static bool LeavesOutAt(std::string const& step) {
        return step.size() > 1 && step.find('@') != std::string::npos;
    }

    /// What can follow, whatever it is. The text of a SIP address needs its "@" and ":".
    std::string Everything() const {
        return !isWholeSip_ || hasColon_ ? "*" : hasAt_ ? "*:*" : "*@*:*";
    }

    bool Add(std::string const& pattern) {
        patterns.push_back(pattern);
        return patterns.size() <= most_;
    }

    /// The symbols that lead to each state; in whole SIP addresses the structure apart.
    std::vector<std::pair<std::uint32_t, Symbols>> Steps(std::uint32_t state) const {
        std::vector<std::pair<std::uint32_t, Symbols>> steps;
        for (std::size_t i = 0; i < kTextSymbols; ++i) {
            auto const symbol = static_cast<Symbol>(i);
            std::uint32_t const to = language_.next[state][symbol];
            bool const isApart = isWholeSip_ && (symbol == kAt || symbol == kColon);
            auto step = std::find_if(steps.begin(), steps.end(), [&](auto const& known) {
                return known.first == to && !isApart &&
                       !(isWholeSip_ && (known.second[0] == kAt || known.second[0] == kColon));
            });
            if (step == steps.end())
                step = steps.insert(step, {to, {}});
            step->second.push_back(symbol);
        }
        return steps;
    }

    /// One character that is one of symbols. Those that no pattern names are named by leaving out
    /// all others, where they are in it together.
    static std::optional<std::string> StepOf(Symbols const& symbols) {
        auto const has = [&symbols](Symbol symbol) {
            return std::find(symbols.begin(), symbols.end(), symbol) != symbols.end();
        };
        if (has(kBelowDigits) != has(kAboveDigits))
            return std::nullopt;
        if (symbols.size() == kTextSymbols)
            return "?";
        if (!has(kBelowDigits))
            return symbols.size() == 1 ? std::string(1, ByteOf(symbols[0]))
                                       : '[' + Items(symbols, "") + ']';
        Symbols others;
        for (std::size_t i = 0; i < kTextSymbols; ++i)
            if (!has(static_cast<Symbol>(i)))
                others.push_back(static_cast<Symbol>(i));
        return "[?," + Items(others, "!") + ']';
    }

    /// Digits and letters that follow each other are a range.
    static std::string Items(Symbols const& symbols, std::string const& mark) {
        std::string items;
        for (std::size_t i = 0; i < symbols.size();) {
            std::size_t end = i + 1;
            while (end < symbols.size() && symbols[end] == symbols[end - 1] + 1 &&
                   KindOf(ByteOf(symbols[end])) == KindOf(ByteOf(symbols[i])) &&
                   KindOf(ByteOf(symbols[i])) != SymbolKind::Other)
                ++end;
            bool const isRange = end - i > 2 && mark.empty();
            end = isRange ? end : i + 1;
            items += (items.empty() ? "" : ",") + mark + ByteOf(symbols[i]);
            if (isRange)
                items += std::string("-") + ByteOf(symbols[end - 1]);
            i = end;
        }
        return items;
    }

    TextLanguage const& language_;
    bool const isWholeSip_;
    std::size_t const most_;
    std::vector<bool> isOpen_;
    std::string prefix_;
    bool hasAt_ = false;
    bool hasColon_ = false; // Behind an "@".
};

/// A part of a language, and how rule sides say it.
struct LanguagePart {
    TextLanguage const& texts;
    CallType type;
    std::optional<CallType> only;
};

std::vector<LanguagePart> PartsOf(SideLanguage const& language, CallKind calls) {
    CallType const sipType = language.isSipOfUser ? CALL_TYPE_ANY : CALL_TYPE_SIP;
    auto const sipOnly = language.isSipOfUser ? std::optional(CALL_TYPE_SIP) : std::nullopt;
    bool const isSameUser = language.isSipOfUser && language.number == language.sip;
    if (calls == CallKind::Parties) {
        if (isSameUser)
            return {{language.number, CALL_TYPE_ANY, std::nullopt}};
        return {{language.number, CALL_TYPE_ANY, CALL_TYPE_NUMBER},
                {language.sip, sipType, sipOnly}};
    }
    if (isSameUser && language.number == language.number2)
        return {{language.number, CALL_TYPE_ANY, std::nullopt}};
    return {{language.number, CALL_TYPE_NUMBER, std::nullopt},
            {language.sip, sipType, sipOnly},
            {language.number2, CALL_TYPE_NUMBER2, std::nullopt}};
}

} // namespace

std::optional<std::vector<AddressPattern>> WritePatterns(SideLanguage const& language,
                                                         CallKind calls, std::size_t most) {
    std::vector<AddressPattern> patterns;
    for (LanguagePart const& part : PartsOf(language, calls)) {
        Writer writer(part.texts, part.type == CALL_TYPE_SIP, most - patterns.size());
        if (!writer.Run())
            return std::nullopt;
        for (std::string const& pattern : writer.patterns)
            patterns.push_back({pattern, part.type, part.only});
    }
    return patterns;
}

} // namespace CallRecordingUtils
