#include "link/clients.h"

#include "driver/change_feed.h"
#include "link/answerer.h"
#include "session/step_until.h"

#include <arpa/inet.h>
#include <modbus.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

namespace {

const char LOOPBACK[] = "127.0.0.1";
const int WORDS = 64;

void require(bool good, const char *what)
{
    if (!good)
        throw std::runtime_error(what);
}

class PingPongClient : public Client {
public:
    explicit PingPongClient(int port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(connect(m_socket, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "ping-pong: no link");
        const int on = 1;
        setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }

    ~PingPongClient() override { close(m_socket); }

    void request(long count) override
    {
        std::uint8_t bytes[READ_REPLY_SIZE] = {};
        for (long i = 0; i < count; ++i) {
            require(send(m_socket, bytes, READ_REQUEST_SIZE, MSG_NOSIGNAL) == READ_REQUEST_SIZE, "ping-pong: no send");
            require(recv(m_socket, bytes, sizeof bytes, 0) == READ_REPLY_SIZE, "ping-pong: no reply");
        }
    }

private:
    int m_socket;
};

LinkOptions linkOptions(int port, long interval)
{
    LinkOptions options;
    options.host = LOOPBACK;
    options.port = std::to_string(port);
    options.interval = Millis(interval);
    return options;
}

class PanelClient : public Client {
public:
    PanelClient(int port, long interval)
        : m_library(OMRON_FINS_LIBRARY), m_runtime(m_library, linkOptions(port, interval)), m_exchanges(0), m_changes(0),
          m_call(m_runtime.onExchange([this](const Exchange &exchange) { m_exchanges += exchange.accepted ? 1 : 0; }))
    {
        m_runtime.watch({{QLatin1String("DM"), 0, WORDS, false}});
        request(2);
        require(m_runtime.phase() == LinkPhase::ONLINE, "panel: no link");
    }

    void request(long count) override
    {
        const long end = m_exchanges + count;
        const bool all = stepUntil(m_runtime, TimePoint::max(), [this, end] {
            takeChanges(m_noted);
            m_changes += static_cast<long>(m_noted.size());
            return m_exchanges >= end;
        });
        require(all, "panel: interrupted");
    }

    long changes() const override { return m_changes; }

private:
    DriverLibrary       m_library;
    Runtime             m_runtime;
    std::vector<Change> m_noted;
    long                m_exchanges;
    long                m_changes;
    CallHandle          m_call;
};

class ModbusClient : public Client {
public:
    explicit ModbusClient(int port) : m_context(modbus_new_tcp(LOOPBACK, port))
    {
        require(m_context != nullptr && modbus_connect(m_context) == 0, "libmodbus: no link");
    }

    ~ModbusClient() override
    {
        modbus_close(m_context);
        modbus_free(m_context);
    }

    void request(long count) override
    {
        std::uint16_t registers[WORDS];
        for (long i = 0; i < count; ++i)
            require(modbus_read_registers(m_context, 0, WORDS, registers) == WORDS, "libmodbus: no reply");
    }

private:
    modbus_t *m_context;
};

} // namespace

std::unique_ptr<Client> pingPongClient(int port)
{
    return std::make_unique<PingPongClient>(port);
}

std::unique_ptr<Client> panelClient(int port, long interval)
{
    return std::make_unique<PanelClient>(port, interval);
}

std::unique_ptr<Client> modbusClient(int port)
{
    return std::make_unique<ModbusClient>(port);
}
