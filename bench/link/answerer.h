#ifndef BENCH_LINK_ANSWERER_H
#define BENCH_LINK_ANSWERER_H

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>

// The other ends of the link benchmark: one connection, one request at a time, one receive and one send a request. All
// are of the same simplicity, so that what differs between the clients is the clients.

/// Bytes on the wire of a FINS/TCP read of 64 words.
constexpr std::size_t READ_REQUEST_SIZE = 34;
constexpr std::size_t READ_REPLY_SIZE   = 30 + 2 * 64;

/// Lets as many replies pass as the client allows: a client that asks all the time, as the library's thread does, is
/// measured in rounds by it. One is made before the other end's process, which then has its own copy of the count.
class Gate {
public:
    Gate();
    ~Gate();
    Gate(const Gate &) = delete;
    Gate &operator=(const Gate &) = delete;

    /// At the client: so many replies more.
    void open(long replies) const;

    /// At the other end: returns as soon as there is a reply to spend.
    void pass();

private:
    int           fd_;
    std::uint64_t left_ = 0;
};

/// Makes the reply to a request into `reply` and returns its size; 0 ends the connection.
using Answer = std::function<std::size_t(const std::uint8_t *request, std::size_t size, std::uint8_t *reply)>;

/// Bytes of the sizes of a read and its reply, without a look at them. The gate, which may be null, outlives the answer.
Answer answerPingPong(Gate *gate = nullptr);

/// FINS/TCP: the node addresses, and reads. In every reply the first `changingWords` words hold a new value. Replies with
/// 64 words pass the gate, which may be null.
Answer answerFins(int changingWords, Gate *gate = nullptr);

/// FINS/TCP: the node addresses, reads and writes of a memory of words, of whatever type.
Answer answerMemory();

/// FINS/TCP: the node addresses, and reads whose first four words hold the time of the reply, as of stampOf() with the
/// lowest word first. With a period the replies come that far apart at least: for a single connection.
Answer answerStamps(std::chrono::nanoseconds period);

/// Modbus/TCP: reads of holding registers, changing alike.
Answer answerModbus(int changingWords);

/// Nanoseconds of a clock that is the same in all processes.
std::uint64_t stampOf(std::chrono::steady_clock::time_point time);

/// A process of its own that serves one connection, or several of them with the same answer, on a loopback port of its
/// own.
class AnswererProcess {
public:
    explicit AnswererProcess(const Answer &answer, int connections = 1);
    ~AnswererProcess();
    AnswererProcess(const AnswererProcess &) = delete;
    AnswererProcess &operator=(const AnswererProcess &) = delete;

    int port() const { return port_; }

private:
    pid_t process_;
    int   port_;
};

#endif
