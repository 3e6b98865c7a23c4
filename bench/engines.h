/// @file
/// The engines that are compared: the library, and what one would write instead with a library for
/// regular expressions or with fnmatch(3).

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

/// Decides calls with one rule list.
class Engine {
  public:
    virtual ~Engine() = default;

    /// Returns whether a rule decides for recording. This is what is timed: finding the rule,
    /// without the copy of its record that the library makes for callers who want it.
    virtual bool IsAllowed(Call const& call) { return Decide(call) >= 0; }

    /// Returns the place in the list of the first rule that matches, or -1.
    virtual int Decide(Call const& call) = 0;
};

/// The library, with the rules that it has loaded.
std::unique_ptr<Engine> MakeLibrary(CallRecordingUtils::CCallRecordingAssistant& assistant);

/// The library without its index: a walk over the list under a lock.
std::unique_ptr<Engine> MakeWalk(std::vector<Rule> const& rules);

std::unique_ptr<Engine> MakePcre2(std::vector<Rule> const& rules);
std::unique_ptr<Engine> MakeRe2(std::vector<Rule> const& rules);
std::unique_ptr<Engine> MakeFnmatch(std::vector<Rule> const& rules);

/// All rules at once: one anchored expression for each rule, over both sides of the call joined
/// into one text. Throws when the set does not compile.
std::unique_ptr<Engine> MakeRe2Set(std::vector<Rule> const& rules);

/// A pattern, compiled by the constructor. Matches whole addresses.
class Pcre2Pattern {
  public:
    explicit Pcre2Pattern(std::string const& pattern);
    bool Matches(std::string const& address) const { return Run(address) >= 0; }
    /// Returns what pcre2_jit_match does; below PCRE2_ERROR_NOMATCH it gave up.
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
