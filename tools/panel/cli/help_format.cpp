#include "cli/help_format.h"

// The help of all commands indents that of each by two.
static const std::size_t WIDTH = 78;

std::string wrapped(const std::string &text, std::size_t width)
{
    std::string lines;
    std::size_t used = 0; // of the last line
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find_first_of(" \n", begin), text.size());
        const std::size_t size = end - begin;
        if (used > 0 && used + 1 + size > width) {
            lines += '\n';
            used = 0;
        }
        lines += (used > 0 ? " " : "") + text.substr(begin, size);
        used += size + (used > 0 ? 1 : 0);
        if (end < text.size() && text[end] == '\n') {
            lines += '\n';
            used = 0;
        }
        begin = end + 1;
    }
    return lines;
}

// Without the value that a flag stands for.
std::string HelpFormat::make_option_name(const CLI::Option *option, bool isPositional) const
{
    const std::string name = CLI::Formatter::make_option_name(option, isPositional);
    return name.substr(0, name.find('{'));
}

// What may follow a flag stands at it.
std::string HelpFormat::make_option_opts(const CLI::Option *option) const
{
    const std::string &text = option->get_option_text();
    return text.compare(0, 1, "[") == 0 ? text : CLI::Formatter::make_option_opts(option);
}

std::string HelpFormat::make_option_desc(const CLI::Option *option) const
{
    return wrapped(option->get_description(), WIDTH - get_column_width());
}

std::string HelpFormat::make_subcommand(const CLI::App *command) const
{
    std::ostringstream out;
    CLI::detail::format_help(out, command->get_name(), wrapped(command->get_description(), WIDTH - get_column_width()),
                             get_column_width());
    return out.str();
}

std::string HelpFormat::make_expanded(const CLI::App *command) const
{
    const CLI::App *parent = command->get_parent();
    const std::string group = parent && parent->get_parent() ? parent->get_name() + " " : "";
    const auto children = command->get_subcommands([](const CLI::App *) { return true; });
    std::string all;
    if (children.empty())
        all = group + CLI::Formatter::make_expanded(command);
    for (const CLI::App *child : children)
        all += make_expanded(child) + (child == children.back() ? "" : "\n");
    return all;
}

std::string HelpFormat::make_description(const CLI::App *command) const
{
    return wrapped(command->get_description(), WIDTH) + "\n";
}

std::string HelpFormat::make_footer(const CLI::App *command) const
{
    return wrapped(CLI::Formatter::make_footer(command), WIDTH);
}
