#include "recording/capture_reader.h"

#include "recording/captured_packet.h"
#include "recording/frame_splitter.h"

#include <algorithm>
#include <map>
#include <memory>
#include <pcap/pcap.h>

namespace plc {

namespace {

const unsigned FINS_PORT = 9600;

// One direction of a connection.
struct Way {
    FrameSplitter frames;
    std::uint32_t next = 0; // sequence number of the byte that is expected
    bool          isKnown = false;
};

struct Stream {
    unsigned     number = 0;
    Segment::End client;
    Way          requests;
    Way          replies;
};

// In a capture that begins in the middle of a connection, the port tells which end is the client.
Segment::End clientOf(const Segment &segment)
{
    const bool isAnswer = segment.isSyn ? segment.isAck : segment.from.second == FINS_PORT;
    return isAnswer ? segment.to : segment.from;
}

class CaptureReader {
public:
    using Sink = std::function<void(const RecordedFrame &)>;

    explicit CaptureReader(const Sink &wanted) : take(wanted) {}

    void add(int linkType, Slice packet)
    {
        Segment segment;
        const PacketKind kind = readPacket(linkType, packet, &segment);
        if (kind == PacketKind::UNREADABLE)
            ++unreadable;
        if (kind == PacketKind::TCP)
            follow(segment);
    }

    std::string remark() const
    {
        std::string text;
        if (unreadable > 0)
            text = "packets left out, cut short, fragments, or over IPv6: " + std::to_string(unreadable);
        if (gaps > 0)
            text += (text.empty() ? "" : "; ") + std::string("pieces of streams missing, or not in their order: ") +
                    std::to_string(gaps);
        return text;
    }

private:
    void follow(const Segment &segment)
    {
        Stream &stream = streamOf(segment);
        const bool isRequest = segment.from == stream.client;
        Way &way = isRequest ? stream.requests : stream.replies;
        if (segment.isSyn || !way.isKnown)
            way.next = segment.sequence + (segment.isSyn ? 1 : 0);
        way.isKnown = true;
        const Slice fresh = freshPart(way, segment);
        way.frames.append(fresh.begin(), fresh.size());
        RecordedFrame frame;
        frame.client = stream.number;
        frame.isRequest = isRequest;
        for (auto result = way.frames.next(&frame.bytes); result != FrameSplitter::Result::NEED_MORE;
             result = way.frames.next(&frame.bytes))
            if (result == FrameSplitter::Result::FRAME)
                take(frame);
    }

    // A connection that begins has the place of an older one between the same ends.
    Stream &streamOf(const Segment &segment)
    {
        const auto ends = std::minmax(segment.from, segment.to);
        Stream &stream = streams[{ends.first, ends.second}];
        if (stream.number == 0 || (segment.isSyn && !segment.isAck)) {
            stream = Stream();
            stream.number = ++count;
            stream.client = clientOf(segment);
        }
        return stream;
    }

    // What the stream has not had yet. Where bytes are missing, it goes on behind them.
    Slice freshPart(Way &way, const Segment &segment)
    {
        const std::uint32_t had = way.next - (segment.sequence + (segment.isSyn ? 1 : 0));
        const bool isBehindGap = had > 0x7FFFFFFF;
        if (segment.payload.size() == 0 || (!isBehindGap && had >= segment.payload.size()))
            return Slice(nullptr, 0);
        if (isBehindGap) {
            ++gaps;
            way.frames.takeRest();
        }
        const Slice fresh = segment.payload.from(isBehindGap ? 0 : had);
        way.next += static_cast<std::uint32_t>(segment.payload.size()) - had;
        return fresh;
    }

    Sink                                                    take;
    std::map<std::pair<Segment::End, Segment::End>, Stream> streams; // by their ends, the lower one first
    unsigned                                                count = 0;
    unsigned                                                unreadable = 0;
    unsigned                                                gaps = 0;
};

std::string linkTypeText(int linkType)
{
    const char *const name = pcap_datalink_val_to_name(linkType);
    return "packets of link type " + (name ? std::string(name) : std::to_string(linkType)) +
           " are not understood; capture on an Ethernet interface";
}

} // namespace

bool isCapture(const std::string &start)
{
    for (const char *const magic : {"\xA1\xB2\xC3\xD4", "\xD4\xC3\xB2\xA1", "\xA1\xB2\x3C\x4D", "\x4D\x3C\xB2\xA1",
                                    "\x0A\x0D\x0D\x0A"})
        if (start.compare(0, 4, magic) == 0)
            return true;
    return false;
}

std::string readCapture(FileOwner file, const std::function<void(const RecordedFrame &)> &take, std::string *remark)
{
    char problem[PCAP_ERRBUF_SIZE] = "";
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> capture(pcap_fopen_offline(file.get(), problem), &pcap_close);
    if (!capture)
        return std::string("the capture cannot be read: ") + problem;
    static_cast<void>(file.release()); // the capture's now
    const int linkType = pcap_datalink(capture.get());
    if (!isKnownLinkType(linkType))
        return linkTypeText(linkType);
    CaptureReader reader(take);
    pcap_pkthdr *header = nullptr;
    const u_char *bytes = nullptr;
    unsigned packets = 0;
    int result = pcap_next_ex(capture.get(), &header, &bytes);
    for (; result == 1; result = pcap_next_ex(capture.get(), &header, &bytes), ++packets)
        reader.add(linkType, Slice(bytes, header->caplen));
    *remark = reader.remark();
    return result == PCAP_ERROR_BREAK ? std::string()
                                      : "the capture breaks off behind packet " + std::to_string(packets) + ": " +
                                            pcap_geterr(capture.get());
}

} // namespace plc
