#include "base/messages.h"
#include "publish/broker.h"
#include "publish/outbox.h"

#include <poll.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

// publish_feeder PORT SPOOL COUNT TAGS: a publisher without PLCs, which has COUNT messages to publish on the topics
// feed/0 to feed/TAGS-1. Message n has the value n. Wherever it was killed, it goes on behind the last that was stored.

int main(int argc, char **argv)
{
    if (argc != 5)
        return 2;
    const std::int64_t count = std::atoll(argv[3]);
    const std::int64_t tags  = std::atoll(argv[4]);
    Messages messages;
    const auto say = [&messages](const std::string &line) { messages.say(line); };
    Spool spool(argv[2], {}, say);
    Broker *handedTo = nullptr;
    Outbox outbox(spool, {100, 1e6, 16 << 20},
                  [&](const std::string &topic, const std::string &payload, bool retain) {
                      return handedTo->publish(topic, payload, retain);
                  },
                  say);
    BrokerOptions options;
    options.host      = "127.0.0.1";
    options.port      = std::atoi(argv[1]);
    options.clientId  = spool.clientId();
    options.willTopic = "feed/state";
    options.will      = "offline";
    options.keepAlive = 5;
    Broker broker(options, {say, [&] { outbox.onConnected(Clock::now()); }, [&] { outbox.onLost(); },
                            [&](int number) { outbox.onAcknowledged(number); }, {}});
    handedTo = &broker;
    std::int64_t next = spool.last() + 1;
    while (next <= count || !outbox.isEmpty()) {
        const auto utc = std::chrono::system_clock::now().time_since_epoch();
        for (int burst = 0; burst < 20 && next <= count; ++burst, ++next)
            outbox.add({"feed/" + std::to_string(next % tags), "{\"value\":" + std::to_string(next) + "}",
                        std::chrono::duration_cast<Millis>(utc).count()});
        std::vector<pollfd> polled;
        broker.addDescriptors(polled);
        poll(polled.data(), polled.size(), 2);
        broker.serve(Clock::now());
        outbox.work(Clock::now(), std::chrono::system_clock::now());
    }
    broker.disconnect();
    outbox.finish(Clock::now(), std::chrono::system_clock::now());
    std::puts("done");
    return 0;
}
