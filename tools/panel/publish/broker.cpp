#include "publish/broker.h"

#include "link/host_port.h"

#include <cerrno>
#include <random>
#include <system_error>

namespace {

constexpr auto STEADY = std::chrono::seconds(10); // a connection that was; a shorter one is a failed attempt, too
constexpr auto TICK   = std::chrono::seconds(1);  // how often libmosquitto looks at its clock

} // namespace

Broker::Broker(const BrokerOptions &options, BrokerCalls calls)
    : options_(options), calls_(std::move(calls)), backOff_(std::random_device()()), next_(TimePoint::min())
{
    newClient(options_); // which refuses what cannot be
}

Broker::~Broker() = default;

// ---- The connection ----------------------------------------------------------------------------------------------

void Broker::begin()
{
    Client client = newClient(options_);
    refusal_.clear();
    logged_.clear();
    connecting_ = Connecting::begin(std::move(client), options_.host, options_.port, options_.keepAlive);
}

void Broker::takeAttempt(TimePoint now)
{
    std::string problem;
    client_ = connecting_->take(problem);
    connecting_.reset();
    if (!problem.empty())
        lose(problem, now);
    else
        takeCalls();
}

void Broker::lose(const std::string &reason, TimePoint now)
{
    const bool wasConnected = isConnected_;
    isConnected_ = false;
    client_.reset();
    if (wasConnected && now - connectedAt_ > STEADY)
        backOff_.reset();
    const Millis pause = backOff_.next();
    next_ = now + pause;
    calls_.say((wasConnected ? "connection to the broker " : "no connection to the broker ")
               + hostAndPort(options_.host, std::to_string(options_.port)) + (wasConnected ? " lost: " : ": ") + reason
               + ", trying again in " + std::to_string(pause.count()) + " ms");
    if (wasConnected)
        calls_.lost();
}

std::string Broker::reasonOf(int code) const
{
    if (!refusal_.empty())
        return refusal_;
    if (code == MOSQ_ERR_TLS && !logged_.empty())
        return "TLS: " + logged_;
    if (code == MOSQ_ERR_ERRNO && errno != 0)
        return std::generic_category().message(errno);
    if (code == MOSQ_ERR_KEEPALIVE)
        return "it has not answered for some time";
    return mosquitto_strerror(code);
}

void Broker::serve(TimePoint now)
{
    if (connecting_ && connecting_->hasEnded())
        takeAttempt(now);
    if (client_)
        exchange(now);
    else if (!connecting_ && now >= next_)
        begin();
}

void Broker::exchange(TimePoint now)
{
    const auto step = [this](int (*call)(mosquitto *, int)) { return call(client_.get(), 1); };
    int code = step(mosquitto_loop_read);
    if (code == MOSQ_ERR_SUCCESS && mosquitto_want_write(client_.get()))
        code = step(mosquitto_loop_write);
    if (code == MOSQ_ERR_SUCCESS)
        code = mosquitto_loop_misc(client_.get());
    if (code != MOSQ_ERR_SUCCESS || !refusal_.empty())
        lose(reasonOf(code), now);
}

void Broker::onAnswer(int code)
{
    if (code != 0) {
        refusal_ = mosquitto_connack_string(code);
        return;
    }
    isConnected_ = true;
    connectedAt_ = Clock::now();
    calls_.say("connected to the broker " + hostAndPort(options_.host, std::to_string(options_.port)));
    calls_.connected();
}

void Broker::takeCalls()
{
    mosquitto *client = client_.get();
    mosquitto_user_data_set(client, this);
    mosquitto_connect_callback_set(client, [](mosquitto *, void *self, int code) {
        static_cast<Broker *>(self)->onAnswer(code);
    });
    mosquitto_publish_callback_set(client, [](mosquitto *, void *self, int number) {
        static_cast<Broker *>(self)->calls_.acknowledged(number);
    });
    mosquitto_message_callback_set(client, [](mosquitto *, void *self, const mosquitto_message *message) {
        const auto *payload = static_cast<const char *>(message->payload);
        const std::string text(payload ? payload : "", static_cast<std::size_t>(message->payloadlen));
        static_cast<Broker *>(self)->calls_.received(message->topic, text, message->retain);
    });
    mosquitto_log_callback_set(client, [](mosquitto *, void *self, int level, const char *text) {
        if (level == MOSQ_LOG_ERR)
            static_cast<Broker *>(self)->logged_ = text;
    });
}

void Broker::disconnect()
{
    next_ = TimePoint::max();
    if (!client_)
        return;
    isConnected_ = false;
    mosquitto_disconnect(client_.get());
    client_.reset();
}

// ---- What it carries ---------------------------------------------------------------------------------------------

int Broker::publish(const std::string &topic, const std::string &payload, bool retain)
{
    int number = -1;
    const int code = mosquitto_publish(client_.get(), &number, topic.c_str(), static_cast<int>(payload.size()),
                                       payload.data(), 1, retain);
    return code == MOSQ_ERR_SUCCESS ? number : -1;
}

void Broker::subscribe(const std::string &topics)
{
    mosquitto_subscribe(client_.get(), nullptr, topics.c_str(), 1);
}

void Broker::addDescriptors(std::vector<pollfd> &polled) const
{
    if (connecting_)
        polled.push_back({connecting_->fd(), POLLIN, 0});
    if (!client_)
        return;
    const auto events = static_cast<short>(mosquitto_want_write(client_.get()) ? POLLIN | POLLOUT : POLLIN);
    polled.push_back({mosquitto_socket(client_.get()), events, 0});
}

TimePoint Broker::due() const
{
    if (client_)
        return Clock::now() + TICK;
    return connecting_ ? TimePoint::max() : next_;
}
