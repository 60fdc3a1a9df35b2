#ifndef TESTS_E2E_PTY_PROCESS_H
#define TESTS_E2E_PTY_PROCESS_H

#include "support/process.h"

#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cctype>
#include <cstdlib>

// A program on a terminal, and what that terminal shows.

// As much of a terminal as a full-screen program needs: cursor, clearing, scrolling, alternate screen.
class Screen {
public:
    Screen(std::size_t columns, std::size_t rows) : size_{columns, rows} { lines.resize(rows); }

    void resize(std::size_t columns, std::size_t rows)
    {
        size_.columns = columns;
        size_.rows    = rows;
        lines.assign(rows, "");
    }

    void take(char c)
    {
        if (!escape_.empty() || c == '\033') {
            escape_ += c;
            if (escape_.size() > 2 && std::isalpha(static_cast<unsigned char>(c)))
                obey();
        } else if (c == '\n') {
            feedLine();
        } else if (c == '\r') {
            column_ = 0;
        } else {
            put(c);
        }
    }

    std::string text() const
    {
        std::string all;
        for (const std::string &line : lines)
            all += line + "\n";
        return all;
    }

    std::vector<std::string> lines;
    std::size_t questions = 0; // whether the terminal is in order; not yet answered
    bool isAlternate   = false;
    bool isCursorShown = true;
    bool hasColour     = false;

private:
    struct { std::size_t columns, rows; } size_;

    // Characters of several bytes count as one: they are only ever written from the left to the right.
    void put(char c)
    {
        if (row_ >= lines.size())
            return;
        std::string &line = lines[row_];
        if (column_ == 0)
            line.clear();
        line += c;
        ++column_;
    }

    void feedLine()
    {
        if (row_ + 1 < lines.size()) {
            ++row_;
            return;
        }
        lines.erase(lines.begin());
        lines.emplace_back();
    }

    void obey()
    {
        const std::string sequence = escape_.substr(2);
        escape_.clear();
        if (sequence.back() == 'H') {
            row_    = static_cast<std::size_t>(std::stoul(sequence)) - 1;
            column_ = static_cast<std::size_t>(std::stoul(sequence.substr(sequence.find(';') + 1))) - 1;
        } else if (sequence == "K" && row_ < lines.size() && column_ == 0) {
            lines[row_].clear();
        } else if (sequence == "2J") {
            lines.assign(size_.rows, "");
        } else if (sequence == "?1049h" || sequence == "?1049l") {
            isAlternate = sequence.back() == 'h';
        } else if (sequence == "?25h" || sequence == "?25l") {
            isCursorShown = sequence.back() == 'h';
        } else if (sequence == "5n") {
            ++questions;
        } else if (sequence.back() == 'm' && sequence != "0m") {
            hasColour = true;
        }
    }

    std::string escape_;
    std::size_t row_    = 0;
    std::size_t column_ = 0;
};

class PtyProcess {
public:
    using Clock = std::chrono::steady_clock;

    PtyProcess(const std::vector<std::string> &arguments, unsigned short columns, unsigned short rows,
               const std::vector<std::pair<std::string, std::string>> &environment = {})
        : screen(columns, rows)
    {
        std::vector<char *> argv;
        for (const std::string &argument : arguments)
            argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        winsize window = {rows, columns, 0, 0};
        pid_ = forkpty(&fd_, nullptr, nullptr, &window);
        if (pid_ < 0)
            throw std::runtime_error("no pseudo terminal");
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            restoreSignals();
            for (const char *name : {"NO_COLOR", "LC_ALL", "LC_CTYPE"})
                unsetenv(name);
            setenv("TERM", "xterm", 1);
            setenv("LANG", "C.UTF-8", 1);
            for (const auto &[name, value] : environment)
                setenv(name.c_str(), value.c_str(), 1);
            execv(argv[0], argv.data());
            _exit(127);
        }
        tcgetattr(fd_, &before_);
    }

    PtyProcess(const PtyProcess &) = delete;
    PtyProcess &operator=(const PtyProcess &) = delete;

    ~PtyProcess()
    {
        if (!ended_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(fd_);
    }

    // Reads until the screen holds `text`.
    void waitForText(const std::string &text)
    {
        waitUntil([&] { return screen.text().find(text) != std::string::npos; }, text);
    }

    template <typename Condition>
    void waitUntil(Condition condition, const std::string &what)
    {
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(DEFAULT_DEADLINE_MS);
        while (!condition()) {
            if (Clock::now() >= deadline)
                throw std::runtime_error("the terminal never shows '" + what + "' but\n" + screen.text());
            receive();
        }
    }

    void type(const std::string &keys)
    {
        if (write(fd_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
            throw std::runtime_error("the terminal takes no keys");
    }

    void resize(unsigned short columns, unsigned short rows)
    {
        screen.resize(columns, rows);
        const winsize window = {rows, columns, 0, 0};
        ioctl(fd_, TIOCSWINSZ, &window);
    }

    void sendSignal(int number) { kill(pid_, number); }

    // Waits for the end. Returns the exit code, or minus the number of the signal.
    int wait()
    {
        const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(DEFAULT_DEADLINE_MS);
        int status = 0;
        while (waitpid(pid_, &status, WNOHANG) != pid_) {
            if (Clock::now() >= deadline)
                throw std::runtime_error("the program goes on; the screen is\n" + screen.text());
            receive();
        }
        ended_ = true;
        while (receive()) {
        }
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    // Is the terminal's line discipline as it was at the start?
    bool hasKeysAsBefore() const
    {
        termios now = {};
        tcgetattr(fd_, &now);
        return now.c_lflag == before_.c_lflag && now.c_iflag == before_.c_iflag && now.c_oflag == before_.c_oflag;
    }

    Screen screen;
    bool   answers = true; // as a terminal does that is asked whether it is in order

private:
    bool receive()
    {
        for (; answers && screen.questions > 0; --screen.questions) {
            if (write(fd_, "\033[0n", 4) != 4)
                break; // the program has ended
        }
        pollfd polled = {fd_, POLLIN, 0};
        if (poll(&polled, 1, ended_ ? 0 : 20) <= 0)
            return false;
        char bytes[4096];
        const ssize_t n = read(fd_, bytes, sizeof bytes);
        for (ssize_t i = 0; i < n; ++i)
            screen.take(bytes[i]);
        return n > 0;
    }

    pid_t   pid_    = -1;
    int     fd_     = -1;
    bool    ended_  = false;
    termios before_ = {};
};

#endif
