/// @file
/// The engines that are compared: the library, what one would write with a regular expression
/// library or fnmatch(3) instead, rule by rule or all at once.

#ifndef BENCH_ENGINES_H
#define BENCH_ENGINES_H

#define PCRE2_CODE_UNIT_WIDTH 8

#include <list>
#include <memory>
#include <string>
#include <vector>

#include <pcre2.h>
#include <re2/re2.h>

#include <callrecordingutils/CCallRecordingAssistant.h>

#include "rules.h"

namespace bench {

/// Decides calls by one rule list.
class Engine {
  public:
    virtual ~Engine() = default;

    /// Returns whether a rule decides for recording. This is what is timed: the place of the rule
    /// alone, as the others find it, without the copy of its record that the library makes for who
    /// wants it.
    virtual bool IsAllowed(Call const& call) { return Decide(call) >= 0; }

    /// Returns the place in the list of the first rule that matches, or -1.
    virtual int Decide(Call const& call) = 0;
};

/// The library. The rules are those that it has loaded.
std::unique_ptr<Engine> MakeLibrary(CallRecordingUtils::CCallRecordingAssistant& assistant);

/// The library without its index: the walk over the list, with a lock as the library's.
std::unique_ptr<Engine> MakeWalk(std::vector<Rule> const& rules);

std::unique_ptr<Engine> MakePcre2(std::vector<Rule> const& rules);
std::unique_ptr<Engine> MakeRe2(std::vector<Rule> const& rules);
std::unique_ptr<Engine> MakeFnmatch(std::vector<Rule> const& rules);

/// All rules at once: one expression for each rule, over both sides of the call joined into one
/// text, anchored. Throws when the set does not compile.
std::unique_ptr<Engine> MakeRe2Set(std::vector<Rule> const& rules);

/// One pattern of each engine; compiled in the constructor, tests whole addresses.
class Pcre2Pattern {
  public:
    explicit Pcre2Pattern(std::string const& pattern);
    bool Matches(std::string const& address) const { return Run(address) >= 0; }
    /// As pcre2_jit_match: below PCRE2_ERROR_NOMATCH it gave up.
    int Run(std::string const& address) const;

  private:
    struct Free {
        void operator()(pcre2_code* code) const { pcre2_code_free(code); }
    };
    std::unique_ptr<pcre2_code, Free> code_;
};

class Re2Pattern {
  public:
    explicit Re2Pattern(std::string const& pattern);
    bool Matches(std::string const& address) const { return RE2::FullMatch(address, *regex_); }

  private:
    std::unique_ptr<RE2> regex_;
};

class FnmatchPattern {
  public:
    explicit FnmatchPattern(std::string const& pattern);
    bool Matches(std::string const& address) const;

  private:
    std::string glob_;
};

} // namespace bench

#endif
