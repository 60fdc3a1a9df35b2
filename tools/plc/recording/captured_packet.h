#ifndef PLC_RECORDING_CAPTURED_PACKET_H
#define PLC_RECORDING_CAPTURED_PACKET_H

#include "cpu/bytes.h"

#include <utility>

// What a captured packet has of a TCP connection.

namespace plc {

struct Segment {
    using End = std::pair<std::uint32_t, unsigned>; // IPv4 address and port

    End           from;
    End           to;
    std::uint32_t sequence = 0; // number of the first byte
    bool          isSyn = false;
    bool          isAck = false;
    Slice         payload = Slice(nullptr, 0); // in the packet's bytes
};

enum class PacketKind {
    TCP,
    OTHER,     // of another protocol
    UNREADABLE // TCP, but cut short, a fragment, or over IPv6
};

/// Whether packets of captures with this link type, as libpcap numbers them, can be read.
bool isKnownLinkType(int linkType);

/// Sets `segment` if the packet is of kind TCP.
PacketKind readPacket(int linkType, Slice packet, Segment *segment);

} // namespace plc

#endif
