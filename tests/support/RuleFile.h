/// @file
/// A sectioned file with the syntax of the rule file, for tests.

#ifndef TESTS_SUPPORT_RULEFILE_H
#define TESTS_SUPPORT_RULEFILE_H

#include <string>

#include <MultiSectionFile.h>

class RuleFile : public Configuration::MultiSectionFile {
  public:
    explicit RuleFile(std::string const& path)
        : MultiSectionFile(path.c_str(), true, false, false, nullptr, "{\n", "}\n", "=", "#",
                           nullptr) {}

    /// Returns the value of key in the current section.
    std::string Value(char const* key) {
        char value[64 * 1024];
        GetSectionEntry(key, value, sizeof value);
        return value;
    }
};

#endif
