#ifndef TESTS_PUBLISH_SUBSCRIBER_H
#define TESTS_PUBLISH_SUBSCRIBER_H

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mosquitto.h>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

// What a subscriber is told by the broker. It listens while it waits.

struct Received {
    std::string topic;
    std::string payload;
    bool        retained;

    nlohmann::json json() const { return nlohmann::json::parse(payload); }
};

class Subscriber {
public:
    using Prepare = std::function<void(mosquitto *)>; // before it connects

    explicit Subscriber(int port, const std::string &topics = "#", int qos = 1, const Prepare &prepare = {})
        : client_(mosquitto_new(nullptr, true, this))
    {
        mosquitto_subscribe_callback_set(client_.get(), [](mosquitto *, void *self, int, int, const int *) {
            static_cast<Subscriber *>(self)->subscribed_ = true;
        });
        mosquitto_message_callback_set(client_.get(), [](mosquitto *, void *self, const mosquitto_message *message) {
            const std::string text(static_cast<const char *>(message->payload),
                                   static_cast<std::size_t>(message->payloadlen));
            static_cast<Subscriber *>(self)->take({message->topic, text, message->retain});
        });
        if (prepare)
            prepare(client_.get());
        if (mosquitto_connect(client_.get(), "127.0.0.1", port, 60) != MOSQ_ERR_SUCCESS)
            throw std::runtime_error("the subscriber cannot connect");
        mosquitto_subscribe(client_.get(), nullptr, topics.c_str(), qos);
        run([this] { return subscribed_; }, "the subscription");
    }

    // Listens until `isDone`.
    void run(const std::function<bool()> &isDone, const std::string &what)
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (!isDone()) {
            if (std::chrono::steady_clock::now() > deadline)
                throw std::runtime_error("the subscriber waits for " + what + " in vain; it has " + last());
            if (mosquitto_loop(client_.get(), 20, 1) != MOSQ_ERR_SUCCESS)
                throw std::runtime_error("the subscriber has lost the broker while it waits for " + what);
        }
    }

    // The next message of the topic that fits, behind the one that was returned before.
    Received await(const std::string &topic, const std::function<bool(const Received &)> &fits = {})
    {
        Received found;
        std::size_t &seen = seen_[topic];
        run([&] {
            while (seen < all.size()) {
                found = all[seen++];
                if (found.topic == topic && (!fits || fits(found)))
                    return true;
            }
            return false;
        }, topic);
        return found;
    }

    // The same, where the JSON has this value at the key.
    template <typename Value>
    Received awaitValue(const std::string &topic, const std::string &key, const Value &value)
    {
        return await(topic, [&](const Received &one) { return one.json().value(key, nlohmann::json()) == value; });
    }

    void publish(const std::string &topic, const std::string &payload, bool retain = false)
    {
        mosquitto_publish(client_.get(), nullptr, topic.c_str(), static_cast<int>(payload.size()), payload.data(), 1,
                          retain);
    }

    // Each message is told; by default it is kept.
    std::function<void(const Received &)> call;
    std::vector<Received> all;

private:
    struct Destroy {
        void operator()(mosquitto *client) const { mosquitto_destroy(client); }
    };

    void take(const Received &message)
    {
        if (call)
            call(message);
        else
            all.push_back(message);
    }

    std::string last() const
    {
        return all.empty() ? "nothing" : all.back().topic + " " + all.back().payload;
    }

    std::unique_ptr<mosquitto, Destroy> client_;
    bool        subscribed_ = false;
    std::map<std::string, std::size_t> seen_; // by topic: how many of `all`
};

#endif
