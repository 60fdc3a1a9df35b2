#include "recording/capture_recorder.h"

#include <chrono>
#include <new>

namespace plc {

namespace {

enum : unsigned { FLAG_FIN = 0x01, FLAG_SYN = 0x02, FLAG_RST = 0x04, FLAG_PSH = 0x08, FLAG_ACK = 0x10 };

enum : std::size_t {
    IP_SIZE        = 20,
    IP_SUM         = 10,
    IP_ADDRESSES   = 12, // source (4), destination (4)
    TCP_SIZE       = 20,
    TCP_SUM        = IP_SIZE + 16,
    FILE_HEADER    = 24, // of a capture file
    PACKET_HEADER  = 16, // before each packet
    SNAPSHOT_BYTES = 65535
};

const unsigned      FINS_PORT = 9600;
const unsigned      PROTOCOL_TCP = 6;
const std::uint32_t CLIENT_WITHOUT_IPV4 = 0xC0000201; // 192.0.2.1 and 192.0.2.2, which no host has
const std::uint32_t PLC_WITHOUT_IPV4 = 0xC0000202;

// The one's complement sum of the Internet protocols, to be added to `sum`.
std::uint32_t add16BitWords(std::uint32_t sum, Slice bytes)
{
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        sum += bytes.get16(i);
    return sum;
}

void setChecksum(Bytes &packet, std::size_t offset, std::uint32_t sum)
{
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    packet[offset] = static_cast<std::uint8_t>(~sum >> 8 & 0xFF);
    packet[offset + 1] = static_cast<std::uint8_t>(~sum & 0xFF);
}

void addIpHeader(Bytes &packet, std::uint32_t from, std::uint32_t to, std::size_t payloadSize, unsigned number)
{
    add8 (packet, 0x45);   // version 4, header of 5 words
    add8 (packet, 0);      // type of service
    add16(packet, static_cast<unsigned>(IP_SIZE + TCP_SIZE + payloadSize));
    add16(packet, number); // identification
    add16(packet, 0x4000); // not to be fragmented
    add8 (packet, 64);     // time to live
    add8 (packet, PROTOCOL_TCP);
    add16(packet, 0);      // checksum, below
    add32(packet, from);
    add32(packet, to);
    setChecksum(packet, IP_SUM, add16BitWords(0, Slice(packet)));
}

std::uint32_t addressOf(const asio::ip::tcp::endpoint &end, std::uint32_t otherwise)
{
    const asio::ip::address address = end.address();
    if (address.is_v4())
        return address.to_v4().to_uint();
    return address.to_v6().is_v4_mapped() ? asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6()).to_uint()
                                          : otherwise;
}

pcap_pkthdr headerNow(std::size_t size)
{
    using namespace std::chrono;
    const microseconds now = duration_cast<microseconds>(system_clock::now().time_since_epoch());
    pcap_pkthdr header = {};
    header.ts.tv_sec = static_cast<decltype(header.ts.tv_sec)>(now.count() / 1000000);
    header.ts.tv_usec = static_cast<decltype(header.ts.tv_usec)>(now.count() % 1000000);
    header.caplen = header.len = static_cast<bpf_u_int32>(size);
    return header;
}

} // namespace

CaptureRecorder::CaptureRecorder(FileOwner &&file, const std::string &path, std::uint64_t maxBytes)
    : Recorder(path, maxBytes), form(pcap_open_dead(DLT_RAW, SNAPSHOT_BYTES), &pcap_close),
      dumper(form ? pcap_dump_fopen(form.get(), file.get()) : nullptr, &pcap_dump_close)
{
    if (!dumper)
        throw std::bad_alloc(); // there is no other reason
    static_cast<void>(file.release()); // the dumper's now
    if (hasRoom(FILE_HEADER))
        settle(pcap_dump_file(dumper.get()));
}

CaptureRecorder::~CaptureRecorder()
{
    while (!streams.empty())
        CaptureRecorder::close(streams.begin()->first, Ending::CLOSED);
}

void CaptureRecorder::open(unsigned client, const Endpoint &clientEnd, const Endpoint &plcEnd)
{
    Stream &stream = streams[client];
    stream.client = {addressOf(clientEnd, CLIENT_WITHOUT_IPV4), clientEnd.port(), 0};
    stream.plc = {addressOf(plcEnd, PLC_WITHOUT_IPV4), FINS_PORT, 0};
    write(stream.client, stream.plc, FLAG_SYN, Bytes());
    write(stream.plc, stream.client, FLAG_SYN | FLAG_ACK, Bytes());
    write(stream.client, stream.plc, FLAG_ACK, Bytes());
}

void CaptureRecorder::add(unsigned client, char direction, const Bytes &bytes)
{
    const auto found = streams.find(client);
    if (found == streams.end())
        return;
    const bool isRequest = direction == '<';
    Stream &stream = found->second;
    write(isRequest ? stream.client : stream.plc, isRequest ? stream.plc : stream.client, FLAG_PSH | FLAG_ACK, bytes);
}

void CaptureRecorder::close(unsigned client, Ending ending)
{
    const auto found = streams.find(client);
    if (found == streams.end())
        return;
    Stream &stream = found->second;
    if (ending == Ending::RESET_BY_CLIENT) {
        write(stream.client, stream.plc, FLAG_RST | FLAG_ACK, Bytes());
    } else if (ending == Ending::RESET_BY_PLC) {
        write(stream.plc, stream.client, FLAG_RST | FLAG_ACK, Bytes());
    } else {
        write(stream.client, stream.plc, FLAG_FIN | FLAG_ACK, Bytes());
        write(stream.plc, stream.client, FLAG_FIN | FLAG_ACK, Bytes());
        write(stream.client, stream.plc, FLAG_ACK, Bytes());
    }
    streams.erase(found);
}

void CaptureRecorder::write(End &from, const End &to, unsigned flags, const Bytes &payload)
{
    if (hasEnded() || !hasRoom(PACKET_HEADER + IP_SIZE + TCP_SIZE + payload.size()))
        return;
    Bytes packet;
    addIpHeader(packet, from.address, to.address, payload.size(), ++packets);
    add16(packet, from.port);
    add16(packet, to.port);
    add32(packet, from.next);
    add32(packet, (flags & FLAG_ACK) != 0 ? to.next : 0);
    add8 (packet, 0x50);   // header of 5 words
    add8 (packet, flags);
    add16(packet, 0xFFFF); // window
    add16(packet, 0);      // checksum, below
    add16(packet, 0);      // urgent pointer
    packet.insert(packet.end(), payload.begin(), payload.end());
    // The checksum is over the addresses, the protocol and the length as well.
    const auto length = static_cast<std::uint32_t>(TCP_SIZE + payload.size());
    setChecksum(packet, TCP_SUM, add16BitWords(PROTOCOL_TCP + length, Slice(packet).from(IP_ADDRESSES)));
    const pcap_pkthdr header = headerNow(packet.size());
    pcap_dump(reinterpret_cast<u_char *>(dumper.get()), &header, packet.data());
    settle(pcap_dump_file(dumper.get()));
    from.next += static_cast<std::uint32_t>(payload.size()) + ((flags & (FLAG_SYN | FLAG_FIN)) != 0 ? 1 : 0);
}

} // namespace plc
