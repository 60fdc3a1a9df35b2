#include "commands/commands.h"

#include "commands/ending.h"
#include "common/numbers.h"
#include "log/grid.h"
#include "log/log_values.h"
#include "log/row_writer.h"
#include "terminal/stop_flag.h"

#include <algorithm>
#include <csignal>
#include <mutex>
#include <numeric>

namespace {

constexpr std::size_t WAITING_MOST = 32 << 20; // bytes of rows

SystemTime utcNow()
{
    return std::chrono::system_clock::now();
}

class Logger {
public:
    Logger(const std::vector<PlantPlc> &plcs, const LogOptions &options)
        : plant_(plcs), values_(plant_, plcs, options.deadband),
          form_(options.form, values_.columns(), options.measurement),
          file_(options.output, form_.heading(), options.rotation, [this](const std::string &line) { say(line); },
                utcNow()),
          writer_(file_, WAITING_MOST), all_(values_.columns().size())
    {
        std::iota(all_.begin(), all_.end(), std::size_t(0));
        plant_.onMessage([this](const std::string &line) {
            const std::lock_guard<std::mutex> lock(mutex_);
            messages_.say(line);
        });
    }

    void logPeriodically(Millis every, TimePoint end);
    void logChanges(TimePoint end);

    // Tells what is left to tell; returns the exit code.
    int end();

private:
    // On the thread of the rows, too.
    void say(const std::string &line)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        messages_.sayAlways("fins_panel: " + line);
    }
    void write(SystemTime time, const std::vector<std::size_t> &chosen);
    void writeRows(const std::vector<SystemTime> &times);
    bool isOver(TimePoint end) const { return programStop().isStopped() || Clock::now() >= end; }

    std::mutex                   mutex_; // guards messages_
    Messages                     messages_;
    Plant                        plant_;
    LogValues                    values_;
    RowForm                      form_;
    RowFile                      file_;
    RowWriter                    writer_;
    std::vector<std::size_t>     all_;     // columns
    std::vector<pollfd>          nothing_; // to wait for besides the PLCs
    std::uint64_t                missed_ = 0;
};

void Logger::write(SystemTime time, const std::vector<std::size_t> &chosen)
{
    writer_.add(time, form_.row(time, values_.latest(), chosen));
}

// The wait is as long as the clock of the grid says, whatever it was set to meanwhile.
void Logger::logPeriodically(Millis every, TimePoint end)
{
    plant_.onSamples([this](std::size_t plc, const fins::Samples &samples) { values_.hold(plc, samples); });
    Grid grid(every, utcNow());
    while (!isOver(end)) {
        const auto wait = std::min<Clock::duration>(grid.next() - utcNow(), every);
        plant_.step(std::min(end, Clock::now() + wait), nothing_);
        writeRows(grid.due(utcNow()));
        if (grid.missed() > missed_)
            say(counted(grid.missed() - missed_, "row") + " before " + timeText(grid.next() - every)
                + " left out: the program was held up");
        missed_ = grid.missed();
    }
}

void Logger::writeRows(const std::vector<SystemTime> &times)
{
    for (std::size_t i = 0; i + 1 < times.size(); ++i) // the program was held up
        writer_.add(times[i], form_.row(times[i], values_.at(times[i]), all_));
    values_.takeHeld();
    if (!times.empty())
        write(times.back(), all_);
}

void Logger::logChanges(TimePoint end)
{
    plant_.onSamples([this](std::size_t plc, const fins::Samples &samples) {
        values_.take(plc, samples, utcNow(),
                     [this](SystemTime time, const std::vector<std::size_t> &changed) { write(time, changed); });
    });
    while (!isOver(end))
        plant_.step(end, nothing_);
    missed_ = values_.dropped();
    if (missed_ > 0)
        say(counted(missed_, "change") + " left out: later ones came before they could be logged");
}

int Logger::end()
{
    writer_.finish();
    file_.finish(programStop().isStopped());
    if (writer_.lost() > 0)
        say(counted(writer_.lost(), "row") + " lost: the disk was too slow");
    if (file_.lost() + writer_.lost() > 0)
        return EXIT_REFUSED;
    if (programStop().isStopped())
        return EXIT_DONE;
    const std::string silent = plant_.silent(values_.answered());
    if (!silent.empty()) {
        say("no answer from " + silent);
        return EXIT_NO_LINK;
    }
    return values_.anyRefused() || missed_ > 0 ? EXIT_REFUSED : EXIT_DONE;
}

} // namespace

// What is written may meet a limit of the size of files, or nobody who reads it: then it is to be said.
int runLog(const std::vector<PlantPlc> &plcs, const LogOptions &options)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    Logger logger(plcs, options);
    const auto forTime = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.forSeconds));
    const TimePoint end = options.forSeconds > 0 ? Clock::now() + forTime : TimePoint::max();
    if (options.onChange)
        logger.logChanges(end);
    else
        logger.logPeriodically(options.every, end);
    return logger.end();
}
