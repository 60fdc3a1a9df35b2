#ifndef PLC_RECORDING_CAPTURE_RECORDER_H
#define PLC_RECORDING_CAPTURE_RECORDER_H

#include "recording/file_owner.h"
#include "recording/recorder.h"

#include <map>
#include <pcap/pcap.h>

// A session as a capture, which every tool for captures opens. It has the IPv4 packets of a TCP connection without
// losses: handshake, one packet a frame, end. The clients have their own addresses and ports; the PLC has its address
// and always port 9600, by which FINS is known. An IPv6 address is written as 192.0.2.1 (clients) or 192.0.2.2 (PLC).

namespace plc {

class CaptureRecorder : public Recorder {
public:
    CaptureRecorder(FileOwner &&file, const std::string &path, std::uint64_t maxBytes);
    ~CaptureRecorder() override; // the end of all connections that are open

    void open(unsigned client, const Endpoint &clientEnd, const Endpoint &plcEnd) override;
    void add(unsigned client, char direction, const Bytes &bytes) override;
    void close(unsigned client, Ending ending) override;

private:
    struct End {
        std::uint32_t address;
        unsigned      port;
        std::uint32_t next; // sequence number of its next byte
    };
    struct Stream {
        End client;
        End plc;
    };

    void write(End &from, const End &to, unsigned flags, const Bytes &payload);

    std::unique_ptr<pcap_t, decltype(&pcap_close)>             form;
    std::unique_ptr<pcap_dumper_t, decltype(&pcap_dump_close)> dumper;
    std::map<unsigned, Stream>                                 streams; // by client
    unsigned                                                   packets = 0;
};

} // namespace plc

#endif
