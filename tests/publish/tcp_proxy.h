#ifndef TESTS_PUBLISH_TCP_PROXY_H
#define TESTS_PUBLISH_TCP_PROXY_H

#include "support/held_port.h"

#include <atomic>
#include <poll.h>
#include <thread>
#include <utility>
#include <vector>

// A network between a client and a server of this machine, which fails as it is told to.
class TcpProxy {
public:
    enum State {
        PASSING, // bytes pass, in both directions
        SLOW,    // a few of them at a time
        STALLED, // connections stay, and nothing passes
        CLOSED   // connections are closed as soon as they are made
    };

    explicit TcpProxy(int target) : target_(target), listening_(port.startListening()), thread_([this] { run(); }) {}
    TcpProxy(const TcpProxy &) = delete;
    TcpProxy &operator=(const TcpProxy &) = delete;

    ~TcpProxy()
    {
        ended_ = true;
        thread_.join();
        closeAll();
        close(listening_);
    }

    void set(State state) { state_ = state; }

    std::string host() const { return port.host(); }

    const HeldPort port;

private:
    struct Pair {
        int client;
        int server;
    };

    static int connected(int port)
    {
        const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(made, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
            return made;
        close(made);
        return -1;
    }

    void accept()
    {
        const int client = accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
        const int server = state_ == CLOSED ? -1 : connected(target_);
        if (server >= 0)
            pairs_.push_back({client, server});
        else
            close(client);
    }

    bool isOpen() const { return state_ == PASSING || state_ == SLOW; }

    bool pass(int from, int to) const
    {
        char bytes[16384];
        const bool isSlow = state_ == SLOW;
        const ssize_t size = recv(from, bytes, isSlow ? 20 : sizeof bytes, 0);
        if (isSlow)
            poll(nullptr, 0, 2);
        for (ssize_t done = 0; done < size;) {
            const ssize_t sent = send(to, bytes + done, static_cast<std::size_t>(size - done), MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            done += sent;
        }
        return size > 0;
    }

    void closePair(std::size_t number)
    {
        close(pairs_[number].client);
        close(pairs_[number].server);
        pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(number));
    }

    void closeAll()
    {
        while (!pairs_.empty())
            closePair(0);
    }

    void run()
    {
        while (!ended_) {
            if (state_ == CLOSED)
                closeAll();
            std::vector<pollfd> polled = {{listening_, POLLIN, 0}};
            for (const Pair &pair : pairs_) {
                polled.push_back({isOpen() ? pair.client : -1, POLLIN, 0});
                polled.push_back({isOpen() ? pair.server : -1, POLLIN, 0});
            }
            if (poll(polled.data(), polled.size(), 5) <= 0)
                continue;
            for (std::size_t i = pairs_.size(); i-- > 0;) {
                const bool isWhole = (polled[1 + 2 * i].revents == 0 || pass(pairs_[i].client, pairs_[i].server))
                                     && (polled[2 + 2 * i].revents == 0 || pass(pairs_[i].server, pairs_[i].client));
                if (!isWhole)
                    closePair(i);
            }
            if (polled[0].revents != 0)
                accept();
        }
    }

    const int          target_;
    const int          listening_;
    std::atomic<State> state_{PASSING};
    std::atomic<bool>  ended_{false};
    std::vector<Pair>  pairs_;
    std::thread        thread_; // the last member: it uses all others
};

#endif
