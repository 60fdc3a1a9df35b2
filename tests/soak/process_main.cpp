// The driver against a scripted PLC in the same process and in simulated time.

#include <cstdio>

#include "soak_run.h"
#include "support/memory_plc.h"

namespace {

using soak::Bytes;

class ScriptedLink : public soak::Link {
public:
    explicit ScriptedLink(std::uint32_t seed) : m_random(seed) {}
    ~ScriptedLink() override { std::printf("simulated time: %lld minutes\n", m_clockMs / 60000); }

    void connect() override
    {
        m_plc.connect();
        m_isUp = true;
        m_badLeft = 0;
        m_clockMs += 500;
    }

    bool isUp() const override { return m_isUp; }
    void setFaults(bool isOn) override { m_hasFaults = isOn; }

    Bytes exchange(const Bytes &request) override;

    void change(const std::string &type, int address, int value) override
    {
        m_plc.area(type).at(static_cast<std::size_t>(address)) = value;
    }

    std::vector<int> words(const std::string &type, int address, int count) override
    {
        const std::vector<int> &area = m_plc.area(type);
        return std::vector<int>(area.begin() + address, area.begin() + address + count);
    }

private:
    enum { EXCHANGE_MS = 5, DEADLINE_MS = 1000 };

    std::uint32_t below(std::uint32_t limit) { return static_cast<std::uint32_t>(m_random()) % limit; }

    Bytes fault(const Bytes &request);
    Bytes refuse(const Bytes &request);

    std::mt19937 m_random;
    MemoryPlc    m_plc;
    bool         m_isUp = false;
    bool         m_hasFaults = false;
    int          m_badLeft = 0; // requests that remain of a bad spell
    long long    m_clockMs = 0;
};

Bytes ScriptedLink::exchange(const Bytes &request)
{
    m_clockMs += EXCHANGE_MS;
    if (m_hasFaults && m_badLeft == 0 && below(400) == 0)
        m_badLeft = 1 + static_cast<int>(below(5));
    if (m_badLeft > 0) {
        --m_badLeft;
        return fault(request);
    }
    if (m_hasFaults && below(50) == 0)
        return fault(request);
    return m_plc.answer(request, 0);
}

Bytes ScriptedLink::refuse(const Bytes &request)
{
    static const unsigned END_CODES[] = {0x0101, 0x1101, 0x2201, 0x2202, 0x2203, 0x2204, 0x2205, 0x2206, 0x2301};
    return m_plc.answer(request, END_CODES[below(9)]);
}

Bytes ScriptedLink::fault(const Bytes &request)
{
    Bytes reply;
    switch (below(10)) {
    case 0: // lost on its way there
        m_clockMs += DEADLINE_MS;
        return reply;
    case 1: // lost on its way back
        m_plc.answer(request, 0);
        m_clockMs += DEADLINE_MS;
        return reply;
    case 2: // the connection breaks
        m_isUp = false;
        return reply;
    case 3:
        m_plc.answer(request, 0);
        m_isUp = false;
        return reply;
    case 4:
        reply = m_plc.answer(request, 0);
        reply.resize(reply.size() - 1 - below(6));
        return reply;
    case 5:
        reply = m_plc.answer(request, 0);
        reply.resize(reply.size() + 1 + below(6));
        return reply;
    case 6: // somebody puts the PLC into RUN mode
        m_plc.enterRunMode();
        return m_plc.answer(request, 0);
    case 7:
        return refuse(request);
    default: // wrong service ID, or noise
        reply = m_plc.answer(request, 0);
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
