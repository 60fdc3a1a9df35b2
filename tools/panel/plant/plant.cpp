#include "plant/plant.h"

#include "terminal/stop_flag.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

Plant::Plant(const std::vector<PlantPlc> &plcs) : ready_(epoll_create1(EPOLL_CLOEXEC))
{
    if (ready_.get() < 0)
        throw std::runtime_error("the system has no file descriptor left");
    plcs_.reserve(plcs.size());
    for (std::size_t i = 0; i < plcs.size(); ++i)
        open(i, plcs[i], plcs.size() > 1 ? plcs[i].config.name + ": " : "");
}

void Plant::open(std::size_t number, const PlantPlc &plc, const std::string &prefix)
{
    names_.push_back(plc.config.name);
    hosts_.push_back(plc.config.host);
    plcs_.push_back(fins::Plc::open(plc.config));
    fins::Plc &opened = plcs_.back();
    watches_.push_back(opened.watch(plc.items, [this, number](const fins::Samples &samples) {
        if (samplesCall_)
            samplesCall_(number, samples);
    }));
    listeners_.push_back(opened.onState([this, number](const fins::State &state) {
        if (stateCall_)
            stateCall_(number, state);
    }));
    listeners_.push_back(opened.onMessage([this, prefix](const std::string &line) {
        if (messageCall_)
            messageCall_(prefix + line);
    }));
    epoll_event event = {};
    event.events   = EPOLLIN;
    event.data.u64 = number;
    if (epoll_ctl(ready_.get(), EPOLL_CTL_ADD, opened.readyFd(), &event) != 0)
        throw std::runtime_error(std::string("a PLC cannot be waited for: ") + std::strerror(errno));
}

void Plant::deliver()
{
    std::vector<epoll_event> events(plcs_.size() + 1); // none is a mistake
    const int count = epoll_wait(ready_.get(), events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count; ++i)
        plcs_[events[static_cast<std::size_t>(i)].data.u64].dispatch();
}

std::string Plant::silent(const std::vector<bool> &answered) const
{
    std::string text;
    for (std::size_t i = 0; i < plcs_.size(); ++i) {
        if (answered[i])
            continue;
        const std::string name   = names_[i].empty() ? "" : names_[i] + " at ";
        const std::string reason = plcs_[i].state().reason;
        text += (text.empty() ? "" : "; ") + name + hosts_[i] + (reason.empty() ? "" : ": " + reason);
    }
    return text;
}

void Plant::step(std::chrono::steady_clock::time_point until, std::vector<pollfd> &others)
{
    const auto now  = std::chrono::steady_clock::now();
    const auto left = std::max(until - now, std::chrono::steady_clock::duration::zero());
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec wait = {static_cast<std::time_t>(whole.count()), static_cast<long>((left - whole).count())};
    std::vector<pollfd> waited = others;
    waited.push_back({ready_.get(), POLLIN, 0});
    waited.push_back({programStop().fd(), POLLIN, 0});
    if (ppoll(waited.data(), waited.size(), &wait, nullptr) < 0)
        for (pollfd &one : waited)
            one.revents = 0; // interrupted by a signal
    std::copy_n(waited.begin(), others.size(), others.begin());
    deliver();
}
