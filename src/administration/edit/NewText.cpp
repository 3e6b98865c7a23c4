// Puts sections into another order, and has the file class write those that are new or changed.

#include "administration/edit/NewText.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>

#include <host/AtomicFile.h>

#include "common/Error.h"
#include "database/RuleFileEdit.h"
#include "model/RuleSides.h"

namespace CallRecordingUtils {
namespace {

namespace fs = std::filesystem;

/// The text of a file, cut up. What stands above a section goes where the section goes.
struct Pieces {
    std::string header; // Up to the last blank line above the first section.
    std::vector<std::string> above;
    std::vector<std::string> sections;
    std::string trailer;
};

/// Takes lines from the front of text, up to the first one that isEnd accepts, which is taken, too.
template <typename IsEnd>
std::string TakeLines(std::string_view& text, IsEnd isEnd) {
    std::string taken;
    bool isDone = false;
    while (!text.empty() && !isDone) {
        std::string_view const line =
            text.substr(0, text.find('\n') + 1 > 0 ? text.find('\n') + 1 : text.size());
        isDone = isEnd(line);
        taken += line;
        text.remove_prefix(line.size());
    }
    if (!taken.empty() && taken.back() != '\n')
        taken += '\n'; // The last line of the file may stand anywhere now.
    return taken;
}

bool IsBlank(std::string_view line) {
    return line.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

Pieces Cut(std::string_view text, std::vector<StoredRule> const& stored) {
    Pieces pieces;
    std::size_t number = 1;
    for (StoredRule const& rule : stored) {
        std::string above;
        if (number < rule.line)
            above = TakeLines(text, [&](std::string_view) { return ++number == rule.line; });
        pieces.above.push_back(above);
        pieces.sections.push_back(TakeLines(text, [&](std::string_view line) {
            ++number;
            std::size_t const first = line.find_first_not_of(" \t");
            return first != std::string_view::npos && line[first] == '}' &&
                   IsBlank(line.substr(first + 1));
        }));
    }
    pieces.trailer = text;
    if (!pieces.above.empty()) {
        std::string& above = pieces.above.front();
        std::size_t const blank = above.rfind("\n\n");
        std::size_t const end = blank == std::string::npos ? 0 : blank + 2;
        pieces.header = above.substr(0, end);
        above.erase(0, end);
    }
    return pieces;
}

std::string Assemble(Pieces const& pieces, Origins const& origins) {
    std::vector<bool> stays(pieces.sections.size(), false);
    for (auto const& origin : origins)
        if (origin)
            stays[*origin] = true;
    std::string text = pieces.header;
    std::size_t next = 0; // Up to here what stands above sections that go has been kept.
    auto const keepAbove = [&](std::size_t end) {
        for (; next < end; ++next)
            if (!stays[next])
                text += pieces.above[next];
    };
    for (auto const& origin : origins) {
        if (!origin) {
            text += "{\n}\n";
            continue;
        }
        keepAbove(*origin);
        text += pieces.above[*origin] + pieces.sections[*origin];
    }
    keepAbove(pieces.sections.size());
    return text + pieces.trailer;
}

/// A directory for a file that only this process needs.
class Workshop {
  public:
    Workshop() : path_((fs::temp_directory_path() / "callrecordingctl.XXXXXX").string()) {
        if (mkdtemp(path_.data()) == nullptr)
            throw Error(Error::Kind::Unsaved, path_ + ": cannot be made");
    }
    ~Workshop() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    Workshop(Workshop const&) = delete;
    Workshop& operator=(Workshop const&) = delete;

    std::string File() const { return path_ + "/rules"; }

  private:
    std::string path_;
};

} // namespace

std::string NewText(std::string const& text, std::vector<StoredRule> const& stored,
                    RuleList const& rules, Origins const& origins) {
    std::string assembled = Assemble(Cut(text, stored), origins);
    auto const isAsItWas = [&](std::size_t place) {
        return origins[place] && AreEqual(stored[*origins[place]].rule, rules[place]);
    };
    std::size_t first = 0;
    while (first < rules.size() && isAsItWas(first))
        ++first;
    if (first == rules.size())
        return assembled;
    try {
        Workshop const workshop;
        std::optional<HostPlatform::FileStamp> stamp;
        HostPlatform::ReplaceFile(workshop.File(), assembled, stamp);
        RuleFileEdit edit(workshop.File());
        for (std::size_t place = first; place < rules.size(); ++place)
            if (!isAsItWas(place))
                edit.Set(place, rules[place]);
        edit.Save();
        return HostPlatform::ReadFile(workshop.File()).text;
    } catch (std::exception const& error) {
        throw Error(Error::Kind::Unsaved, error.what());
    }
}

} // namespace CallRecordingUtils
