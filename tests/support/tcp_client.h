#ifndef TESTS_SUPPORT_TCP_CLIENT_H
#define TESTS_SUPPORT_TCP_CLIENT_H

#include "support/process.h"

#include <arpa/inet.h>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

// A bare TCP client on the loopback interface. Bytes go in and out as hexadecimal text, in which spaces separate
// fields as the reader likes. Every wait has a deadline and throws std::runtime_error when it passes.

// The text without its spaces, in upper case: the form in which bytes are returned.
inline std::string plainHex(const std::string &text)
{
    std::string plain;
    for (const char c : text)
        if (c != ' ')
            plain += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return plain;
}

inline std::vector<std::uint8_t> bytesOfHex(const std::string &text)
{
    const std::string plain = plainHex(text);
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < plain.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(plain.substr(i, 2), nullptr, 16)));
    return bytes;
}

inline std::string hexOfBytes(const std::vector<std::uint8_t> &bytes)
{
    static const char DIGITS[] = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += DIGITS[byte >> 4];
        text += DIGITS[byte & 15];
    }
    return text;
}

// `value` as `digits` hexadecimal digits.
inline std::string hexNumber(std::size_t value, int digits)
{
    std::string text;
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        text += "0123456789ABCDEF"[value >> shift & 15];
    return text;
}

class TcpClient {
public:
    explicit TcpClient(int port)
    {
        fd_ = connectTo(port);
        if (fd_ < 0)
            throw std::runtime_error("no connection to port " + std::to_string(port));
    }

    // The other end of a connection: a socket that was accepted, from now on the object's.
    struct Accepted {
        int fd;
    };
    explicit TcpClient(Accepted accepted) : fd_(accepted.fd) {}

    TcpClient(const TcpClient &) = delete;
    TcpClient &operator=(const TcpClient &) = delete;

    ~TcpClient() { disconnect(); }

    static bool canConnect(int port)
    {
        const int tried = connectTo(port);
        if (tried >= 0)
            close(tried);
        return tried >= 0;
    }

    void disconnect()
    {
        if (fd_ >= 0)
            close(fd_);
        fd_ = -1;
    }

    // Ends the connection by a reset.
    void reset()
    {
        const linger atOnce = {1, 0};
        setsockopt(fd_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        disconnect();
    }

    // Ends the sending side only.
    void endSending() { shutdown(fd_, SHUT_WR); }

    void send(const std::string &hex) { sendBytes(bytesOfHex(hex)); }

    void sendBytes(const std::vector<std::uint8_t> &bytes)
    {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t n = ::send(fd_, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
            if (n <= 0)
                throw std::runtime_error("the peer takes no bytes");
            done += static_cast<std::size_t>(n);
        }
    }

    // Exactly `count` bytes.
    std::string receive(std::size_t count)
    {
        std::vector<std::uint8_t> bytes;
        while (bytes.size() < count) {
            std::uint8_t buffer[4096];
            const std::size_t wanted = count - bytes.size() < sizeof buffer ? count - bytes.size() : sizeof buffer;
            const ssize_t n = receiveSome(buffer, wanted);
            if (n <= 0)
                throw std::runtime_error("the peer closed after " + hexOfBytes(bytes));
            bytes.insert(bytes.end(), buffer, buffer + n);
        }
        return hexOfBytes(bytes);
    }

    // One FINS/TCP frame, as long as its own length field says.
    std::string receiveFrame()
    {
        const std::string head = receive(8);
        return head + receive(std::stoul(head.substr(8, 8), nullptr, 16));
    }

    // Waits for the peer to close. Returns the bytes that came before; a reset counts as a close.
    std::string receiveUntilClosed()
    {
        std::vector<std::uint8_t> bytes;
        std::uint8_t buffer[4096];
        for (ssize_t n = receiveSome(buffer, sizeof buffer); n > 0; n = receiveSome(buffer, sizeof buffer))
            bytes.insert(bytes.end(), buffer, buffer + n);
        return hexOfBytes(bytes);
    }

    // Takes what is there until the peer ends. Returns whether it did so by a reset.
    bool endsByReset()
    {
        std::uint8_t buffer[65536];
        ssize_t n = 0;
        do
            n = receiveSome(buffer, sizeof buffer);
        while (n > 0);
        return n < 0 && errno == ECONNRESET;
    }

    int descriptor() const { return fd_; }

private:
    static int connectTo(int port)
    {
        const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int on = 1;
        setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        if (connect(made, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
            return made;
        close(made);
        return -1;
    }

    ssize_t receiveSome(std::uint8_t *buffer, std::size_t size)
    {
        pollfd polled = {fd_, POLLIN, 0};
        if (poll(&polled, 1, DEFAULT_DEADLINE_MS) <= 0)
            throw std::runtime_error("nothing received in time");
        return recv(fd_, buffer, size, 0);
    }

    int fd_ = -1;
};

#endif
