// The calling sides are divided by the rules that they satisfy; for each division the called sides
// that are left are a set of their own, and calling sides that leave the same one are put together.

#include "analysis/CallPatterns.h"

#include <algorithm>

namespace CallRecordingUtils {
namespace {

constexpr std::size_t kMostRules = 2000;
constexpr std::size_t kMostDivisions = 64;

class Divider {
  public:
    Divider(RuleSpace& space, CallSet const& set, std::size_t most)
        : space_(space), set_(set), most_(most),
          callers_(space.Pool(), space.SidesIn(set.must).caller, SidesOfRules(set.rules)) {}

    CallPatterns Run() {
        CallPatterns const none{false, {}, {}};
        if (set_.rules.size() > kMostRules || !AreReadable())
            return none;
        Allowance const begun = space_.BeginQuestion();
        allowance_ = begun;
        bool const isDone = Divide() && Write();
        space_.EndQuestion(begun, allowance_);
        return isDone ? result_ : none;
    }

  private:
    /// Calling sides that leave the same called sides.
    struct Division {
        std::vector<bool> sets; // Of callers_.
        SideLanguage called;
    };

    std::vector<SideId> SidesOfRules(RuleSpace::RuleIds const& rules) const {
        std::vector<SideId> sides;
        for (RuleSpace::RuleId const rule : rules)
            sides.push_back(space_.SidesIn(rule).caller);
        return sides;
    }

    bool AreReadable() const {
        return space_.IsReadable(set_.must) &&
               std::all_of(
                   set_.rules.begin(), set_.rules.end(),
                   [this](RuleSpace::RuleId rule) { return space_.IsReadable(rule); });
    }

    bool Divide() {
        if (!callers_.Run(allowance_) || callers_.Sets().size() > kMostDivisions)
            return false;
        for (std::size_t i = 0; i < callers_.Sets().size(); ++i) {
            auto called = CalledBehind(callers_.Sets()[i]);
            if (!called)
                return false;
            if (called->IsEmpty())
                continue;
            auto division =
                std::find_if(divisions_.begin(), divisions_.end(),
                             [&](Division const& known) { return known.called == *called; });
            if (division == divisions_.end())
                division =
                    divisions_.insert(division, {std::vector<bool>(callers_.Sets().size(), false),
                                                 std::move(*called)});
            division->sets[i] = true;
        }
        return true;
    }

    /// The called sides of the calls of the set whose calling side satisfies these of the rules.
    std::optional<SideLanguage> CalledBehind(SideProduct::Accepted const& rules) {
        std::vector<SideId> sides;
        for (std::uint32_t const i : rules)
            sides.push_back(space_.SidesIn(set_.rules[i]).called);
        SideProduct called(space_.Pool(), space_.SidesIn(set_.must).called, std::move(sides));
        if (!called.Run(allowance_))
            return std::nullopt;
        std::vector<bool> wanted;
        for (SideProduct::Accepted const& accepted : called.Sets())
            wanted.push_back(accepted.empty() ? set_.isNoneMember
                                              : set_.areMembers[rules[accepted.front()]]);
        return called.LanguageOf(wanted);
    }

    bool Write() {
        result_ = {true, {}, 0};
        for (Division const& division : divisions_) {
            SideLanguage const callers = callers_.LanguageOf(division.sets);
            auto const from =
                WriteSide(callers, space_.SidesIn(set_.must).caller, set_.mustSides.caller);
            auto const to =
                WriteSide(division.called, space_.SidesIn(set_.must).called, set_.mustSides.called);
            if (!from || !to || result_.patterns.size() + from->size() * to->size() > most_)
                return false;
            for (AddressPattern const& caller : *from)
                for (AddressPattern const& called : *to)
                    result_.patterns.push_back({caller, called});
            AddCount(callers.count, division.called.count);
        }
        return true;
    }

    /// Where nothing was taken from a side that is given, it is its own pattern.
    std::optional<std::vector<AddressPattern>> WriteSide(SideLanguage const& language, SideId id,
                                                         RuleSide const& side) {
        SideProduct whole(space_.Pool(), id, {});
        if (whole.Run(allowance_) &&
            language == whole.LanguageOf(std::vector<bool>(whole.Sets().size(), true)))
            return {{{std::string(side.pattern), static_cast<CallType>(side.type), std::nullopt}}};
        return WritePatterns(language, space_.Calls(), most_);
    }

    void AddCount(std::optional<std::uint64_t> callers, std::optional<std::uint64_t> called) {
        constexpr std::uint64_t kMost = std::uint64_t{1} << 53;
        bool const isCountable = result_.count && callers && called &&
                                 *callers <= kMost / std::max<std::uint64_t>(1, *called);
        result_.count =
            isCountable ? std::optional(*result_.count + *callers * *called) : std::nullopt;
    }

    RuleSpace& space_;
    CallSet const& set_;
    std::size_t const most_;
    SideProduct callers_;
    Allowance allowance_{};
    std::vector<Division> divisions_;
    CallPatterns result_{};
};

} // namespace

CallPatterns WriteCalls(RuleSpace& space, CallSet const& set, std::size_t most) {
    return Divider(space, set, most).Run();
}

} // namespace CallRecordingUtils
