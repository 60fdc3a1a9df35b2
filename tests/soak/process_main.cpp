// The driver against a scripted PLC in the same process and in simulated time.

#include <cstdio>

#include "soak_run.h"
#include "support/memory_plc.h"

namespace {

using soak::Bytes;

class ScriptedLink : public soak::Link {
public:
    explicit ScriptedLink(std::uint32_t seed) : random_(seed) {}
    ~ScriptedLink() override { std::printf("simulated time: %lld minutes\n", clockMs_ / 60000); }

    void connect() override
    {
        plc_.connect();
        isUp_ = true;
        badLeft_ = 0;
        clockMs_ += 500;
    }

    bool isUp() const override { return isUp_; }
    void setFaults(bool isOn) override
    {
        hasFaults_ = isOn;
        badLeft_ = 0;
    }

    Bytes exchange(const Bytes &request) override;

    void change(const std::string &type, int address, int value) override
    {
        plc_.area(type).at(static_cast<std::size_t>(address)) = value;
    }

    std::vector<int> words(const std::string &type, int address, int count) override
    {
        const std::vector<int> &area = plc_.area(type);
        return std::vector<int>(area.begin() + address, area.begin() + address + count);
    }

private:
    enum { EXCHANGE_MS = 5, DEADLINE_MS = 1000 };

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(random_()) % limit; }

    Bytes fault(const Bytes &request);
    Bytes refuse(const Bytes &request);

    std::mt19937 random_;
    MemoryPlc    plc_;
    bool         isUp_ = false;
    bool         hasFaults_ = false;
    int          badLeft_ = 0; // requests that remain of a bad spell
    long long    clockMs_ = 0;
};

Bytes ScriptedLink::exchange(const Bytes &request)
{
    clockMs_ += EXCHANGE_MS;
    if (hasFaults_ && badLeft_ == 0 && below(400) == 0)
        badLeft_ = 1 + static_cast<int>(below(5));
    if (badLeft_ > 0) {
        --badLeft_;
        return fault(request);
    }
    if (hasFaults_ && below(50) == 0)
        return fault(request);
    return plc_.answer(request, 0);
}

Bytes ScriptedLink::refuse(const Bytes &request)
{
    static const unsigned END_CODES[] = {0x0101, 0x1101, 0x2201, 0x2202, 0x2203, 0x2204, 0x2205, 0x2206, 0x2301};
    return plc_.answer(request, END_CODES[below(9)]);
}

Bytes ScriptedLink::fault(const Bytes &request)
{
    Bytes reply;
    switch (below(10)) {
    case 0: // lost on its way there
        clockMs_ += DEADLINE_MS;
        return reply;
    case 1: // lost on its way back
        plc_.answer(request, 0);
        clockMs_ += DEADLINE_MS;
        return reply;
    case 2: // the connection breaks
        isUp_ = false;
        return reply;
    case 3:
        plc_.answer(request, 0);
        isUp_ = false;
        return reply;
    case 4:
        reply = plc_.answer(request, 0);
        reply.resize(reply.size() - 1 - below(6));
        return reply;
    case 5:
        reply = plc_.answer(request, 0);
        reply.resize(reply.size() + 1 + below(6));
        return reply;
    case 6: // somebody puts the PLC into RUN mode
        plc_.enterRunMode();
        return plc_.answer(request, 0);
    case 7:
        return refuse(request);
    default: // wrong service ID, or noise
        reply = plc_.answer(request, 0);
        if (reply.size() < 30)
            return reply; // a runtime hands over none but a sound reply to its handshake
        reply[25] = static_cast<std::uint8_t>(reply[25] + 1 + below(255));
        return reply;
    }
}

} // namespace

int main(int argc, char **argv)
{
    soak::Options options;
    options.requests = 200000;
    return soak::runSoak(argc, argv, options, [](const soak::Options &parsed) {
        return std::make_unique<ScriptedLink>(static_cast<std::uint32_t>(parsed.seed) + 1);
    });
}
