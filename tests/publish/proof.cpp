#include "publish/mosquitto.h"
#include "publish/subscriber.h"
#include "publish/tcp_proxy.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>

// publish_proof [--samples N]: N messages on their way to a subscriber while the publisher is killed, the broker is
// killed and starts again, and the network between them is cut and stalls. Each one that was stored has to come; what
// comes twice has to be marked from the second time on; and on each topic the messages come in their order, but for
// what is repeated.

namespace {

constexpr std::int64_t TAGS = 50;

class Proof {
public:
    explicit Proof(std::int64_t samples) : samples_(samples), came_(static_cast<std::size_t>(samples + 1)) {}

    int run()
    {
        subscribe();
        publish();
        while (received_ < samples_) {
            const std::int64_t until = std::min(samples_, received_ + samples_ / 12 + 1);
            listen(until);
            if (received_ < samples_)
                harm();
        }
        feeder_->waitForLine("done");
        std::printf("publish: %lld samples received, %lld of them again; publisher killed %d times, broker %d, network "
                    "cut %d, stalled %d: %s\n",
                    static_cast<long long>(received_), static_cast<long long>(repeated_), harms_[0], harms_[1],
                    harms_[2], harms_[3], failures_ == 0 ? "holds" : "FAILS");
        return failures_ == 0 ? 0 : 1;
    }

private:
    void subscribe()
    {
        subscriber_ = std::make_unique<Subscriber>(broker_.port.number(), "feed/+", 0);
        subscriber_->call = [this](const Received &message) { take(message); };
    }

    void publish()
    {
        feeder_ = std::make_unique<Process>(std::vector<std::string>{
            PUBLISH_FEEDER_PATH, std::to_string(proxy_.port.number()), folder_.path("spool"), std::to_string(samples_),
            std::to_string(TAGS)});
    }

    void listen(std::int64_t until)
    {
        const std::int64_t before = received_;
        const auto isThere = [&] { return received_ >= until || received_ > before + 20000; };
        subscriber_->run(isThere, "sample " + std::to_string(until));
    }

    // What the broker has not told the subscriber yet is in the subscriber's socket: it reads on until the broker is
    // gone.
    void harm()
    {
        const std::size_t kind = step_++ % 4;
        ++harms_[kind];
        if (kind == 0) {
            feeder_->sendSignal(SIGKILL);
            feeder_->wait();
            publish();
        } else if (kind == 1) {
            killBroker();
        } else if (kind == 2) {
            proxy_.set(TcpProxy::CLOSED);
            listenFor(std::chrono::milliseconds(50));
            proxy_.set(TcpProxy::PASSING);
        } else {
            proxy_.set(TcpProxy::STALLED);
            listenFor(std::chrono::milliseconds(300));
            proxy_.set(TcpProxy::PASSING);
        }
    }

    void killBroker()
    {
        broker_.kill();
        try {
            subscriber_->run([] { return false; }, "the end of the broker");
        } catch (const std::runtime_error &) {
        }
        proxy_.set(TcpProxy::CLOSED); // until the subscriber is there again
        broker_.start();
        subscribe();
        proxy_.set(TcpProxy::PASSING);
    }

    void listenFor(std::chrono::milliseconds time)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        subscriber_->run([end] { return std::chrono::steady_clock::now() > end; }, "some time");
    }

    void take(const Received &message)
    {
        if (message.topic == "feed/state" || message.retained)
            return;
        const nlohmann::json json = message.json();
        const auto value      = json.at("value").get<std::int64_t>();
        const bool isRepeated = json.value("repeated", false);
        std::int64_t &newest  = newest_[message.topic];
        auto &times = came_.at(static_cast<std::size_t>(value));
        if (message.topic != "feed/" + std::to_string(value % TAGS))
            fail("came on " + message.topic, value);
        if (times > 0 && !isRepeated)
            fail("came twice and is not marked", value);
        if (times == 0 && value < newest)
            fail("came behind " + std::to_string(newest), value);
        repeated_ += times > 0 ? 1 : 0;
        received_ += times == 0 ? 1 : 0;
        ++times;
        newest = std::max(newest, value);
    }

    void fail(const std::string &what, std::int64_t value)
    {
        if (++failures_ <= 10)
            std::fprintf(stderr, "sample %lld %s\n", static_cast<long long>(value), what.c_str());
    }

    const std::int64_t          samples_;
    TemporaryFolder             folder_;
    Mosquitto                   broker_;
    TcpProxy                    proxy_{broker_.port.number()};
    std::unique_ptr<Subscriber> subscriber_;
    std::unique_ptr<Process>    feeder_;
    std::vector<unsigned char>  came_; // how often, by value
    std::map<std::string, std::int64_t> newest_;
    std::int64_t received_ = 0;
    std::int64_t repeated_ = 0;
    std::size_t  step_     = 0;
    int          harms_[4] = {0, 0, 0, 0};
    int          failures_ = 0;
};

} // namespace

int main(int argc, char **argv)
{
    const std::int64_t samples = argc == 3 && std::strcmp(argv[1], "--samples") == 0 ? std::atoll(argv[2]) : 3000;
    if (samples < 100) {
        std::fputs("usage: publish_proof [--samples N]   100 or more\n", stderr);
        return 2;
    }
    mosquitto_lib_init();
    try {
        return Proof(samples).run();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "publish: FAILS: %s\n", error.what());
        return 1;
    }
}
