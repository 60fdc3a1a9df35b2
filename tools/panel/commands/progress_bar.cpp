#include "commands/progress_bar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

static const char ERASE_LINE[] = "\r\033[K";

static const std::size_t LONGEST_BAR = 40;

static std::size_t terminalColumns()
{
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}

std::string progressText(const std::string &what, std::size_t done, std::size_t total, std::size_t columns)
{
    const std::size_t shown = std::min(done, total);
    const std::string tail  = fmt::format("{:3} %  {} of {} words", total > 0 ? 100 * shown / total : 100, shown, total);
    const std::size_t around = what.size() + std::string(" [] ").size() + tail.size();
    if (columns < around + 4)
        return (what + " " + tail).substr(0, columns);
    const std::size_t width = std::min(LONGEST_BAR, columns - around);
    const std::size_t full  = total > 0 ? width * shown / total : width;
    return what + " [" + std::string(full, '#') + std::string(width - full, '-') + "] " + tail;
}

bool ProgressBar::isUsable()
{
    const char *terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) != 0 && terminal && std::string(terminal) != "dumb";
}

ProgressBar::ProgressBar(const std::string &what, bool on) : what_(what), target_(on ? std::cerr.rdbuf() : nullptr)
{
    if (target_)
        std::cerr.rdbuf(this);
}

ProgressBar::~ProgressBar()
{
    if (!target_)
        return;
    erase();
    std::cerr.rdbuf(target_);
}

void ProgressBar::show(std::size_t done, std::size_t total)
{
    if (!target_)
        return;
    // The last column stays free: some terminals go to the next line behind it.
    const std::string text = progressText(what_, done, total, terminalColumns() - 1);
    if (text == drawn_)
        return;
    const std::string line = ERASE_LINE + text;
    target_->sputn(line.data(), static_cast<std::streamsize>(line.size()));
    target_->pubsync();
    drawn_ = text;
}

void ProgressBar::erase()
{
    if (drawn_.empty())
        return;
    target_->sputn(ERASE_LINE, sizeof ERASE_LINE - 1);
    target_->pubsync();
    drawn_.clear();
}

ProgressBar::int_type ProgressBar::overflow(int_type c)
{
    erase();
    return traits_type::eq_int_type(c, traits_type::eof()) ? traits_type::not_eof(c)
                                                           : target_->sputc(traits_type::to_char_type(c));
}

std::streamsize ProgressBar::xsputn(const char *text, std::streamsize size)
{
    erase();
    return target_->sputn(text, size);
}

int ProgressBar::sync()
{
    return target_->pubsync();
}
