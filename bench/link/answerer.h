#ifndef BENCH_LINK_ANSWERER_H
#define BENCH_LINK_ANSWERER_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>

// The other ends of the link benchmark: one connection, one request at a time, one receive and one send a request. All
// are of the same simplicity, so that what differs between the clients is the clients.

/// Bytes on the wire of a FINS/TCP read of 64 words.
constexpr std::size_t READ_REQUEST_SIZE = 34;
constexpr std::size_t READ_REPLY_SIZE   = 30 + 2 * 64;

/// Makes the reply to a request into `reply` and returns its size; 0 ends the connection.
using Answer = std::function<std::size_t(const std::uint8_t *request, std::size_t size, std::uint8_t *reply)>;

/// Bytes of the sizes of a read and its reply, without a look at them.
Answer answerPingPong();

/// FINS/TCP: the node addresses, and reads. In every reply the first `changingWords` words hold a new value.
Answer answerFins(int changingWords);

/// Modbus/TCP: reads of holding registers, changing alike.
Answer answerModbus(int changingWords);

/// A process of its own that serves one connection on a loopback port of its own.
class AnswererProcess {
public:
    explicit AnswererProcess(const Answer &answer);
    ~AnswererProcess();
    AnswererProcess(const AnswererProcess &) = delete;
    AnswererProcess &operator=(const AnswererProcess &) = delete;

    int port() const { return port_; }

private:
    pid_t process_;
    int   port_;
};

#endif
