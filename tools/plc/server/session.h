#ifndef PLC_SERVER_SESSION_H
#define PLC_SERVER_SESSION_H

#include "cpu/controller.h"
#include "faults/faults.h"
#include "fins/fins_tcp.h"
#include "fins/node_table.h"
#include "plants/plant.h"
#include "recording/replay.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

// The protocol's side of one connection, without its socket: what is answered to each frame.

namespace plc {

/// Counts since the start.
struct Stats {
    std::uint64_t connections = 0; // accepted
    std::uint64_t requests = 0;    // frames received, node address exchanges included
    std::uint64_t replies = 0;     // frames sent
};

/// What all connections work on.
struct Plc {
    Plc(unsigned node, std::size_t clients, std::uint32_t seed) : nodes(node, clients), faults(seed) {}

    Controller   controller;
    NodeTable    nodes;
    Faults       faults;
    Stats        stats;
    std::unique_ptr<Plant>    plant;      // null: none
    std::chrono::milliseconds period{50}; // of a step
    Replay      *recorded = nullptr; // answers FINS commands in the controller's place; null: the controller does
};

/// What goes out in answer to one frame.
struct Answer {
    Bytes    bytes;               // empty: nothing
    unsigned delayMs = 0;         // before the first byte
    bool     isBytewise = false;  // one byte at a time
    unsigned bytePauseMs = 0;     // between these
    bool     isLast = false;      // the connection ends after it
    bool     isReset = false;     // the connection is reset instead
};

class Session {
public:
    explicit Session(Plc &state, NodeHolder peer = NodeHolder()) : plc(state), client(std::move(peer)) {}
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;
    ~Session() { end(); }

    /// Milliseconds to wait before the frame is looked at.
    unsigned delayBefore(const TcpFrame &frame);

    /// Answers a whole frame.
    Answer receive(const TcpFrame &frame);

    /// Answers what cannot be followed further; always the last answer.
    Answer reject(TcpError error);

    /// Whether the node address exchange has taken place.
    bool hasNode() const { return node != 0; }

    /// The client's node address, 0 before the exchange.
    unsigned clientNode() const { return node; }

    /// Gives the node address back.
    void end();

private:
    FaultTarget targetOf(const TcpFrame &frame) const;
    Answer exchangeNodes(const TcpFrame &frame);
    Answer refuseExchange(TcpError error, std::uint32_t requested);
    Answer answerCommand(const TcpFrame &frame);
    bool endsConnection(const FaultTarget &target, Moment moment, Answer *answer);
    void spoil(const FaultTarget &target, Bytes &response);
    Answer sendResponse(const FaultTarget &target, Bytes &response);
    void slowDown(const FaultTarget &target, Answer &answer);

    Plc        &plc;
    NodeHolder  client;
    unsigned    node = 0; // the client's; 0 before the exchange
    Bytes       held;     // a reply that waits for the next one to overtake it
};

} // namespace plc

#endif
