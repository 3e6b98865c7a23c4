// Help texts that fit the terminal, and 80 columns where it is wider.

#ifndef CALLRECORDINGCTL_HELPFORMATTER_H
#define CALLRECORDINGCTL_HELPFORMATTER_H

#include <cstddef>
#include <string>

#include <CLI/CLI.hpp>

namespace callrecordingctl {

/// Texts are written for 80 columns. Where there are fewer, their lines are joined and broken anew.
class HelpFormatter : public CLI::Formatter {
  public:
    HelpFormatter();

    std::string make_option_desc(CLI::Option const* option) const override;
    std::string make_usage(CLI::App const* app, std::string name) const override;
    std::string make_subcommand(CLI::App const* app) const override;
    std::string make_footer(CLI::App const* app) const override;

  private:
    bool IsNarrow() const;
    std::string Description(std::string text) const;

    std::size_t width_;
};

} // namespace callrecordingctl

#endif
