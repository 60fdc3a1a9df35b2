#ifndef PANEL_CLI_HELP_FORMAT_H
#define PANEL_CLI_HELP_FORMAT_H

#include <CLI/CLI.hpp>

// How the help of the commands looks: no line is longer than a terminal of 80 columns, and the help of all commands has
// those of two levels too.

class HelpFormat : public CLI::Formatter {
public:
    std::string make_option_name(const CLI::Option *option, bool isPositional) const override;
    std::string make_option_opts(const CLI::Option *option) const override;
    std::string make_option_desc(const CLI::Option *option) const override;
    std::string make_subcommand(const CLI::App *command) const override;
    std::string make_expanded(const CLI::App *command) const override;
    std::string make_description(const CLI::App *command) const override;
    std::string make_footer(const CLI::App *command) const override;
};

/// `text` in lines of at most `width` characters, if its words allow it. Ends of lines that it has stay.
std::string wrapped(const std::string &text, std::size_t width);

#endif
