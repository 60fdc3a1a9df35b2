#include "support/served_plc.h"

#include <algorithm>
#include <cstdio>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <utility>

static int number16(const Bytes &bytes, std::size_t at) { return bytes.at(at) * 256 + bytes.at(at + 1); }

static ServedPlc::Request parsed(const Bytes &frame)
{
    if (frame.size() < 28)
        return {0, 0, 0, 0, {}, 0};
    const auto command = static_cast<unsigned>(number16(frame, 26));
    if (frame.size() < 34)
        return {command, 0, 0, 0, {}, frame[25]};
    return {command, frame[28], number16(frame, 29), number16(frame, 32), Bytes(frame.begin() + 34, frame.end()),
            frame[25]};
}

ServedPlc::ServedPlc() : wake_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)), listener_(port_.startListening())
{
    thread_ = std::thread([this] { run(); });
}

ServedPlc::~ServedPlc()
{
    perform([this] { isEnding_ = true; });
    thread_.join();
    for (const int descriptor : {wake_, listener_, connection_}) {
        if (descriptor >= 0)
            close(descriptor);
    }
    if (!problem_.empty())
        std::fprintf(stderr, "the PLC got what it does not understand: %s\n", problem_.c_str());
}

// ---- From any thread ---------------------------------------------------------------------------------------------

// Has the thread do the job, and waits for it.
void ServedPlc::perform(const std::function<void()> &job)
{
    std::unique_lock<std::mutex> lock(mutex_);
    bool isDone = false;
    jobs_.push_back([&] {
        job();
        isDone = true;
    });
    const std::uint64_t one = 1;
    if (write(wake_, &one, sizeof one) != sizeof one)
        throw std::runtime_error("the thread of the PLC cannot be woken");
    changed_.wait(lock, [&] { return isDone; });
}

template <typename Condition>
void ServedPlc::await(const char *what, Condition condition) const
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(20), condition))
        throw std::runtime_error(std::string("the PLC waits in vain for ") + what + "; " + problem_);
}

void ServedPlc::rule(Rule rule)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    rule_ = std::move(rule);
}

void ServedPlc::holdAll()
{
    rule([](const Request &) { return Treatment{Treatment::HOLD}; });
}

void ServedPlc::release()
{
    perform([this] {
        rule_ = nullptr;
        for (const Bytes &frame : std::exchange(held_, {}))
            send(plc_.answer(frame));
    });
}

void ServedPlc::hangUp()
{
    perform([this] { hangUpNow(); });
}

void ServedPlc::stopListening()
{
    perform([this] {
        close(listener_);
        listener_ = -1;
    });
}

void ServedPlc::startListening()
{
    perform([this] { listener_ = port_.startListening(); });
}

void ServedPlc::set(int address, const std::vector<int> &values)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const int value : values)
        plc_.word(0x82, address++) = value;
}

int ServedPlc::dm(int address)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return plc_.word(0x82, address);
}

void ServedPlc::tell(unsigned command, const Bytes &data)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    plc_.tell(command, data);
}

void ServedPlc::enterRunMode()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    plc_.enterRunMode();
}

std::vector<ServedPlc::Request> ServedPlc::requests() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return requests_;
}

std::vector<ServedPlc::Request> ServedPlc::writes() const
{
    std::vector<Request> found = requests();
    found.erase(std::remove_if(found.begin(), found.end(), [](const Request &request) { return !request.isWrite(); }),
                found.end());
    return found;
}

int ServedPlc::modeChanges() const
{
    const std::vector<Request> all = requests();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [](const Request &request) { return request.isModeChange(); }));
}

int ServedPlc::connections() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return connections_;
}

int ServedPlc::ends() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return ends_;
}

void ServedPlc::awaitHeld()
{
    await("a request to hold back", [this] { return !held_.empty(); });
}

void ServedPlc::awaitRound()
{
    const std::size_t before = requests().size();
    await("two requests", [&] { return requests_.size() >= before + 2; });
}

