#include "recording/captured_packet.h"

#include <pcap/pcap.h>

namespace plc {

namespace {

struct LinkType {
    int         number;
    std::size_t header;    // bytes before the IP header
    std::size_t protocol;  // offset of the two bytes that name what follows
    bool        hasNumber; // of the protocol; without it IPv4 or IPv6 follows
};

const LinkType LINK_TYPES[] = {
    {DLT_RAW,        0,  0,  false},
    {DLT_IPV4,       0,  0,  false},
    {DLT_NULL,       4,  0,  false},
    {DLT_EN10MB,     14, 12, true},
    {DLT_LINUX_SLL,  16, 14, true},
    {DLT_LINUX_SLL2, 20, 0,  true},
};

const unsigned    PROTOCOL_IPV4 = 0x0800;
const unsigned    PROTOCOL_IPV6 = 0x86DD;
const unsigned    PROTOCOL_VLAN = 0x8100;
const std::size_t VLAN_TAG = 4;

// Offsets in an IPv4 header, an IPv6 header and a TCP header.
enum : std::size_t {
    IP_VERSION   = 0, // 1  version and length of the header in words of 4 bytes
    IP_TOTAL     = 2, // 2  bytes of the packet; 0 in packets that the sender's network card cut
    IP_FRAGMENT  = 6, // 2  bit 13 more fragments, below it where this one belongs
    IP_PROTOCOL  = 9,
    IP_SOURCE    = 12,
    IP_TARGET    = 16,
    IP_SIZE_MIN  = 20,
    IP6_PROTOCOL = 6,
    TCP_SEQUENCE = 4,
    TCP_OFFSET   = 12, // 1  length of the header in words of 4 bytes, in its high half
    TCP_FLAGS    = 13,
    TCP_SIZE_MIN = 20
};

const unsigned FRAGMENT_MASK = 0x3FFF;
const unsigned TCP_NUMBER = 6;
const unsigned FLAG_SYN = 0x02;
const unsigned FLAG_ACK = 0x10;

const LinkType *findLinkType(int number)
{
    for (const LinkType &type : LINK_TYPES)
        if (type.number == number)
            return &type;
    return nullptr;
}

PacketKind readTcp(Slice ip, Slice tcp, Segment *segment)
{
    const std::size_t header = std::size_t(tcp.get8(TCP_OFFSET) >> 4) * 4;
    if (tcp.size() < TCP_SIZE_MIN || header < TCP_SIZE_MIN || header > tcp.size())
        return PacketKind::UNREADABLE;
    segment->from = {ip.get32(IP_SOURCE), tcp.get16(0)};
    segment->to = {ip.get32(IP_TARGET), tcp.get16(2)};
    segment->sequence = tcp.get32(TCP_SEQUENCE);
    segment->isSyn = (tcp.get8(TCP_FLAGS) & FLAG_SYN) != 0;
    segment->isAck = (tcp.get8(TCP_FLAGS) & FLAG_ACK) != 0;
    segment->payload = tcp.from(header);
    return PacketKind::TCP;
}

PacketKind readIp(Slice ip, Segment *segment)
{
    const unsigned version = ip.get8(IP_VERSION) >> 4;
    if (version == 6)
        return ip.get8(IP6_PROTOCOL) == TCP_NUMBER ? PacketKind::UNREADABLE : PacketKind::OTHER;
    if (version != 4 || ip.get8(IP_PROTOCOL) != TCP_NUMBER)
        return PacketKind::OTHER;
    const std::size_t header = std::size_t(ip.get8(IP_VERSION) & 0x0Fu) * 4;
    const std::size_t total = ip.get16(IP_TOTAL) != 0 ? ip.get16(IP_TOTAL) : ip.size();
    const bool isFragment = (ip.get16(IP_FRAGMENT) & FRAGMENT_MASK) != 0;
    if (isFragment || header < IP_SIZE_MIN || total < header || total > ip.size())
        return PacketKind::UNREADABLE;
    return readTcp(ip, ip.upTo(total).from(header), segment);
}

} // namespace

bool isKnownLinkType(int linkType) { return findLinkType(linkType) != nullptr; }

PacketKind readPacket(int linkType, Slice packet, Segment *segment)
{
    const LinkType *const type = findLinkType(linkType);
    if (!type)
        return PacketKind::OTHER;
    const bool isTagged = type->number == DLT_EN10MB && packet.get16(type->protocol) == PROTOCOL_VLAN;
    const std::size_t shift = isTagged ? VLAN_TAG : 0;
    const unsigned protocol = packet.get16(type->protocol + shift);
    if (type->hasNumber && protocol != PROTOCOL_IPV4 && protocol != PROTOCOL_IPV6)
        return PacketKind::OTHER;
    return readIp(packet.from(type->header + shift), segment);
}

} // namespace plc
