// Help texts that fit a terminal of 80 columns.

#ifndef CALLRECORDINGCTL_HELPFORMATTER_H
#define CALLRECORDINGCTL_HELPFORMATTER_H

#include <string>

#include <CLI/CLI.hpp>

namespace callrecordingctl {

/// Breaks the lines that would not fit.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter() { column_width(kColumn); }

    std::string make_option_desc(CLI::Option const* option) const override {
        return Wrapped(Formatter::make_option_desc(option), kWidth - kColumn);
    }
    std::string make_usage(CLI::App const* app, std::string name) const override {
        return Wrapped(Formatter::make_usage(app, std::move(name)), kWidth);
    }

  private:
    static constexpr std::size_t kWidth = 80;
    static constexpr std::size_t kColumn = 24;

    static std::string Wrapped(std::string text, std::size_t width) {
        for (std::size_t begin = 0; begin < text.size();) {
            std::size_t const end = std::min(text.find('\n', begin), text.size());
            std::size_t const blank = text.rfind(' ', begin + width);
            if (end - begin > width && blank != std::string::npos && blank > begin) {
                text[blank] = '\n';
                begin = blank + 1;
            } else {
                begin = end + 1;
            }
        }
        return text;
    }
};

} // namespace callrecordingctl

#endif
