#ifndef PANEL_COMMANDS_PROGRESS_BAR_H
#define PANEL_COMMANDS_PROGRESS_BAR_H

#include <cstddef>
#include <streambuf>
#include <string>

// A bar on standard error, in one line that is drawn again and again, while a long transfer runs. Whatever else goes to
// std::cerr meanwhile gets a line of its own above the bar. At the end the line is empty again.

class ProgressBar : private std::streambuf {
public:
    /// Does nothing if `on` is false: a bar belongs on a terminal only.
    ProgressBar(const std::string &what, bool on);
    ~ProgressBar() override;
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void show(std::size_t done, std::size_t total);

    /// True if standard error is a terminal that can draw over a line.
    static bool isUsable();

private:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char *text, std::streamsize size) override;
    int sync() override;
    void erase();

    const std::string what_;
    std::streambuf   *target_; // of std::cerr; null if the bar is off
    std::string       drawn_;  // what stands in the line now
};

/// "writing [########------------]  40 %  120 of 300 words", at most `columns` wide.
std::string progressText(const std::string &what, std::size_t done, std::size_t total, std::size_t columns);

#endif
