#include "link/clients.h"

#include "driver/change_feed.h"
#include "fins_runtime/plc.h"
#include "session/step_until.h"

#include <arpa/inet.h>
#include <modbus.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

const char LOOPBACK[] = "127.0.0.1";
const int WORDS = 64;

void require(bool good, const char *what)
{
    if (!good)
        throw std::runtime_error(what);
}

class BareLink {
public:
    explicit BareLink(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        require(connect(socket_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "ping-pong: no link");
        const int on = 1;
        setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }

    ~BareLink() { close(socket_); }
    BareLink(const BareLink &) = delete;
    BareLink &operator=(const BareLink &) = delete;

    /// From now on the bytes are those of a read of 64 words of DM.
    void speakFins()
    {
        const std::uint8_t ask[20] = {'F', 'I', 'N', 'S', 0, 0, 0, 12};
        const std::size_t replySize = 24;
        require(send(socket_, ask, sizeof ask, MSG_NOSIGNAL) == sizeof ask
                    && recv(socket_, reply_, replySize, MSG_WAITALL) == replySize, "fins: no node addresses");
        const std::uint8_t read[READ_REQUEST_SIZE] = {
            'F', 'I', 'N', 'S', 0, 0, 0, READ_REQUEST_SIZE - 8, 0, 0, 0, 2, 0, 0, 0, 0,
            0x80, 0, 2, 0, reply_[23], 0, 0, reply_[19], 0, 0, 0x01, 0x01, 0x82, 0, 0, 0, 0, WORDS};
        std::copy(std::begin(read), std::end(read), request_);
    }

    bool exchange()
    {
        return send(socket_, request_, READ_REQUEST_SIZE, MSG_NOSIGNAL) == READ_REQUEST_SIZE
               && recv(socket_, reply_, sizeof reply_, 0) == READ_REPLY_SIZE;
    }

    /// From any thread: exchange() fails from now on.
    void end() { shutdown(socket_, SHUT_RDWR); }

private:
    int          socket_;
    std::uint8_t request_[READ_REQUEST_SIZE] = {};
    std::uint8_t reply_[READ_REPLY_SIZE] = {};
};

class PingPongClient : public Client {
public:
    explicit PingPongClient(int port, bool isFins) : link_(port)
    {
        if (isFins)
            link_.speakFins();
    }

    void request(long count) override
    {
        for (long i = 0; i < count; ++i)
            require(link_.exchange(), "ping-pong: no reply");
    }

private:
    BareLink link_;
};

class WokenClient : public Client {
public:
    WokenClient(int port, const Gate &gate) : gate_(gate), link_(port), arrived_(eventfd(0, EFD_CLOEXEC))
    {
        require(arrived_ >= 0, "woken: no descriptor");
        thread_ = std::thread([this] {
            while (link_.exchange())
                tell(1);
            tell(LOST);
        });
    }

    ~WokenClient() override
    {
        link_.end();
        thread_.join();
        close(arrived_);
    }

    void request(long count) override
    {
        gate_.open(count);
        std::uint64_t arrived = 0;
        for (auto left = static_cast<std::uint64_t>(count); left > 0; left -= arrived)
            require(read(arrived_, &arrived, sizeof arrived) == sizeof arrived && arrived <= left, "woken: no reply");
    }

private:
    static constexpr std::uint64_t LOST = std::uint64_t(1) << 32; // more than any count

    void tell(std::uint64_t count) const { require(write(arrived_, &count, sizeof count) == sizeof count, "woken: full"); }

    const Gate &gate_;
    BareLink    link_;
    int         arrived_;
    std::thread thread_;
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

class PlcClient : public Client {
public:
    PlcClient(int port, const Gate &gate)
        : gate_(gate), plc_(fins::Plc::open(plcConfig(port))),
          watch_(plc_.watch({"DM:0:64"}, [this](const fins::Samples &samples) { note(samples); }))
    {
        gate_.open(FIRST_REPLIES);
        while (first_ != fins::Value(std::int64_t(FIRST_REPLIES * 0x0101)))
            dispatch();
    }

    void request(long count) override
    {
        const long last = replies_ + count;
        gate_.open(count);
        while (replies_ < last)
            dispatch();
    }

    long changes() const override { return changes_; }
    long leftOut() const override { return leftOut_; }

private:
    static constexpr int FIRST_REPLIES = 2; // to prove the link, and to know the values

    static fins::Config plcConfig(int port)
    {
        fins::Config config;
        config.host     = LOOPBACK + (":" + std::to_string(port));
        config.timeout  = std::chrono::minutes(1); // a gate may be closed for long
        config.interval = std::chrono::milliseconds(0);
        config.library  = OMRON_FINS_LIBRARY;
        return config;
    }

    // Word 0 changes in every reply.
    void note(const fins::Samples &samples)
    {
        for (const fins::Sample &sample : samples) {
            ++changes_;
            leftOut_ += static_cast<long>(sample.dropped);
            if (sample.index == 0) {
                first_ = sample.value;
                replies_ += 1 + static_cast<long>(sample.dropped);
            }
        }
    }

    void dispatch()
    {
        const long before = changes_;
        require(plc_.dispatch(std::chrono::seconds(10)) && changes_ > before, "plc: no samples");
    }

    const Gate &gate_;
    fins::Value first_;
    long        replies_ = 0;
    long        changes_ = 0;
    long        leftOut_ = 0;
    fins::Plc   plc_;
    fins::Watch watch_;
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
    return std::make_unique<PingPongClient>(port, false);
}

std::unique_ptr<Client> finsClient(int port)
{
    return std::make_unique<PingPongClient>(port, true);
}

std::unique_ptr<Client> wokenClient(int port, const Gate &gate)
{
    return std::make_unique<WokenClient>(port, gate);
}

std::unique_ptr<Client> plcClient(int port, const Gate &gate)
{
    return std::make_unique<PlcClient>(port, gate);
}

std::unique_ptr<Client> panelClient(int port, long interval)
{
    return std::make_unique<PanelClient>(port, interval);
}

std::unique_ptr<Client> modbusClient(int port)
{
    return std::make_unique<ModbusClient>(port);
}
