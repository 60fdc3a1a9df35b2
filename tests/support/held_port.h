#ifndef TESTS_SUPPORT_HELD_PORT_H
#define TESTS_SUPPORT_HELD_PORT_H

#include <arpa/inet.h>
#include <cstdint>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>

// A free port of the loopback interface that no other program is given while the object lives. The socket that holds
// it does not listen, so that connections to it are refused. It allows addresses to be used again: whoever knows the
// number and allows it, too, can listen there, one after the other.
class HeldPort {
public:
    HeldPort() : holder_(boundSocket(0))
    {
        sockaddr_in address = {};
        socklen_t size = sizeof address;
        if (holder_ < 0 || getsockname(holder_, reinterpret_cast<sockaddr *>(&address), &size) != 0)
            throw std::runtime_error("no port to hold");
        number_ = ntohs(address.sin_port);
    }

    HeldPort(const HeldPort &) = delete;
    HeldPort &operator=(const HeldPort &) = delete;
    ~HeldPort() { close(holder_); }

    int number() const { return number_; }

    std::string host() const { return "127.0.0.1:" + std::to_string(number_); }

    // A socket that listens on the port; it is the caller's. Once it is closed, connections are refused again.
    int startListening() const
    {
        const int made = boundSocket(number_);
        if (made < 0 || listen(made, 64) != 0)
            throw std::runtime_error("cannot listen on the held port " + std::to_string(number_));
        return made;
    }

private:
    // -1 if there is none.
    static int boundSocket(int port)
    {
        const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const int on = 1;
        setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(made, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
            return made;
        close(made);
        return -1;
    }

    int holder_;
    int number_ = 0;
};

#endif
