// Breaks and joins lines of help.

#include "HelpFormatter.h"

#include <algorithm>
#include <sstream>

#include <unistd.h>

#include "output/Screen.h"
#include "text/Wrap.h"

namespace callrecordingctl {
namespace {

constexpr std::size_t kWritten = 80; // The width for which texts are written.
constexpr std::size_t kTight = 60;   // Below this the column of descriptions moves to the left.

std::string WithoutLineEnd(std::string text) {
    text.pop_back();
    return text;
}

/// Breaks a line of a list; what follows two blanks or more stays a column if there is room.
std::string BreakLine(std::string const& line, std::size_t width) {
    std::size_t const begin = std::min(line.find_first_not_of(' '), line.size());
    std::size_t const gap = line.find("  ", begin);
    std::size_t const second = gap == std::string::npos ? gap : line.find_first_not_of(' ', gap);
    return WrapText(line, width, second < width / 2 ? second : begin + 2);
}

/// Joins the lines of each paragraph and breaks them anew. Lines that begin with a blank, and
/// examples, stand by themselves.
std::string Reflow(std::string const& text, std::size_t width) {
    std::istringstream lines(text);
    std::string reflowed, paragraph;
    auto const end = [&] {
        if (!paragraph.empty())
            reflowed += WrapText(paragraph, width, 0);
        paragraph.clear();
    };
    for (std::string line; std::getline(lines, line);) {
        bool const isAlone = line.empty() || line[0] == ' ' || line.compare(0, 8, "Example:") == 0;
        if (isAlone) {
            end();
            reflowed += BreakLine(line, width);
            continue;
        }
        paragraph += (paragraph.empty() ? "" : " ") + line;
        if (line.back() == ':')
            end();
    }
    end();
    return reflowed;
}

} // namespace

HelpFormatter::HelpFormatter() : width_(std::min(kWritten, ScreenWidth(STDOUT_FILENO))) {
    constexpr std::size_t kColumn = 24, kTightColumn = 12;
    column_width(width_ < kTight ? kTightColumn : kColumn);
}

bool HelpFormatter::IsNarrow() const {
    return width_ < kWritten;
}

/// Text in the column of descriptions.
std::string HelpFormatter::Description(std::string text) const {
    if (IsNarrow())
        std::replace(text.begin(), text.end(), '\n', ' ');
    std::istringstream lines(text);
    std::string broken;
    for (std::string line; std::getline(lines, line);)
        broken += WrapText(line, width_ - std::min(width_ / 2, get_column_width()), 0);
    return broken.empty() ? broken : WithoutLineEnd(broken);
}

std::string HelpFormatter::make_option_desc(CLI::Option const* option) const {
    return Description(Formatter::make_option_desc(option));
}

std::string HelpFormatter::make_usage(CLI::App const* app, std::string name) const {
    std::istringstream lines(Formatter::make_usage(app, std::move(name)));
    std::string broken;
    for (std::string line; std::getline(lines, line);)
        broken += WrapText(line, width_, 0);
    return broken;
}

std::string HelpFormatter::make_subcommand(CLI::App const* app) const {
    std::ostringstream out;
    CLI::detail::format_help(out, app->get_display_name(true), Description(app->get_description()),
                             get_column_width());
    return out.str();
}

std::string HelpFormatter::make_footer(CLI::App const* app) const {
    std::string const footer = Formatter::make_footer(app);
    return IsNarrow() ? Reflow(footer, width_) : footer;
}

} // namespace callrecordingctl
