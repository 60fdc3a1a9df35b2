#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <chrono>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// A program under test, with pipes on its three standard streams. Every wait has a deadline and throws
// std::runtime_error, with what the program has said so far, when it passes. The program never outlives the object,
// nor the test program.

enum { DEFAULT_DEADLINE_MS = 20000 };

// For a forked child: signals as a program in the foreground has them, whatever the test program has inherited.
inline void restoreSignals()
{
    for (const int number : {SIGPIPE, SIGINT, SIGHUP, SIGQUIT, SIGTERM, SIGTSTP})
        std::signal(number, SIG_DFL);
}

class Process {
public:
    using Clock = std::chrono::steady_clock;

    // Starts `arguments[0]` (a path) with all of `arguments`.
    explicit Process(const std::vector<std::string> &arguments) : name_(arguments.at(0))
    {
        int in[2], out[2], err[2];
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe for " + name_);
        std::vector<char *> argv;
        for (const std::string &argument : arguments)
            argv.push_back(const_cast<char *>(argument.c_str()));
        argv.push_back(nullptr);
        std::signal(SIGPIPE, SIG_IGN);
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ == 0)
            runChild(argv.data(), in[0], out[1], err[1], parent);
        close(in[0]);
        close(out[1]);
        close(err[1]);
        input_ = in[1];
        streams_[OUT].fd = out[0];
        streams_[ERR].fd = err[0];
        if (pid_ < 0)
            throw std::runtime_error("cannot start " + name_);
    }

    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;

    ~Process()
    {
        if (pid_ > 0 && !ended_) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        closeInput();
        closeStream(OUT);
        closeStream(ERR);
    }

    // The next line of standard output, without its end.
    std::string readLine(int deadlineMs = DEFAULT_DEADLINE_MS) { return nextLine(OUT, deadlineMs); }

    // The next line of standard error, without its end.
    std::string readErrorLine(int deadlineMs = DEFAULT_DEADLINE_MS) { return nextLine(ERR, deadlineMs); }

    // Reads standard output up to the first line that contains `text`, and returns that line.
    std::string waitForLine(const std::string &text, int deadlineMs = DEFAULT_DEADLINE_MS)
    {
        return waitFor(OUT, text, deadlineMs);
    }

    // The same for standard error.
    std::string waitForErrorLine(const std::string &text, int deadlineMs = DEFAULT_DEADLINE_MS)
    {
        return waitFor(ERR, text, deadlineMs);
    }

    // Writes `line` and an end of line to standard input.
    void writeLine(const std::string &line) { writeText(line + "\n"); }

    void writeText(const std::string &text)
    {
        std::size_t done = 0;
        while (done < text.size()) {
            const ssize_t n = write(input_, text.data() + done, text.size() - done);
            if (n <= 0)
                throw std::runtime_error(name_ + " does not read its standard input");
            done += static_cast<std::size_t>(n);
        }
    }

    // Ends the program's standard input.
    void closeInput()
    {
        if (input_ >= 0)
            close(input_);
        input_ = -1;
    }

    // Stops reading standard output, as a reader does who goes away.
    void closeOutput() { closeStream(OUT); }

    void sendSignal(int number)
    {
        if (!ended_)
            kill(pid_, number);
    }

    bool isRunning() { return !reap(); }

    // Waits for the end. Returns the exit code, or minus the number of the signal that ended the program.
    int wait(int deadlineMs = DEFAULT_DEADLINE_MS)
    {
        const Clock::time_point deadline = deadlineAfter(deadlineMs);
        while (!reap()) {
            if (Clock::now() >= deadline)
                fail("is still running");
            receive(20);
        }
        while (streams_[OUT].fd >= 0 || streams_[ERR].fd >= 0) {
            if (Clock::now() >= deadline)
                break;
            receive(20);
        }
        return code_;
    }

    // What is still unread of standard output and standard error; everything once wait() has returned.
    std::string output() const { return streams_[OUT].text; }
    std::string errors() const { return streams_[ERR].text; }

    pid_t id() const { return pid_; }

private:
    enum { OUT, ERR, STREAM_COUNT };

    struct Stream {
        int         fd = -1;
        std::string text; // received and not yet handed out
    };

    static Clock::time_point deadlineAfter(int ms) { return Clock::now() + std::chrono::milliseconds(ms); }

    [[noreturn]] static void runChild(char **argv, int in, int out, int err, pid_t parent)
    {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(127);
        restoreSignals();
        dup2(in, STDIN_FILENO);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        execv(argv[0], argv);
        _exit(127);
    }

    [[noreturn]] void fail(const std::string &what) const
    {
        throw std::runtime_error(name_ + " " + what + "; stdout: '" + streams_[OUT].text + "' stderr: '" +
                                 streams_[ERR].text + "'");
    }

    bool reap()
    {
        int status = 0;
        if (ended_ || waitpid(pid_, &status, WNOHANG) != pid_)
            return ended_;
        ended_ = true;
        code_ = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        return true;
    }

    void closeStream(int which)
    {
        if (streams_[which].fd >= 0)
            close(streams_[which].fd);
        streams_[which].fd = -1;
    }

    // Takes what both streams hold, waiting up to `waitMs` for something to come.
    void receive(int waitMs)
    {
        pollfd polled[STREAM_COUNT] = {{streams_[OUT].fd, POLLIN, 0}, {streams_[ERR].fd, POLLIN, 0}};
        if (poll(polled, STREAM_COUNT, waitMs) <= 0)
            return;
        for (int which = 0; which < STREAM_COUNT; ++which) {
            if (polled[which].revents == 0)
                continue;
            char buffer[4096];
            const ssize_t n = read(streams_[which].fd, buffer, sizeof buffer);
            if (n > 0)
                streams_[which].text.append(buffer, static_cast<std::size_t>(n));
            else
                closeStream(which);
        }
    }

    std::string nextLine(int which, int deadlineMs)
    {
        const Clock::time_point deadline = deadlineAfter(deadlineMs);
        std::string &text = streams_[which].text;
        std::size_t end = text.find('\n');
        while (end == std::string::npos) {
            if (streams_[which].fd < 0)
                fail("ended its output");
            if (Clock::now() >= deadline)
                fail("gave no line in time");
            receive(20);
            end = text.find('\n');
        }
        const std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        return line;
    }

    std::string waitFor(int which, const std::string &wanted, int deadlineMs)
    {
        const Clock::time_point deadline = deadlineAfter(deadlineMs);
        for (;;) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
            const std::string line = nextLine(which, left.count() > 0 ? static_cast<int>(left.count()) : 0);
            if (line.find(wanted) != std::string::npos)
                return line;
        }
    }

    std::string name_;
    pid_t       pid_ = -1;
    int         input_ = -1;
    bool        ended_ = false;
    int         code_ = 0;
    Stream      streams_[STREAM_COUNT];
};

#endif
