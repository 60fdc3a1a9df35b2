#include "link/answerer.h"
#include "link/meters.h"
#include "link/scenes.h"

#include "fins_runtime/plc.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int WORDS       = 500;
constexpr int BLOCK_WORDS = 64;
constexpr int BLOCKS      = (WORDS + BLOCK_WORDS - 1) / BLOCK_WORDS;

/// Between two requests: with the time that an exchange takes, ten polls of all blocks a second.
constexpr std::chrono::milliseconds INTERVAL{12};

/// Between two replies to a single PLC, so that it gets as many as a hundred of them.
constexpr std::chrono::microseconds PERIOD{125};

struct Memory {
    double resident;     // KiB
    double proportional; // KiB, what is shared counted in parts
};

Memory memoryOfProcess()
{
    std::ifstream file("/proc/self/smaps_rollup");
    Memory memory = {};
    std::string word;
    while (file >> word) {
        if (word == "Rss:")
            file >> memory.resident;
        else if (word == "Pss:")
            file >> memory.proportional;
    }
    return memory;
}

/// The times of all replies together.
struct Replies {
    long                count = 0;
    std::vector<double> delays;
};

/// One PLC: its words are watched, of each block the time of the reply and the words behind it.
class Station {
public:
    Station(int port, std::chrono::milliseconds interval, Replies &replies)
        : plc_(fins::Plc::open(config(port, interval))),
          watch_(plc_.watch(items(), [this, &replies](const fins::Samples &samples) { note(samples, replies); })),
          isKnown_(BLOCKS, false)
    {
    }

    int readyFd() const { return plc_.readyFd(); }
    void dispatch() { plc_.dispatch(); }
    bool isKnown() const { return std::all_of(isKnown_.begin(), isKnown_.end(), [](bool known) { return known; }); }

private:
    static fins::Config config(int port, std::chrono::milliseconds interval)
    {
        fins::Config config;
        config.host     = "127.0.0.1:" + std::to_string(port);
        config.interval = interval;
        config.library  = OMRON_FINS_LIBRARY;
        config.wordsPerFrame = BLOCK_WORDS;
        return config;
    }

    static std::vector<std::string> items()
    {
        std::vector<std::string> items;
        for (int block = 0; block < BLOCKS; ++block)
            items.push_back("DM:" + std::to_string(BLOCK_WORDS * block) + "/u64-low");
        for (int block = 0; block < BLOCKS; ++block) {
            const int begin = BLOCK_WORDS * block;
            const int end   = std::min(begin + BLOCK_WORDS, WORDS);
            items.push_back("DM:" + std::to_string(begin + 4) + ":" + std::to_string(end - begin - 4));
        }
        return items;
    }

    void note(const fins::Samples &samples, Replies &replies)
    {
        const auto now = stampOf(std::chrono::steady_clock::now());
        for (const fins::Sample &sample : samples) {
            if (sample.index >= BLOCKS || sample.quality != fins::Quality::GOOD)
                continue;
            isKnown_[sample.index] = true;
            replies.count += 1 + static_cast<long>(sample.dropped);
            const auto sent = static_cast<std::uint64_t>(std::get<std::int64_t>(sample.value));
            replies.delays.push_back(1e-9 * static_cast<double>(now - sent));
        }
    }

    fins::Plc         plc_;
    fins::Watch       watch_;
    std::vector<bool> isKnown_;
};

/// The application: one thread for all.
class Application {
public:
    Application() : watcher_(epoll_create1(EPOLL_CLOEXEC)) {}
    ~Application() { close(watcher_); }
    Application(const Application &) = delete;
    Application &operator=(const Application &) = delete;

    void add(int port, std::chrono::milliseconds interval)
    {
        stations_.push_back(std::make_unique<Station>(port, interval, replies_));
        epoll_event event = {};
        event.events   = EPOLLIN;
        event.data.ptr = stations_.back().get();
        epoll_ctl(watcher_, EPOLL_CTL_ADD, stations_.back()->readyFd(), &event);
    }

    void runFor(double seconds)
    {
        const Meter meter;
        while (meter.elapsed() < seconds)
            dispatchAll();
    }

    void runUntilKnown()
    {
        const Meter meter;
        while (!std::all_of(stations_.begin(), stations_.end(), [](const auto &station) { return station->isKnown(); })) {
            if (meter.elapsed() > 60)
                throw std::runtime_error("many: no values");
            dispatchAll();
        }
    }

    Replies &replies() { return replies_; }

private:
    void dispatchAll()
    {
        epoll_event events[64];
        const int count = epoll_wait(watcher_, events, 64, 100);
        for (int i = 0; i < count; ++i)
            static_cast<Station *>(events[i].data.ptr)->dispatch();
    }

    const int watcher_;
    Replies   replies_;
    std::vector<std::unique_ptr<Station>> stations_;
};

double percentile(std::vector<double> &sorted, double part)
{
    return sorted[static_cast<std::size_t>(part * static_cast<double>(sorted.size() - 1))];
}

} // namespace

int many(int plcs, int seconds)
{
    const bool isSingle = plcs == 1;
    const AnswererProcess end(answerStamps(isSingle ? PERIOD : std::chrono::microseconds(0)), plcs);
    const std::chrono::milliseconds interval = isSingle ? std::chrono::milliseconds(0) : INTERVAL;
    Application application;
    application.add(end.port(), interval);
    application.runUntilKnown();
    application.runFor(0.5);
    const Memory first = memoryOfProcess();
    for (int i = 1; i < plcs; ++i)
        application.add(end.port(), interval);
    application.runUntilKnown();
    application.runFor(0.5);
    const Memory all = memoryOfProcess();

    Replies &replies = application.replies();
    replies = {};
    replies.delays.reserve(static_cast<std::size_t>(seconds) * 10000);
    const Meter meter;
    application.runFor(seconds);
    const double cpu = meter.cpu();
    const double elapsed = meter.elapsed();
    std::sort(replies.delays.begin(), replies.delays.end());
    const double further = std::max(1, plcs - 1);
    std::printf("%d %.1f %.9f %.1f %.1f %.9f %.9f %.9f\n", plcs, static_cast<double>(replies.count) / elapsed,
                cpu / static_cast<double>(replies.count), (all.resident - first.resident) / further,
                (all.proportional - first.proportional) / further, percentile(replies.delays, 0.5),
                percentile(replies.delays, 0.99), replies.delays.back());
    return 0;
}
