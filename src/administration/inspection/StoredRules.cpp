// Reads rules together with their lines.

#include "administration/inspection/StoredRules.h"

#include <algorithm>

#include "administration/inspection/ReadFromText.h"
#include "database/RuleFile.h"

namespace CallRecordingUtils {

std::size_t StoredRule::LineOf(RuleFileKeys key) const {
    auto const found = std::find_if(entries.begin(), entries.end(), [key](Entry const& entry) {
        return entry.key == kRuleKeys[key];
    });
    return found != entries.end() ? found->line : line;
}

std::vector<StoredRule> ReadStoredRules(std::string const& path) {
    std::vector<StoredRule> rules;
    RuleFile file(path);
    while (file.Next()) {
        StoredRule stored;
        stored.rule = file.ReadRule();
        for (std::size_t key = 0; key < stored.values.size(); ++key)
            if (char const* const value = file.Reader().Read(static_cast<RuleFileKeys>(key)))
                stored.values[key] = value;
        stored.line = file.File().GetSectionLine();
        for (auto const& [key, line] : file.File().GetEntryLines())
            stored.entries.push_back({key, line});
        rules.push_back(std::move(stored));
    }
    return rules;
}

std::vector<StoredRule> StoredRulesOf(std::string const& text, std::string const& name) {
    return ReadFromText(text, name, ReadStoredRules);
}

} // namespace CallRecordingUtils