void ServedPlc::awaitConnections(int count)
{
    await("a connection", [&] { return connections_ >= count; });
}

void ServedPlc::awaitEnds(int count)
{
    await("the end of a connection", [&] { return ends_ >= count; });
}

void ServedPlc::awaitWrites(std::size_t count)
{
    await("a write", [&] {
        return static_cast<std::size_t>(std::count_if(requests_.begin(), requests_.end(),
                                                      [](const Request &request) { return request.isWrite(); })) >= count;
    });
}

void ServedPlc::awaitModeChanges(int count)
{
    await("a change of the mode", [&] {
        return std::count_if(requests_.begin(), requests_.end(),
                             [](const Request &request) { return request.isModeChange(); }) >= count;
    });
}

// ---- The thread --------------------------------------------------------------------------------------------------

void ServedPlc::run()
{
    for (;;) {
        pollfd polled[3];
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (isEnding_)
                return;
            polled[0] = {wake_, POLLIN, 0};
            polled[1] = {listener_, POLLIN, 0};
            polled[2] = {connection_, POLLIN, 0};
        }
        poll(polled, 3, -1);
        const std::lock_guard<std::mutex> lock(mutex_);
        std::uint64_t count = 0;
        if (polled[0].revents != 0 && read(wake_, &count, sizeof count) < 0)
            count = 0;
        try {
            if (polled[2].revents != 0)
                receive();
            if (polled[1].revents != 0)
                accept();
        } catch (const std::exception &error) {
            problem_ = error.what();
            hangUpNow();
        }
        for (const std::function<void()> &job : std::exchange(jobs_, {}))
            job();
        changed_.notify_all();
    }
}

void ServedPlc::accept()
{
    hangUpNow();
    connection_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    plc_.connect();
    ++connections_;
}

void ServedPlc::hangUpNow()
{
    if (connection_ >= 0)
        close(connection_);
    connection_ = -1;
    received_.clear();
    held_.clear();
}

void ServedPlc::receive()
{
    std::uint8_t bytes[4096];
    const ssize_t count = recv(connection_, bytes, sizeof bytes, 0);
    if (count <= 0) {
        ++ends_;
        hangUpNow();
        return;
    }
    received_.insert(received_.end(), bytes, bytes + count);
    while (received_.size() >= 8) {
        const std::size_t size = 8 + static_cast<std::size_t>(number16(received_, 6));
        if (received_.size() < size)
            return;
        const Bytes frame(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(size));
        received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(size));
        take(frame);
    }
}

void ServedPlc::take(const Bytes &frame)
{
    const Request request = parsed(frame);
    requests_.push_back(request);
    const Treatment treatment = rule_ ? rule_(request) : Treatment();
    switch (treatment.deed) {
    case Treatment::HOLD:
        held_.push_back(frame);
        return;
    case Treatment::HANG_UP:
        hangUpNow();
        return;
    case Treatment::LOSE:
        return;
    case Treatment::SILENCE:
        plc_.answer(frame, treatment.endCode);
        return;
    case Treatment::ANSWER:
    case Treatment::FORGET:
        send(answerTo(frame, request, treatment.deed, treatment.endCode));
    }
}

Bytes ServedPlc::answerTo(const Bytes &frame, const Request &request, Treatment::Deed deed, unsigned endCode)
{
    if (deed != Treatment::FORGET)
        return plc_.answer(frame, endCode);
    std::vector<int> kept;
    for (int i = 0; i < request.count; ++i)
        kept.push_back(plc_.word(request.area, request.address + i));
    Bytes reply = plc_.answer(frame);
    for (int i = 0; i < request.count; ++i)
        plc_.word(request.area, request.address + i) = kept[static_cast<std::size_t>(i)];
    return reply;
}

void ServedPlc::send(const Bytes &reply)
{
    if (connection_ >= 0 && ::send(connection_, reply.data(), reply.size(), MSG_NOSIGNAL) < 0)
        hangUpNow();
}
