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
    explicit PingPongClient(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "ping-pong: no link");
        const int on = 1;
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }

    ~PingPongClient() override { close(socket_); }

    void request(long count) override
    {
        std::uint8_t bytes[READ_REPLY_SIZE] = {};
        for (long i = 0; i < count; ++i) {
            require(send(socket_, bytes, READ_REQUEST_SIZE, MSG_NOSIGNAL) == READ_REQUEST_SIZE, "ping-pong: no send");
            require(recv(socket_, bytes, sizeof bytes, 0) == READ_REPLY_SIZE, "ping-pong: no reply");
        }
    }

private:
    int socket_;
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
        : library_(OMRON_FINS_LIBRARY), runtime_(library_, linkOptions(port, interval)), exchanges_(0), changes_(0),
          call_(runtime_.onExchange([this](const Exchange &exchange) { exchanges_ += exchange.accepted ? 1 : 0; }))
    {

        installChangeFeed(library_, true);
        runtime_.watch({{QLatin1String("DM"), 0, WORDS, false}});
        request(2);
        require(runtime_.phase() == LinkPhase::ONLINE, "panel: no link");
    }

    void request(long count) override
    {
        const long end = exchanges_ + count;
        const bool all = stepUntil(runtime_, TimePoint::max(), [this, end] {
            takeChanges(noted_);
            changes_ += static_cast<long>(noted_.size());
            return exchanges_ >= end;
        });
        require(all, "panel: interrupted");
    }

    long changes() const override { return changes_; }

private:
    DriverLibrary       library_;
    Runtime             runtime_;
    std::vector<Change> noted_;
    long                exchanges_;
    long                changes_;
    CallHandle          call_;
};

class ModbusClient : public Client {
public:
    explicit ModbusClient(int port) : context_(modbus_new_tcp(LOOPBACK, port))
    {
        require(context_ != nullptr && modbus_connect(context_) == 0, "libmodbus: no link");
    }

    ~ModbusClient() override
    {
        modbus_close(context_);
        modbus_free(context_);
    }

    void request(long count) override
    {
        std::uint16_t registers[WORDS];
        for (long i = 0; i < count; ++i)
            require(modbus_read_registers(context_, 0, WORDS, registers) == WORDS, "libmodbus: no reply");
    }

private:
    modbus_t *context_;
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
